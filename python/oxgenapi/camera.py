"""Cameras: find one, open it, keep it. Over the shared library libOxCamera."""

from __future__ import annotations

import ctypes
import os
import threading
import time
from ctypes import POINTER, byref, c_char, c_char_p, c_int64, c_size_t, c_uint32, c_uint64, c_void_p
from typing import Any, Callable, Iterator, NamedTuple, Optional, Sequence

from ._library import Error, Handle, check, encoded, load, read_text
from ._numbers import ByteOrder, CameraCode, CameraInfo, CameraState, Reach
from .images import Part, Picture, Record
from .node import Home
from .nodemap import NodeMap, Path

_H, _TEXT, _SIZE = c_void_p, c_char_p, POINTER(c_size_t)
_Loss = ctypes.CFUNCTYPE(None, c_void_p, c_char_p, c_void_p)
_NO_LOSS = ctypes.cast(0, _Loss)


class FoundCamera(NamedTuple):
    """A camera as a search found it. open(camera.id) opens it."""

    id: str
    vendor: str
    model: str
    serial: str
    user_name: str
    version: str
    address: str
    interface: str
    interface_address: str
    protocol: str
    transport: str
    ways: str
    identity: str
    obstacle: str
    reach: Reach
    link_speed: int


class _Options(ctypes.Structure):
    _fields_ = [("size", c_size_t), ("access", c_uint32), ("search_ms", c_uint32), ("answer_ms", c_uint32),
                ("retry_ms", c_uint32), ("heartbeat_ms", c_uint32), ("byte_order", c_uint32), ("description", c_char_p),
                ("registers", c_char_p)]


class _Address(ctypes.Structure):
    _fields_ = [("address", c_char * 16), ("mask", c_char * 16), ("gateway", c_char * 16)]


class _Network(ctypes.Structure):
    _fields_ = [("current", _Address), ("stored", _Address), ("modes", c_uint32), ("supported", c_uint32)]


class _StreamOptions(ctypes.Structure):
    _fields_ = [("struct_size", c_size_t), ("buffer_count", c_size_t), ("buffers", c_void_p), ("latest_only", c_uint32),
                ("packet_size", c_uint32), ("packet_bytes", c_uint32), ("receive", c_uint32), ("socket_bytes", c_uint64),
                ("resend_percent", c_uint32)]


class _Memory(ctypes.Structure):
    _fields_ = [("data", c_void_p), ("size", c_size_t), ("user", c_void_p)]


class _Event(ctypes.Structure):
    _fields_ = [("struct_size", c_size_t), ("id", c_char * 24), ("data", c_void_p), ("size", c_size_t)]


class _Statistics(ctypes.Structure):
    _fields_ = [("struct_size", c_size_t)] + [(name, c_uint64) for name in (
        "complete", "incomplete", "lost", "no_buffer", "delivered", "skipped", "bytes", "payload_size", "buffers", "held",
        "waiting", "packets", "missing", "resends_asked", "resent", "duplicates", "ignored", "packet_asked",
        "packet_set", "socket_asked", "socket_granted")] + [("receive", c_uint32), ("running", c_uint32)]


class NetworkAddress(NamedTuple):
    address: str
    mask: str
    gateway: str = "0.0.0.0"


class Network(NamedTuple):
    """A camera's address now, and the one it starts with. Modes, as bits: 1 stored address, 2 DHCP, 4 link local."""

    current: NetworkAddress
    stored: NetworkAddress
    modes: int
    supported: int


class CameraEvent(NamedTuple):
    """An event message of a camera: hexadecimal digits as descriptions write them, and the bytes as they came."""

    id: str
    payload: bytes


_WAIT_DEFAULT = 0xffffffff

_lib: Any = None
_loading = threading.Lock()


