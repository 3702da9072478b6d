"""Images of a camera: their facts, their pixels as arrays without a copy, and files of them."""

from __future__ import annotations

import ctypes
import os
import threading
from ctypes import c_char, c_char_p, c_int64, c_size_t, c_uint32, c_uint64, c_void_p
from typing import Any, Optional

from ._library import Error, Handle, check, encoded
from ._numbers import Code, ImageState, PartKind, PayloadKind


class Part(ctypes.Structure):
    """A record of the library: TImagePart."""

    _fields_ = [("data", c_void_p), ("size", c_uint64), ("kind", c_uint32), ("pixel_format", c_uint32),
                ("pixel_format_name", c_char * 32), ("width", c_uint32), ("height", c_uint32), ("offset_x", c_uint32),
                ("offset_y", c_uint32), ("stride", c_uint64), ("x_padding", c_uint32), ("y_padding", c_uint32),
                ("bits_per_pixel", c_uint32), ("significant_bits", c_uint32), ("big_endian", c_uint32),
                ("purpose", c_uint64)]


class Record(ctypes.Structure):
    """A record of the library: TImage."""

    _fields_ = [("struct_size", c_size_t), ("serial", c_uint64), ("buffer", c_uint64), ("user", c_void_p),
                ("state", c_uint32), ("payload", c_uint32), ("data", c_void_p), ("size", c_uint64),
                ("needed", c_uint64), ("frame_id", c_uint64), ("count", c_uint64), ("time_known", c_uint32),
                ("has_chunks", c_uint32), ("time", c_uint64), ("first_data_ns", c_int64), ("complete_ns", c_int64),
                ("part_count", c_uint32), ("skipped", c_uint32), ("part", Part)]


class SaveOptions(ctypes.Structure):
    _fields_ = [("struct_size", c_size_t), ("overwrite", c_uint32), ("eight_bits", c_uint32), ("png_level", c_uint32),
                ("members", c_char_p), ("camera", c_void_p)]


class _Loan:
    """An image out of the camera's hands. It goes back when the image and all arrays over it are gone."""

    def __init__(self, library: Any, camera: Handle, record: Record, memory: Any) -> None:
        # References of its own: arrays may outlive the camera and the stream.
        self._library, self._camera, self.record, self._memory = library, camera.share(), record, memory
        self._lock = threading.Lock()

    def give_back(self) -> None:
        with self._lock:
            serial, self.record.part.data = self.record.serial, None
            if serial and self._camera.raw:
                self._library.OxCameraReturnImage(self._camera.raw, ctypes.byref(self.record))
            self.record.serial = 0

    def __del__(self) -> None:
        self.give_back()


class PicturePart:
    """A part of a picture, in place. Most pictures have one; 3D cameras send depth, confidence and more."""

    def __init__(self, loan: _Loan, record: Part, complete: bool) -> None:
        self._loan, self._record, self._complete = loan, record, complete
        self.kind = PartKind(record.kind)
        self.width, self.height = record.width, record.height
        self.offset_x, self.offset_y = record.offset_x, record.offset_y
        self.pixel_format: str = record.pixel_format_name.decode()
        self.pixel_format_number = record.pixel_format
        self.significant_bits = record.significant_bits
        #: The camera's number for what the part is for.
        self.purpose = record.purpose

    @property
    def data(self) -> memoryview:
        """The bytes of the part, in place."""
        if not self._loan.record.serial:
            raise Error(Code.INVALID_ARGUMENT, "The image was given back")
        if not self._record.data:
            raise Error(Code.INVALID_ARGUMENT, "The part has no data")
        memory = (c_char * self._record.size).from_address(self._record.data)
        memory._loan = self._loan  # the memory is not filled again while somebody looks at it
        return memoryview(memory).cast("B").toreadonly()

    @property
    def array(self) -> Any:
        """The pixels as an array of numpy, without a copy: (height, width) or (height, width, samples). It keeps the
        buffer away from the camera while it lives. Packed formats have no such array: see Picture.convert()."""
        import numpy

        part = self._record
        samples, bits = _LAYOUTS.get(part.bits_per_pixel, (0, 0)) if part.width and part.height else (0, 0)
        packed = self.pixel_format.endswith(("p", "Packed", "Planar"))
        if packed or not samples or not part.stride or not self._complete:
            raise Error(Code.NOT_SUPPORTED, f"{self.pixel_format or hex(self.pixel_format_number)} of "
                                            f"{self.width} x {self.height} pixels is no plain array: use convert()")
        kind = numpy.dtype("u1" if bits == 8 else ">u2" if part.big_endian else "<u2")
        shape = (self.height, self.width) + ((samples,) if samples > 1 else ())
        strides = (part.stride, samples * kind.itemsize) + ((kind.itemsize,) if samples > 1 else ())
        return numpy.ndarray(shape, kind, self.data, 0, strides)

    def __repr__(self) -> str:
        return f"<PicturePart {self.kind.name}, {self.width} x {self.height} {self.pixel_format}>"


