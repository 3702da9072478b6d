"""A simulated camera to try things with: registers, events, images with chunks."""

from __future__ import annotations

import ctypes
from ctypes import POINTER, byref, c_bool, c_char_p, c_int, c_int64, c_size_t, c_uint32, c_uint64, c_void_p
from typing import Any, Iterator, NamedTuple, Optional

from ._library import ChunkData, EventData, PortAccess, ReadMem, WriteMem, check, load


class Event(NamedTuple):
    """An event message: number, and payload as bytes."""

    id: int
    payload: bytes


class Image(NamedTuple):
    """An image buffer, and its chunks as (ID, offset, length)."""

    data: bytearray
    frame_id: int
    chunks: list[tuple[int, int, int]]


class _ImageRecord(ctypes.Structure):
    _fields_ = [("buffer", c_void_p), ("size", c_size_t), ("frame_id", c_uint64), ("chunks", POINTER(ChunkData)),
                ("chunk_count", c_size_t)]


_lib: Any = None


def _camera_library() -> Any:
    """Loaded when the first camera is made: who has a real one does not need it."""
    global _lib
    if _lib is None:
        lib = load("libOxSimulatedCamera.so.1")
        for name, result, arguments in (
            ("Create", c_void_p, ()), ("Destroy", None, (c_void_p,)), ("Description", c_char_p, (c_void_p,)),
            ("Reset", None, (c_void_p,)), ("Read", c_int, (c_void_p, c_int64, c_int64, c_void_p)),
            ("Write", c_int, (c_void_p, c_int64, c_int64, c_void_p)), ("Access", c_uint32, (c_void_p,)),
            ("NextEvent", c_bool, (c_void_p, POINTER(EventData))),
            ("NextImage", c_bool, (c_void_p, POINTER(_ImageRecord))),
        ):
            function = getattr(lib, "OxSimulatedCamera" + name)
            function.restype, function.argtypes = result, arguments
        _lib = lib
    return _lib


class _Camera:
    """The camera itself: lives as long as a SimulatedCamera or a node map connected to it."""

    def __init__(self) -> None:
        self.lib = _camera_library()
        self.raw = self.lib.OxSimulatedCameraCreate()
        if not self.raw:
            raise MemoryError

    def __del__(self) -> None:
        if getattr(self, "raw", None):
            self.lib.OxSimulatedCameraDestroy(self.raw)


class SimulatedCamera:
    """A camera fresh from the factory. NodeMap.of(camera) gives its features."""

    def __init__(self) -> None:
        self._open: Optional[_Camera] = _Camera()
        self._lib = self._open.lib

    @property
    def _camera(self) -> int:
        if self._open is None:
            raise ValueError("the camera is closed")
        return int(self._open.raw)

    @property
    def description(self) -> str:
        """The description, XML, that fits the firmware now running."""
        return str(self._lib.OxSimulatedCameraDescription(self._camera), "utf-8")

    def read(self, address: int, length: int) -> bytes:
        buffer = ctypes.create_string_buffer(length)
        check(self._lib.OxSimulatedCameraRead(buffer, address, length, self._camera) & 0xFFFFFFFF)
        return buffer.raw

    def write(self, address: int, data: bytes) -> None:
        check(self._lib.OxSimulatedCameraWrite(bytes(data), address, len(data), self._camera) & 0xFFFFFFFF)

    def events(self) -> Iterator[Event]:
        """The event messages that wait."""
        event = EventData()
        while self._lib.OxSimulatedCameraNextEvent(self._camera, byref(event)):
            yield Event(event.id, ctypes.string_at(event.buffer, event.size))

    def image(self) -> Optional[Image]:
        """The oldest image that waits, or a new one; None when the camera does not run."""
        record = _ImageRecord()
        if not self._lib.OxSimulatedCameraNextImage(self._camera, byref(record)):
            return None
        chunks = [(c.id, c.offset, c.length) for c in record.chunks[:record.chunk_count]]
        return Image(bytearray(ctypes.string_at(record.buffer, record.size)), record.frame_id, chunks)

    def reset(self) -> None:
        """A power cycle."""
        self._lib.OxSimulatedCameraReset(self._camera)

    def _native_port(self) -> tuple[Any, Any, Any, int, Any]:
        # The library calls the camera without a detour through Python.
        lib = self._lib
        return (ctypes.cast(lib.OxSimulatedCameraRead, ReadMem), ctypes.cast(lib.OxSimulatedCameraWrite, WriteMem),
                ctypes.cast(lib.OxSimulatedCameraAccess, PortAccess), self._camera, self._open)

    def close(self) -> None:
        """Gives the camera up; it ends with the last node map connected to it."""
        self._open = None

    def __enter__(self) -> SimulatedCamera:
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()
