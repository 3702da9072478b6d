"""A feature of a node map: its value, what is known about it, its relations, its bytes, its updates."""

from __future__ import annotations

import ctypes
import enum
import sys
from ctypes import byref, c_bool, c_double, c_int32, c_int64, c_uint32, c_void_p
from typing import TYPE_CHECKING, Any, Callable, Optional, Union

from ._library import Code, Error, Handle, NodeUpdate, check, encoded, lib, read_text

if TYPE_CHECKING:
    from .nodemap import NodeMap

Value = Union[bool, int, float, str, bytes]


class NodeType(enum.IntEnum):
    Boolean = 1
    Category = 2
    Command = 3
    Enumeration = 4
    EnumEntry = 5
    Float = 6
    Integer = 7
    String = 8
    Port = 9
    Other = 10
    Register = 11


class Access(enum.IntEnum):
    NotImplemented = 0
    NotAvailable = 1
    ReadOnly = 2
    WriteOnly = 3
    ReadWrite = 4


class Visibility(enum.IntEnum):
    Invisible = -1
    Beginner = 0
    Expert = 1
    Guru = 2


class Representation(enum.IntEnum):
    Undefined = -1
    Linear = 0
    Logarithmic = 1
    Boolean = 2
    PureNumber = 3
    HexNumber = 4
    IPV4Address = 5
    MACAddress = 6


class VerifyMode(enum.IntEnum):
    """Which value calls of a node are checked against its limits."""

    Nothing = 0
    WriteOnly = 1
    ReadOnly = 2
    ReadWrite = 3


# TNodeInfo and TNodeList
_NAME, _DISPLAY_NAME, _ACCESS, _MAX, _MIN, _INCREMENT = 0, 1, 2, 3, 4, 5
_STREAMABLE, _TOOL_TIP, _DESCRIPTION, _VISIBILITY, _POLLING, _EVENT_ID = 7, 9, 10, 11, 12, 13
_ADDRESS, _LENGTH, _REPRESENTATION, _UNIT, _DEPRECATED = 14, 15, 16, 17, 19
_CHILDREN, _SELECTED, _ENTRIES, _SELECTING = 0, 1, 2, 3


# Limits that say there is none.
_LOWEST = (-(1 << 63), -sys.float_info.max)
_HIGHEST = ((1 << 63) - 1, sys.float_info.max)