def _camera_library() -> Any:
    """Loaded when it is first needed: who has a transport of his own does without."""
    global _lib
    with _loading:
        if _lib is None:
            lib = load("libOxCamera.so.1")
            for name, arguments in {
                "Find": (c_uint32, POINTER(_H)), "ListCount": (_H, _SIZE),
                "ListText": (_H, c_size_t, c_uint32, c_char_p, _SIZE),
                "ListNumber": (_H, c_size_t, c_uint32, POINTER(c_int64)),
                "OpenEx": (_TEXT, POINTER(_Options), POINTER(_H)), "Close": (_H,), "NodeMap": (_H, POINTER(_H)),
                "Text": (_H, c_uint32, c_char_p, _SIZE), "Description": (_H, c_void_p, _SIZE),
                "Read": (_H, c_void_p, c_uint64, c_size_t), "Write": (_H, c_char_p, c_uint64, c_size_t),
                "LastFailure": (_H, POINTER(c_uint32), c_char_p, _SIZE), "State": (_H, POINTER(c_uint32)),
                "OnLoss": (_H, _Loss, c_void_p, c_void_p), "WaitForLoss": (_H, c_uint32), "Reopen": (_H, c_uint32),
                "ImagePart": (_H, POINTER(Record), c_size_t, POINTER(Part)),
                "NextEvent": (_H, c_uint32, POINTER(_Event)), "EnableChunks": (_H, POINTER(c_char_p), c_size_t),
                "StartEx": (_H, POINTER(_StreamOptions)), "Stop": (_H,), "CancelWait": (_H,),
                "NextImage": (_H, c_uint32, POINTER(Record)), "GrabImage": (_H, c_uint32, POINTER(Record)),
                "ReturnImage": (_H, POINTER(Record)), "AttachChunks": (_H, POINTER(Record)),
                "StreamStatistics": (_H, POINTER(_Statistics)), "StreamAdvice": (_H, c_char_p, _SIZE),
                "SaveImage": (POINTER(Record), c_char_p, c_void_p, c_char_p, _SIZE),
                "ConvertImage": (POINTER(Record), c_uint32, c_uint32, c_void_p, c_size_t),
                "Network": (_H, POINTER(_Network)), "StoreAddress": (_H, POINTER(_Address)),
            }.items():
                function = getattr(lib, "OxCamera" + name)
                function.restype, function.argtypes = c_uint32, arguments
            _lib = lib
    return _lib


def cameras(seconds: float = 1.0) -> list[FoundCamera]:
    """The cameras of all transports. `seconds`: how long answers are collected."""
    lib, raw, count = _camera_library(), c_void_p(), c_size_t()
    check(lib.OxCameraFind(max(1, round(seconds * 1000)), byref(raw)))
    found = Handle(raw.value)
    check(lib.OxCameraListCount(found.raw, byref(count)))
    result = []
    for index in range(count.value):
        texts: list[Any] = [read_text(lambda to, size: lib.OxCameraListText(found.raw, index, item, to, size))
                            for item in range(CameraInfo.Reach)]
        numbers = [c_int64(), c_int64()]
        for item, number in enumerate(numbers, CameraInfo.Reach):
            check(lib.OxCameraListNumber(found.raw, index, item, byref(number)))
        result.append(FoundCamera._make([*texts, Reach(numbers[0].value), numbers[1].value]))
    return result


