"""The flat interface as ctypes sees it: the shared libraries, prototypes, failures, texts, handles."""

from __future__ import annotations

import ctypes
import os
import threading
from ctypes import POINTER, byref, c_bool, c_char_p, c_double, c_int, c_int32, c_int64, c_size_t, c_uint32, c_uint64
from ctypes import c_void_p
from typing import Any, Callable, Optional

from ._numbers import Code


# The libraries that a wheel carries, and others that those need; most installations have none here.
_BUNDLED = os.path.join(os.path.dirname(__file__), "lib")


def _load_bundled() -> None:
    """Loads what our libraries need, in whatever order that works: they find it by name once it is loaded."""
    waiting = [name for name in os.listdir(_BUNDLED) if not name.startswith("libOx")]
    while waiting:
        before = len(waiting)
        for name in list(waiting):
            try:
                ctypes.CDLL(os.path.join(_BUNDLED, name))
                waiting.remove(name)
            except OSError:
                pass  # it needs one of the others first
        if len(waiting) == before:
            return  # loading ours says what is wrong


def load(name: str) -> ctypes.CDLL:
    """Loads a library from the folder that OXGENAPI_LIBRARY_PATH names, from this package, or from where the system finds
    libraries."""
    folder = os.environ.get("OXGENAPI_LIBRARY_PATH")
    if not folder and os.path.isdir(_BUNDLED):
        folder = _BUNDLED
    try:
        return ctypes.CDLL(os.path.join(folder, name) if folder else name)
    except OSError as error:
        raise ImportError(f"{error}. Install the package liboxgenapi3, or let OXGENAPI_LIBRARY_PATH name the folder "
                          f"with {name}.") from error


if os.path.isdir(_BUNDLED) and not os.environ.get("OXGENAPI_LIBRARY_PATH"):
    _load_bundled()
_base = load("libOxBase.so.1")
lib = load("libOxGenApi.so.3")


class EventData(ctypes.Structure):
    _fields_ = [("id", c_uint64), ("buffer", c_void_p), ("size", c_uint64)]


class EventDataEx(ctypes.Structure):
    _fields_ = [("id", c_char_p), ("buffer", c_void_p), ("size", c_uint64)]


class ChunkData(ctypes.Structure):
    _fields_ = [("id", c_uint64), ("base", c_void_p), ("offset", c_int64), ("length", c_int64)]


ReadMem = ctypes.CFUNCTYPE(c_int, c_void_p, c_int64, c_int64, c_void_p)
WriteMem = ctypes.CFUNCTYPE(c_int, c_void_p, c_int64, c_int64, c_void_p)
PortAccess = ctypes.CFUNCTYPE(c_uint32, c_void_p)
NodeUpdate = ctypes.CFUNCTYPE(None, c_void_p, c_void_p)
SettingsCallback = ctypes.CFUNCTYPE(c_bool, c_void_p, c_uint32, c_void_p)
FirmwareReset = ctypes.CFUNCTYPE(c_bool, ctypes.c_uint, ctypes.c_uint, POINTER(c_void_p), c_void_p)