class Node:
    """Made by NodeMap: cam.ExposureTime or cam["ExposureTime"]. Hold on to nodes that are used often."""

    def __init__(self, map: "NodeMap", handle: Handle, name: str) -> None:
        self._map = map
        self._handle = handle
        self._name = name
        self._type = NodeType(self._number(lib.NType, c_int32))

    # ---- value ----

    @property
    def value(self) -> Value:
        """bool, int, float, str (strings, and entries by name), bytes (registers); for commands whether it is done."""
        if self._type in (NodeType.Boolean, NodeType.Command):
            return self._number(lib.NGetAsBoolean, c_bool)
        if self._type is NodeType.Integer:
            return self._number(lib.NGetAsInteger, c_int64)
        if self._type is NodeType.Float:
            return self._number(lib.NGetAsFloat, c_double)
        if self._type is NodeType.Register:
            return self._register()
        return self.text

    @value.setter
    def value(self, value: Value) -> None:
        handle = self._handle.raw
        if isinstance(value, bool):
            self._check(lib.NSetAsBoolean(handle, value))
        elif isinstance(value, int):
            if not -(1 << 63) <= value < 1 << 63:
                raise OverflowError(f"{self._name}: {value} does not fit 64 bits")
            self._check(lib.NSetAsInteger(handle, value))
        elif isinstance(value, float):
            self._check(lib.NSetAsFloat(handle, value))
        elif isinstance(value, str):
            self._check(lib.NSetAsString(handle, encoded(value)))
        else:
            raise TypeError(f"{self._name}: a value is bool, int, float or str, not {type(value).__name__}")

    @property
    def text(self) -> str:
        """The value as text: integers in decimal, floats with six digits, an entry's name."""
        return self._text(lambda to, size: lib.NGetAsString(self._handle.raw, to, size))

    @property
    def number(self) -> int:
        """The value as integer: of an enumeration the number of its entry."""
        return self._number(lib.NGetAsInteger, c_int64)

    def execute(self) -> None:
        """Executes a command; `value` tells whether it is done."""
        self._check(lib.NSetAsBoolean(self._handle.raw, True))

    # ---- information ----

    @property
    def name(self) -> str:
        return self._name

    @property
    def type(self) -> NodeType:
        return self._type

    @property
    def display_name(self) -> str:
        return self._info_text(_DISPLAY_NAME)

    @property
    def description(self) -> str:
        return self._info_text(_DESCRIPTION)

    @property
    def tool_tip(self) -> str:
        return self._info_text(_TOOL_TIP)

    @property
    def access(self) -> Access:
        return Access(self._info_integer(_ACCESS))

    @property
    def readable(self) -> bool:
        return self.access in (Access.ReadOnly, Access.ReadWrite)

    @property
    def writable(self) -> bool:
        return self.access in (Access.WriteOnly, Access.ReadWrite)

    @property
    def min(self) -> Union[int, float]:
        return self._limit(_MIN)

    @property
    def max(self) -> Union[int, float]:
        return self._limit(_MAX)

    @property
    def increment(self) -> Union[int, float, None]:
        """None for a float that takes every value."""
        try:
            return self._limit(_INCREMENT)
        except Error as error:
            if error.code == Code.NOT_SUPPORTED and self._type is NodeType.Float:
                return None
            raise

    @property
    def unit(self) -> str:
        return self._info_text(_UNIT) if self._type in (NodeType.Integer, NodeType.Float) else ""

    @property
    def representation(self) -> Representation:
        return Representation(self._info_integer(_REPRESENTATION))

    @property
    def visibility(self) -> Visibility:
        return Visibility(self._info_integer(_VISIBILITY))

    @property
    def is_streamable(self) -> bool:
        """Whether it is part of the settings."""
        return self._info_integer(_STREAMABLE) != 0

    @property
    def is_deprecated(self) -> bool:
        return self._info_integer(_DEPRECATED) != 0

    @property
    def polling_ms(self) -> Optional[int]:
        """Milliseconds between two looks at the device; None when the node is not polled."""
        time = self._info_integer(_POLLING)
        return None if time < 0 else time

    @property
    def event_id(self) -> str:
        """Hexadecimal digits of the event that changes it; "" where there is none."""
        return self._info_text(_EVENT_ID)

    @property
    def address(self) -> int:
        """Of a register, in bytes."""
        return self._info_integer(_ADDRESS)

    @property
    def length(self) -> int:
        """Of a register, in bytes."""
        return self._info_integer(_LENGTH)

    # ---- relations ----

    @property
    def entries(self) -> list[str]:
        """The names of an enumeration's entries that can be chosen now."""
        return [entry.text for entry in self._list(_ENTRIES) if entry.access > Access.NotAvailable]

    @property
    def children(self) -> list[Node]:
        """A category's features; any other node's reading children."""
        return self._list(_CHILDREN)

    @property
    def selected(self) -> list[Node]:
        """What this selector selects."""
        return self._list(_SELECTED)

    @property
    def selecting(self) -> list[Node]:
        """The selectors of this feature."""
        return self._list(_SELECTING)

    # ---- bytes: port nodes ----

    def read_memory(self, address: int, length: int) -> bytes:
        buffer = ctypes.create_string_buffer(length)
        self._check(lib.NGetAsMemory(self._handle.raw, address, buffer, length))
        return buffer.raw

    def write_memory(self, address: int, data: bytes) -> None:
        self._check(lib.NSetAsMemory(self._handle.raw, address, bytes(data), len(data)))

    # ---- changes ----

    def invalidate(self) -> None:
        """Forgets cached values of the node and of all that depends on it."""
        self._check(lib.NInvalidate(self._handle.raw))

    @property
    def verify_mode(self) -> VerifyMode:
        return VerifyMode(self._number(lib.NGetVerifyMode, c_uint32))

    @verify_mode.setter
    def verify_mode(self, mode: VerifyMode) -> None:
        self._check(lib.NSetVerifyMode(self._handle.raw, mode))

    def on_update(self, callback: Callable[[Node], None]) -> Updates:
        """Calls `callback` with this node after each of its changes, on the thread that made it, while the result lives:

        with cam.Width.on_update(print): ..."""
        return Updates(self, callback)

    def __repr__(self) -> str:
        try:
            access = self.access
            parts = [f"{self._name} = {self._shown()}" if self.readable and self._has_value() else self._name]
            if self._type in (NodeType.Integer, NodeType.Float) and access > Access.NotAvailable:
                step = self.increment if self._type is NodeType.Integer else None
                low, high = self.min, self.max
                if low not in _LOWEST or high not in _HIGHEST:
                    parts.append(f"{low} .. {high}" + (f" step {step}" if step not in (None, 1) else ""))
            elif self._type is NodeType.Enumeration and access > Access.NotAvailable:
                parts.append("|".join(self.entries))
            elif not self._has_value():
                parts.append(self._type.name)
            return f"<{', '.join(parts + [access.name])}>"
        except Error as error:
            return f"<{self._name}, {error.text}>"

    def __dir__(self) -> list[str]:
        return [name for name in super().__dir__() if not name.startswith("_")]

    def _has_value(self) -> bool:
        return self._type not in (NodeType.Category, NodeType.Command, NodeType.Port, NodeType.Other)

    def _shown(self) -> str:
        unit = self.unit
        return repr(self.value) + (f" {unit}" if unit else "")

    def _check(self, code: int) -> None:
        check(code, self._name)

    def _number(self, call: Any, kind: Any, *item: int) -> Any:
        number = kind()
        self._check(call(self._handle.raw, *item, byref(number)))
        return number.value

    def _text(self, call: Callable[[Any, Any], int]) -> str:
        return read_text(call, self._name)

    def _info_text(self, item: int) -> str:
        return self._text(lambda to, size: lib.NInfoAsString(self._handle.raw, item, to, size))

    def _info_integer(self, item: int) -> int:
        return self._number(lib.NInfoAsInteger, c_int64, item)

    def _limit(self, item: int) -> Union[int, float]:
        if self._type is NodeType.Float:
            return self._number(lib.NInfoAsFloat, c_double, item)
        return self._info_integer(item)

    def _register(self) -> bytes:
        length = c_int64()
        self._check(lib.NGetAsRegisterData(self._handle.raw, None, byref(length)))
        buffer = ctypes.create_string_buffer(length.value)
        self._check(lib.NGetAsRegisterData(self._handle.raw, buffer, byref(length)))
        return buffer.raw

    def _list(self, relation: int) -> list[Node]:
        return [
            self._map[self._text(lambda to, size: lib.NList(self._handle.raw, relation, index, to, size))]
            for index in range(self._number(lib.NListCount, c_int64, relation))
        ]


class Updates:
    """A registered callback; ends with close(), with its `with` block, or with this object."""

    def __init__(self, node: Node, callback: Callable[[Node], None]) -> None:
        self._node: Optional[Node] = None
        self._call = NodeUpdate(lambda handle, private: callback(node))
        self._registration = c_void_p()
        check(lib.NRegisterUpdate(node._handle.raw, self._call, None, byref(self._registration)), node.name)
        self._node = node

    def close(self) -> None:
        node, self._node = self._node, None
        if node is not None and node._handle.raw:
            lib.NDeregisterUpdate(node._handle.raw, self._registration)

    def __enter__(self) -> Updates:
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()

    def __del__(self) -> None:
        self.close()