class Camera(NodeMap):
    """An open camera: its features are attributes, as those of every node map.

        with oxgenapi.open("GV01") as cam:
            cam.ExposureTime.value = 2000

    Features are loaded at the first use; registers and the description's bytes are there without."""

    def __init__(self, name: str = "", *, read_only: bool = False, search: float = 0, answer: float = 0, retry: float = 0,
                 heartbeat: float = 0, byte_order: ByteOrder = ByteOrder.Automatic, description: Optional[Path] = None,
                 registers: Optional[Path] = None) -> None:
        milliseconds = [round(seconds * 1000) for seconds in (search, answer, retry, heartbeat)]
        options = _Options(ctypes.sizeof(_Options), int(read_only), *milliseconds, int(byte_order),
                           None if description is None else encoded(description),
                           None if registers is None else encoded(registers))
        raw = c_void_p()
        self._cameras = _camera_library()
        check(self._cameras.OxCameraOpenEx(encoded(name), byref(options), byref(raw)), name)
        self._camera = Handle(raw.value)
        self._callbacks: list[Any] = []
        self._names: Optional[list[str]] = None
        self._memory: list[Any] = []  # of the stream, where the caller gave it

    def __getattr__(self, name: str) -> Any:
        if name != "_home":
            return super().__getattr__(name)
        raw = c_void_p()
        check(self._cameras.OxCameraNodeMap(self._camera.raw, byref(raw)))
        self._home = Home(Handle(raw.value))
        return self._home

    @property
    def id(self) -> str:
        return self._text(CameraInfo.Id)

    @property
    def address(self) -> str:
        return self._text(CameraInfo.Address)

    def _text(self, item: int) -> str:
        return read_text(lambda to, size: self._cameras.OxCameraText(self._camera.raw, item, to, size))

    # ---- registers and description ----

    def read(self, address: int, length: int) -> bytes:
        """Bytes from the camera's address space."""
        buffer = ctypes.create_string_buffer(length)
        check(self._cameras.OxCameraRead(self._camera.raw, buffer, address, length))
        return buffer.raw

    def write(self, address: int, data: bytes) -> None:
        check(self._cameras.OxCameraWrite(self._camera.raw, bytes(data), address, len(data)))

    @property
    def description(self) -> bytes:
        """The description as the camera has it, XML or zip, usable or not."""
        size = c_size_t()
        check(self._cameras.OxCameraDescription(self._camera.raw, None, byref(size)))
        buffer = ctypes.create_string_buffer(size.value)
        check(self._cameras.OxCameraDescription(self._camera.raw, buffer, byref(size)))
        return buffer.raw

    @property
    def last_failure(self) -> Optional[Error]:
        """Why the last failed access failed, under the camera's own code; features report it under theirs."""
        code = c_uint32()
        text = read_text(lambda to, size: self._cameras.OxCameraLastFailure(self._camera.raw, byref(code), to, size))
        return Error(CameraCode(code.value) if code.value in CameraCode._value2member_map_ else code.value,
                     text) if code.value else None

    # ---- loss ----

    @property
    def state(self) -> CameraState:
        state = c_uint32()
        check(self._cameras.OxCameraState(self._camera.raw, byref(state)))
        return CameraState(state.value)

    def on_loss(self, callback: Optional[Callable[[str], None]]) -> None:
        """`callback` gets the reason, on a thread of its own, once for each loss; None takes the former away."""
        kept = _NO_LOSS
        if callback is not None:
            function = callback
            kept = _Loss(lambda camera, reason, private: function(reason.decode("utf-8", "replace")))
        check(self._cameras.OxCameraOnLoss(self._camera.raw, kept, None, None))
        self._callbacks = [*self._callbacks[-1:], kept]  # one that was replaced may still be running

    def wait_for_loss(self, seconds: float) -> bool:
        """Whether the camera was lost within that time."""
        code: int = self._cameras.OxCameraWaitForLoss(self._camera.raw, round(seconds * 1000))
        if code != CameraCode.TIMEOUT:
            check(code)
        return code == 0

    def reopen(self, retry: float = 0) -> None:
        """Opens the same camera again, trying for so many seconds. Nodes stay; what they remembered is dropped."""
        check(self._cameras.OxCameraReopen(self._camera.raw, round(retry * 1000)))

    # ---- images ----

    def start(self, buffers: int = 0, *, latest_only: bool = False, packet_size: Optional[int] = None,
              memory: Optional[Sequence[Any]] = None) -> None:
        """Starts a stream into so many buffers (0: eight). latest_only: only the newest image waits. packet_size: of
        network cameras, in bytes; 0 finds the largest, None leaves the camera's own. memory: takes the place of
        buffers; each a writable, contiguous object of at least the payload size, such as a bytearray or an array of
        numpy. It is held until the stream has ended and its pictures are gone."""
        views = [memoryview(each).cast("B") for each in memory or ()]
        held = [(c_char * view.nbytes).from_buffer(view) for view in views]
        frames = (_Memory * len(held))(*[_Memory(ctypes.addressof(each), len(each), None) for each in held])
        policy = 0 if packet_size is None else 2 if packet_size else 1
        options = _StreamOptions(ctypes.sizeof(_StreamOptions), len(held) or buffers,
                                 ctypes.addressof(frames) if held else None, latest_only, policy, packet_size or 0)
        check(self._cameras.OxCameraStartEx(self._camera.raw, byref(options)))
        self._memory = held

    def stop(self) -> None:
        """Ends the stream, and waits of other threads. Pictures stay as they are."""
        check(self._cameras.OxCameraStop(self._camera.raw))
        self._memory = []

    def next_image(self, seconds: Optional[float] = None) -> Picture:
        """The next picture of a running stream. None: a time that follows the exposure."""
        return self._picture(self._cameras.OxCameraNextImage, seconds)

    def grab(self, seconds: Optional[float] = None) -> Picture:
        """A picture that came after this call. Starts a stream if none runs and keeps it for the next call."""
        return self._picture(self._cameras.OxCameraGrabImage, seconds)

    def images(self, count: Optional[int] = None, *, seconds: Optional[float] = None, **options: Any) -> Iterator[Picture]:
        """So many pictures, one after the other; None: without end. Starts a stream, with the options of start(), and
        stops it at the end, unless one runs already."""
        record = _Statistics(ctypes.sizeof(_Statistics))
        check(self._cameras.OxCameraStreamStatistics(self._camera.raw, byref(record)))
        if not record.running:
            self.start(**options)
        try:
            done = 0
            while count is None or done < count:
                yield self.next_image(seconds)
                done += 1
        finally:
            if not record.running:
                self.stop()

    def enable_chunks(self, *names: str) -> None:
        """Lets the camera send these chunks with its images, by the entries of ChunkSelector; before start(). See
        Picture.attach_chunks()."""
        texts = (c_char_p * len(names))(*[encoded(name) for name in names])
        check(self._cameras.OxCameraEnableChunks(self._camera.raw, texts, len(names)))

    def cancel_wait(self) -> None:
        """Ends waits of other threads with an error, or the next wait."""
        check(self._cameras.OxCameraCancelWait(self._camera.raw))

    @property
    def stream_statistics(self) -> dict[str, Optional[int]]:
        """Counters of the stream that runs, or of the last; None for what the transport does not count."""
        record = _Statistics(ctypes.sizeof(_Statistics))
        check(self._cameras.OxCameraStreamStatistics(self._camera.raw, byref(record)))
        numbers = {name: getattr(record, name) for name, _ in _Statistics._fields_[1:]}
        return {name: None if number == 2**64 - 1 else number for name, number in numbers.items()}

    @property
    def stream_advice(self) -> str:
        """What hampers the stream, one sentence a line; empty when nothing is known."""
        return read_text(lambda to, size: self._cameras.OxCameraStreamAdvice(self._camera.raw, to, size))

    def _picture(self, wait: Any, seconds: Optional[float]) -> Picture:
        record = Record()
        check(wait(self._camera.raw, _WAIT_DEFAULT if seconds is None else round(seconds * 1000), byref(record)))
        return Picture(self._cameras, self._camera, record, self._memory)

    # ---- events ----

    def next_event(self, seconds: float) -> Optional[CameraEvent]:
        """Waits for an event message and delivers it to the features, on this thread: callbacks run before it returns.
        None: none came in that time."""
        event = _Event(ctypes.sizeof(_Event))
        code: int = self._cameras.OxCameraNextEvent(self._camera.raw, max(0, round(seconds * 1000)), byref(event))
        if code == CameraCode.TIMEOUT:
            return None
        check(code)
        return CameraEvent(event.id.decode(), ctypes.string_at(event.data, event.size) if event.data else b"")

    def events(self, seconds: Optional[float] = None) -> Iterator[CameraEvent]:
        """Event messages as they come, delivered as next_event() does, for so long; None: without end."""
        end = None if seconds is None else time.monotonic() + seconds
        while end is None or time.monotonic() < end:
            event = self.next_event(0.1)  # short, so that Ctrl-C is heard
            if event is not None:
                yield event

    # ---- network ----

    @property
    def network(self) -> Network:
        record = _Network()
        check(self._cameras.OxCameraNetwork(self._camera.raw, byref(record)))

        def address(of: _Address) -> NetworkAddress:
            return NetworkAddress(of.address.decode(), of.mask.decode(), of.gateway.decode())

        return Network(address(record.current), address(record.stored), record.modes, record.supported)

    def store_address(self, address: str, mask: str, gateway: str = "0.0.0.0") -> None:
        """What the camera uses from its next power on."""
        check(self._cameras.OxCameraStoreAddress(self._camera.raw,
                                                 byref(_Address(encoded(address), encoded(mask), encoded(gateway)))))

    def close(self) -> None:
        """Gives the camera back. Nodes made from it stay harmless."""
        if self._camera.raw:
            self._cameras.OxCameraOnLoss(self._camera.raw, _NO_LOSS, None, None)
            self._cameras.OxCameraClose(self._camera.raw)
        self._camera.close()
        if "_home" in self.__dict__:
            super().close()

    def __repr__(self) -> str:
        return f"<Camera {self.id}, {self.state.name}>" if self._camera.raw else "<Camera, closed>"


def open(name: "str | os.PathLike[str]" = "", **options: Any) -> Camera:
    """Opens a camera: by ID, address, serial number or user name; "" is the only one there is, "simulated" is always
    there. Options as for Camera: read_only, retry (seconds) and so on."""
    return Camera(os.fspath(name), **options)