_H, _TEXT, _SIZE = c_void_p, c_char_p, POINTER(c_size_t)
_PROTOTYPES = {
    "CreateNodeMap": (POINTER(_H),),
    "NMLoadXMLFile": (_H, _TEXT),
    "NMLoadXMLString": (_H, _TEXT),
    "NMConnectPortEx": (_H, ReadMem, WriteMem, PortAccess, c_void_p, _TEXT),
    "NMNodeCount": (_H, POINTER(c_uint32)),
    "NMListNode": (_H, c_uint32, c_char_p, _SIZE),
    "NMGetNode": (_H, _TEXT, POINTER(_H)),
    "NMInfoAsString": (_H, c_uint32, c_char_p, _SIZE),
    "NMPollNodes": (_H, c_int32),
    "NMDeliverEvent": (_H, POINTER(EventData)),
    "NMDeliverEventEx": (_H, POINTER(EventDataEx)),
    "NMAttachChunkList": (_H, POINTER(ChunkData), c_size_t),
    "NMUpdateChunks": (_H, c_void_p),
    "NMDetachAllChunks": (_H,),
    "NMLoadSetEx": (_H, _TEXT, c_bool, SettingsCallback, c_void_p),
    "NMLoadSetString": (_H, _TEXT, c_bool, SettingsCallback, c_void_p),
    "NMSaveSet": (_H, _TEXT, SettingsCallback, c_void_p),
    "NMSaveSetEx": (_H, _TEXT, _TEXT, SettingsCallback, c_void_p),
    "NMSaveSetString": (_H, c_char_p, _SIZE, SettingsCallback, c_void_p),
    "NMSaveSetStringEx": (_H, c_char_p, _SIZE, _TEXT, SettingsCallback, c_void_p),
    "NMCreateStream": (_H, c_uint32, POINTER(_H)),
    "NMStreamPush": (_H, _H),
    "NMStreamDump": (_H, c_char_p, _SIZE),
    "NMUploadFile": (_H, _TEXT, _TEXT),
    "NMUploadFileMemory": (_H, _TEXT, c_void_p, c_size_t),
    "NMDownloadFile": (_H, _TEXT, _TEXT),
    "NMDownloadFileMemory": (_H, _TEXT, c_void_p, _SIZE),
    "NType": (_H, POINTER(c_int32)),
    "NGetAsBoolean": (_H, POINTER(c_bool)),
    "NGetAsInteger": (_H, POINTER(c_int64)),
    "NGetAsFloat": (_H, POINTER(c_double)),
    "NGetAsString": (_H, c_char_p, _SIZE),
    "NSetAsBoolean": (_H, c_bool),
    "NSetAsInteger": (_H, c_int64),
    "NSetAsFloat": (_H, c_double),
    "NSetAsString": (_H, _TEXT),
    "NInfoAsInteger": (_H, c_uint32, POINTER(c_int64)),
    "NInfoAsFloat": (_H, c_uint32, POINTER(c_double)),
    "NInfoAsString": (_H, c_uint32, c_char_p, _SIZE),
    "NListCount": (_H, c_uint32, POINTER(c_int64)),
    "NList": (_H, c_uint32, c_int64, c_char_p, _SIZE),
    "NGetAsMemory": (_H, c_int64, c_void_p, c_int64),
    "NSetAsMemory": (_H, c_int64, c_void_p, c_int64),
    "NGetAsRegisterData": (_H, c_void_p, POINTER(c_int64)),
    "NRegisterUpdate": (_H, NodeUpdate, c_void_p, POINTER(c_void_p)),
    "NDeregisterUpdate": (_H, c_void_p),
    "NInvalidate": (_H,),
    "NGetVerifyMode": (_H, POINTER(c_uint32)),
    "NSetVerifyMode": (_H, c_uint32),
    "CreateFirmwareUpdater": (_TEXT, c_int, POINTER(_H)),
    "FWUpdateFileCount": (_H, _SIZE),
    "FWUpdateFileInfoCount": (_H, c_size_t, _SIZE),
    "FWUpdateFileInfo": (_H, c_size_t, c_size_t, c_uint32, c_char_p, _SIZE),
    "FWUpdate": (_H, _H, c_size_t, FirmwareReset, c_void_p),
    "GetGenApiVersion": (POINTER(c_uint32),) * 3,
    "Resource_GetFileVersion": (POINTER(c_uint32),) * 3,
}
for _name, _arguments in _PROTOTYPES.items():
    _function = getattr(lib, _name)
    _function.argtypes = _arguments
    _function.restype = None if _name == "Resource_GetFileVersion" else c_uint32
_base.OxGetLastError.argtypes = (POINTER(c_uint32), c_char_p, _SIZE)
_base.OxSetLastError.argtypes = (c_uint32, c_char_p)
_base.OxIfaceContainerReleaseUseCounter.argtypes = (_H,)
_base.OxIfaceContainerCheckedAddUseCounter.argtypes = (_H,)


