"""Firmware updates from a GenICam update file."""

from __future__ import annotations

from ctypes import byref, c_size_t, c_void_p
from typing import Any, Callable, NamedTuple, Optional

from ._library import FirmwareReset, Handle, check, encoded, lib, read_text
from ._numbers import FirmwareUpdateInfo
from .nodemap import NodeMap, Path


class Info(NamedTuple):
    key: str
    value: str
    language: str


class FirmwareUpdater:
    """One update file. `verify`: read and check the whole file now."""

    def __init__(self, path: Path, verify: bool = True) -> None:
        raw = c_void_p()
        check(lib.CreateFirmwareUpdater(encoded(path), verify, byref(raw)), str(path))
        self._handle = Handle(raw.value)

    @property
    def entries(self) -> list[list[Info]]:
        """What each update entry says about itself."""
        count = c_size_t()
        check(lib.FWUpdateFileCount(self._handle.raw, byref(count)))
        return [self._infos(entry) for entry in range(count.value)]

    def update(self, map: NodeMap, entry: int = 0, reopen: Optional[Callable[[], NodeMap]] = None) -> None:
        """Applies an entry to a device. `reopen` is called whenever the update has reset the device and returns the node
        map of the device that came back; what it raises ends the update."""
        if not 0 <= entry < len(self.entries):
            raise IndexError(f"entry {entry} of {len(self.entries)}")
        raised: list[BaseException] = []
        maps: list[NodeMap] = []  # alive while the update works on them

        def reset(duration_ms: int, delay_ms: int, new_map: Any, private: Any) -> bool:
            if reopen is None:
                return False
            try:
                maps.append(reopen())
                new_map[0] = maps[-1]._handle.raw
                return True
            except BaseException as error:
                raised.append(error)
                return False

        code = lib.FWUpdate(self._handle.raw, map._handle.raw, entry, FirmwareReset(reset), None)
        if raised:
            raise raised[0]
        check(code)

    def close(self) -> None:
        self._handle.close()

    def __enter__(self) -> FirmwareUpdater:
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()

    def _infos(self, entry: int) -> list[Info]:
        count = c_size_t()
        check(lib.FWUpdateFileInfoCount(self._handle.raw, entry, byref(count)))
        return [Info(*[self._text(entry, index, item) for item in FirmwareUpdateInfo]) for index in range(count.value)]

    def _text(self, entry: int, index: int, item: int) -> str:
        return read_text(lambda to, size: lib.FWUpdateFileInfo(self._handle.raw, entry, index, item, to, size))