class Picture:
    """An image of a camera. Its buffer goes back to the camera with release(), at the end of a with block, or when
    the image and every array made from it are gone."""

    def __init__(self, library: Any, camera: Handle, record: Record, memory: Any = None) -> None:
        self._library, self._camera = library, camera
        self._loan: Optional[_Loan] = _Loan(library, camera, record, memory)
        self.frame_id = record.frame_id
        #: Frames since the start, lost ones included.
        self.count = record.count
        self.state = ImageState(record.state)
        self.payload = PayloadKind(record.payload)
        self.width, self.height = record.part.width, record.part.height
        self.pixel_format: str = record.part.pixel_format_name.decode()
        self.pixel_format_number = record.part.pixel_format
        self.significant_bits = record.part.significant_bits
        #: Nanoseconds of the camera's clock, None when it tells none.
        self.time: Optional[int] = record.time if record.time_known else None
        #: Nanoseconds since 1970 by this computer.
        self.first_data_ns, self.complete_ns = record.first_data_ns, record.complete_ns
        self.skipped = record.skipped

    @property
    def complete(self) -> bool:
        return self.state == ImageState.Complete

    def _held(self) -> Record:
        if self._loan is None:
            raise Error(Code.INVALID_ARGUMENT, "The image was given back")
        if not self._loan.record.part.data:
            raise Error(Code.INVALID_ARGUMENT, f"The image has no pixels, its payload is {self.payload.name}")
        return self._loan.record

    @property
    def parts(self) -> list[PicturePart]:
        """All parts, the picture's own pixels first."""
        if self._loan is None:
            raise Error(Code.INVALID_ARGUMENT, "The image was given back")
        parts = []
        for index in range(self._loan.record.part_count):
            part = Part()
            check(self._library.OxCameraImagePart(self._camera.raw, ctypes.byref(self._loan.record), index,
                                                  ctypes.byref(part)))
            parts.append(PicturePart(self._loan, part, self.complete))
        return parts

    def _first(self) -> PicturePart:
        part = self._held().part
        assert self._loan
        return PicturePart(self._loan, part, self.complete)

    @property
    def data(self) -> memoryview:
        """The bytes of the picture, in place."""
        return self._first().data

    @property
    def array(self) -> Any:
        """The pixels as an array of numpy, without a copy; see PicturePart.array."""
        return self._first().array

    def convert(self, colour: bool = False, bits: int = 8) -> Any:
        """A copy as an array of gray values or, with colour, of red, green, blue, of 8 or 16 bits."""
        import numpy

        record = self._held()
        result = numpy.empty((self.height, self.width) + ((3,) if colour else ()), "u1" if bits == 8 else "u2")
        check(self._library.OxCameraConvertImage(ctypes.byref(record), 3 if colour else 1, bits,
                                                 c_void_p(result.ctypes.data), result.nbytes))
        return result

    def save(self, path: "str | os.PathLike[str]", *, overwrite: bool = False, eight_bits: bool = False,
             png_level: int = 1) -> str:
        """Saves the picture as the name's ending says (.png, .tif, .pgm, .ppm, .jpg, .npy, .raw); returns the file's
        name, which ends in .raw where the format is no picture. The JSON beside a raw file holds the camera, the frame
        number and the times."""
        options = SaveOptions(ctypes.sizeof(SaveOptions), overwrite, eight_bits, png_level, None, self._camera.raw)
        saved, size = ctypes.create_string_buffer(4096), c_size_t(4096)
        check(self._library.OxCameraSaveImage(ctypes.byref(self._held()), encoded(path), ctypes.byref(options), saved,
                                              ctypes.byref(size)), os.fspath(path))
        return saved.value.decode()

    def attach_chunks(self) -> None:
        """Lets the camera's chunk features show this image's values until it is given back."""
        check(self._library.OxCameraAttachChunks(self._camera.raw, ctypes.byref(self._held())))

    def release(self) -> None:
        """Gives the buffer back as soon as no array looks at it; the picture cannot be used afterwards."""
        self._loan = None

    def __enter__(self) -> "Picture":
        return self

    def __exit__(self, *_: object) -> None:
        self.release()

    def __repr__(self) -> str:
        return f"<Picture {self.frame_id}, {self.width} x {self.height} {self.pixel_format}, {self.state.name}>"


# Samples and bits of each, by the bits of a pixel whose samples fill whole bytes.
_LAYOUTS = {8: (1, 8), 16: (1, 16), 24: (3, 8), 32: (4, 8), 48: (3, 16), 64: (4, 16)}