class Error(Exception):
    """A failed call: the result code, one line of text, the feature or file it was about ("" where there is none)."""

    def __init__(self, code: int, text: str, feature: str = "") -> None:
        named = not feature or text.startswith(feature)  # most texts begin with the feature
        super().__init__(text if named else f"{feature}: {text}")
        self.code: int = Code(code) if code in Code._value2member_map_ else code
        self.text = text
        self.feature = feature


# The exceptions that Python callbacks have raised inside library calls that still run, by thread.
_raised: dict[int, BaseException] = {}


def keep_exception(error: BaseException) -> int:
    """Called by callbacks: keeps what they raise for the call that they run in. Returns the code for a failed access."""
    _raised[threading.get_ident()] = error
    code = int(error.code) if isinstance(error, Error) else int(Code.UNSPECIFIED)
    text = error.text if isinstance(error, Error) else str(error) or type(error).__name__
    _base.OxSetLastError(code, text.encode("utf-8", "replace"))
    return code - (1 << 32)


def last_error(code: int, feature: str = "") -> Error:
    last_code, size = c_uint32(), c_size_t()
    _base.OxGetLastError(byref(last_code), None, byref(size))
    text = ""
    if last_code.value == code and size.value > 1:
        buffer = ctypes.create_string_buffer(size.value)
        _base.OxGetLastError(None, buffer, byref(size))
        text = buffer.value.decode("utf-8", "replace")
    return Error(code, text or "Failed without a text", feature)


def last_error_of(node: Optional[int], code: int) -> Error:
    """The same in a callback that is told of a node: the error names it, and stays the last one."""
    error = last_error(code)
    if node:
        error = Error(code, error.text, read_text(lambda to, size: lib.NInfoAsString(node, 0, to, size)))
        _base.OxSetLastError(code, error.text.encode("utf-8", "replace"))
    return error


def check(code: int, feature: str = "") -> None:
    if code or _raised:
        settle(code, feature)


def settle(code: int, feature: str = "") -> None:
    """Ends a call that failed, or in which a callback has raised: that is the failure's cause, unless it is one that
    must end the program (Ctrl-C), which goes on as itself whatever became of the call."""
    cause = _raised.pop(threading.get_ident(), None)
    if cause is not None and not isinstance(cause, Exception):
        raise cause
    if code:
        raise last_error(code, feature) from cause


def encoded(text: Any) -> bytes:
    """UTF-8 for the library; also takes paths. What came undecodable goes back as it was."""
    path: Any = os.fspath(text)
    data: bytes = path if isinstance(path, bytes) else path.encode("utf-8", "surrogateescape")
    if b"\0" in data:
        raise ValueError("embedded null character")
    return data


def read_text(call: Callable[[Any, Any], Any], feature: str = "") -> str:
    """Text from a call that takes a buffer and its size. A text that fills the buffer may have been cut."""
    room = 512
    while True:
        buffer, size = ctypes.create_string_buffer(room), c_size_t(room)
        check(call(buffer, byref(size)), feature)
        if len(buffer.value) + 1 < room:
            return buffer.value.decode("utf-8", "surrogateescape")
        room *= 8


class Handle:
    """One reference to an object of the library, given back by close() or with this object."""

    def __init__(self, raw: Optional[int], _release: Any = _base.OxIfaceContainerReleaseUseCounter) -> None:
        self.raw = raw
        self._release = _release  # still there when the interpreter ends

    def share(self) -> Handle:
        """Another reference to the same object; one to nothing when this one was given back."""
        raw = self.raw
        return Handle(raw if raw and _base.OxIfaceContainerCheckedAddUseCounter(raw) >= 0 else None)

    def close(self) -> None:
        raw, self.raw = self.raw, None
        if raw:
            self._release(raw)

    def __del__(self) -> None:
        self.close()


def _version(call: Any) -> tuple[int, int, int]:
    parts = [c_uint32() for _ in range(3)]
    call(*[byref(part) for part in parts])
    return (parts[0].value, parts[1].value, parts[2].value)


def library_version() -> tuple[int, int, int]:
    """The version of the library's file."""
    return _version(lib.Resource_GetFileVersion)


def genapi_version() -> tuple[int, int, int]:
    """The GenApi release that the library stands on."""
    return _version(lib.GetGenApiVersion)
