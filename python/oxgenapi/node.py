"""What every node of a map has: its value, what is known about it, its relations, its bytes, its updates."""

from __future__ import annotations

import ctypes
import enum
import sys
from ctypes import byref, c_double, c_int32, c_int64, c_uint32, c_void_p
from typing import TYPE_CHECKING, Any, Callable, Optional, Union

from ._html import table
from ._library import Error, Handle, NodeUpdate, check, encoded, keep_exception, lib, read_text
from ._numbers import Code, NodeInfo, NodeList, NodeType, VerifyMode
from ._scalars import fitting, plain, whole


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


# These limits mean "unlimited": they are the lowest and highest values that a register can hold.
_FLOAT_MAX = (2 - 2**-23) * 2.0**127
_LOWEST = (-(1 << 63), -sys.float_info.max, -_FLOAT_MAX)
_HIGHEST = ((1 << 63) - 1, sys.float_info.max, _FLOAT_MAX)


class Home:
    """What the nodes of one map share: its handle, and the ports, which must live as long as a node that uses them."""

    __slots__ = ("handle", "ports")

    def __init__(self, handle: Handle) -> None:
        self.handle = handle
        self.ports: dict[str, Any] = {}  # callbacks in use, and what they call

    def node(self, name: str) -> Node:
        raw = c_void_p()
        check(lib.NMGetNode(self.handle.raw, encoded(name), byref(raw)), name)
        handle, type = Handle(raw.value), c_int32()
        check(lib.NType(raw, byref(type)), name)
        return _classes.get(type.value, Node)(self, handle, name, NodeType(type.value))


_classes: dict[int, type[Node]] = {}  # by NodeType


class Node:
    """Made by NodeMap: cam.ExposureTime or cam["ExposureTime"]. Features of each type have a class of their own."""

    __slots__ = ("_home", "_handle", "_raw", "_name", "_type", "__weakref__")

    def __init_subclass__(cls, type: Optional[NodeType] = None, **arguments: Any) -> None:
        super().__init_subclass__(**arguments)
        if type is not None:
            _classes[type] = cls

    def __init__(self, home: Home, handle: Handle, name: str, type: NodeType) -> None:
        self._home = home
        self._handle = handle
        self._raw = handle.raw
        self._name = name
        self._type = type

    # ---- value ----

    if TYPE_CHECKING:
        value: Any
    else:

        @property
        def value(self):
            """The value in the Python type that fits; a class of features says which. Numbers of any package are taken,
            and for a register bytes."""
            return self.text

        @value.setter
        def value(self, value):
            self._write(value)

    @property
    def text(self) -> str:
        """The value as text: integers in decimal, floats with six digits, an entry's name."""
        return self._text(lambda to, size: lib.NGetAsString(self._raw, to, size))

    @property
    def number(self) -> int:
        """The value as integer: of an enumeration the number of its entry."""
        return int(self._number(lib.NGetAsInteger, c_int64))

    def execute(self) -> None:
        """Executes a command; `value` tells whether it is done. Refused by everything else."""
        raise Error(Code.NOT_SUPPORTED, f"{self._name} is not a command", self._name)

    def _write(self, value: Any) -> None:
        value = plain(value, self._name)
        if isinstance(value, bool):
            self._check(lib.NSetAsBoolean(self._raw, value))
        elif isinstance(value, int):
            self._check(lib.NSetAsInteger(self._raw, fitting(value, self._name)))
        elif isinstance(value, float):
            if self._type is NodeType.Integer:
                whole(value, self._name)
            self._check(lib.NSetAsFloat(self._raw, value))
        elif isinstance(value, str):
            self._check(lib.NSetAsString(self._raw, encoded(value)))
        elif self._type is NodeType.Register:
            self._check(lib.NSetAsString(self._raw, b"0x" + value.hex().encode()))
        else:
            raise TypeError(f"{self._name}: only a register takes bytes")

    # ---- information ----

    @property
    def name(self) -> str:
        return self._name

    @property
    def type(self) -> NodeType:
        return self._type

    @property
    def display_name(self) -> str:
        return self._info_text(NodeInfo.DisplayName)

    @property
    def description(self) -> str:
        return self._info_text(NodeInfo.Description)

    @property
    def tool_tip(self) -> str:
        return self._info_text(NodeInfo.ToolTip)

    @property
    def access(self) -> Access:
        return Access(self._info_integer(NodeInfo.AccessMode))

    @property
    def readable(self) -> bool:
        return self.access in (Access.ReadOnly, Access.ReadWrite)

    @property
    def writable(self) -> bool:
        return self.access in (Access.WriteOnly, Access.ReadWrite)

    @property
    def min(self) -> Union[int, float]:
        return self._limit(NodeInfo.Min)

    @property
    def max(self) -> Union[int, float]:
        return self._limit(NodeInfo.Max)

    @property
    def increment(self) -> Union[int, float, None]:
        """None for a float that takes every value."""
        try:
            return self._limit(NodeInfo.Increment)
        except Error as error:
            if error.code == Code.NOT_SUPPORTED and self._type is NodeType.Float:
                return None
            raise

    @property
    def unit(self) -> str:
        return self._info_text(NodeInfo.Unit) if self._type in (NodeType.Integer, NodeType.Float) else ""

    @property
    def representation(self) -> Representation:
        return Representation(self._info_integer(NodeInfo.Representation))

    @property
    def visibility(self) -> Visibility:
        return Visibility(self._info_integer(NodeInfo.Visibility))

    @property
    def is_streamable(self) -> bool:
        """Whether it is part of the settings."""
        return self._info_integer(NodeInfo.IsStreamable) != 0

    @property
    def is_deprecated(self) -> bool:
        return self._info_integer(NodeInfo.IsDeprecated) != 0

    @property
    def polling_ms(self) -> Optional[int]:
        """Milliseconds between two looks at the device; None when the node is not polled."""
        time = self._info_integer(NodeInfo.PollingTime)
        return None if time < 0 else time

    @property
    def event_id(self) -> str:
        """Hexadecimal digits of the event that changes it; "" where there is none."""
        return self._info_text(NodeInfo.EventID)

    @property
    def address(self) -> int:
        """Of a register, in bytes."""
        return self._info_integer(NodeInfo.RegisterAddress)

    @property
    def length(self) -> int:
        """Of a register, in bytes."""
        return self._info_integer(NodeInfo.RegisterLength)

    # ---- relations ----

    @property
    def entries(self) -> list[str]:
        """The names of an enumeration's entries that can be chosen now."""
        return [entry.text for entry in self._list(NodeList.EnumEntries) if entry.access > Access.NotAvailable]

    @property
    def children(self) -> list[Node]:
        """A category's features; any other node's reading children."""
        return self._list(NodeList.Children)

    @property
    def selected(self) -> list[Node]:
        """What this selector selects."""
        return self._list(NodeList.SelectedFeatures)

    @property
    def selecting(self) -> list[Node]:
        """The selectors of this feature."""
        return self._list(NodeList.SelectingFeatures)

    # ---- bytes: port nodes ----

    def read_memory(self, address: int, length: int) -> bytes:
        buffer = ctypes.create_string_buffer(length)
        self._check(lib.NGetAsMemory(self._raw, address, buffer, length))
        return buffer.raw

    def write_memory(self, address: int, data: bytes) -> None:
        self._check(lib.NSetAsMemory(self._raw, address, bytes(data), len(data)))

    # ---- changes ----

    def invalidate(self) -> None:
        """Forgets cached values of the node and of all that depends on it."""
        self._check(lib.NInvalidate(self._raw))

    @property
    def verify_mode(self) -> VerifyMode:
        return VerifyMode(self._number(lib.NGetVerifyMode, c_uint32))

    @verify_mode.setter
    def verify_mode(self, mode: VerifyMode) -> None:
        self._check(lib.NSetVerifyMode(self._raw, mode))

    def on_update(self, callback: Callable[[Node], None]) -> Updates:
        """Calls `callback` with this node after each of its changes, on the thread that made it, while the result lives:

        with cam.Width.on_update(print): ..."""
        return Updates(self, callback)

    def __repr__(self) -> str:
        try:
            shown = f"{self._name} = {self._shown()}" if self.readable and self._has_value() else self._name
            choice = self._choice() if self._has_value() else self._type.name
            return f"<{', '.join(part for part in (shown, choice, self.access.name) if part)}>"
        except Error as error:
            return f"<{self._name}, {error.text}>"

    def _repr_html_(self) -> str:
        """What a notebook shows."""
        rows = [("type", self._type.name)]
        try:
            rows.append(("access", self.access.name))
            if self.readable and self._has_value():
                rows.insert(0, ("value", self._shown()))
            rows.append(("entries" if self._type is NodeType.Enumeration else "range", self._choice()))
            rows.append(("about", self.description or self.tool_tip))
        except Error as error:
            rows.append(("error", error.text))
        return table(self._name, rows)

    def _choice(self) -> str:
        """What the value can be, in short: a range or entries."""
        if self.access <= Access.NotAvailable:
            return ""
        if self._type is NodeType.Enumeration:
            return "|".join(self.entries)
        if self._type not in (NodeType.Integer, NodeType.Float):
            return ""
        step = self.increment if self._type is NodeType.Integer else None
        low, high = self.min, self.max
        if low in _LOWEST and high in _HIGHEST:
            return ""
        return f"{low} .. {high}" + (f" step {step}" if step not in (None, 1) else "")

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
        self._check(call(self._raw, *item, byref(number)))
        return number.value

    def _text(self, call: Callable[[Any, Any], Any]) -> str:
        return read_text(call, self._name)

    def _info_text(self, item: int) -> str:
        return self._text(lambda to, size: lib.NInfoAsString(self._raw, item, to, size))

    def _info_integer(self, item: int) -> int:
        return int(self._number(lib.NInfoAsInteger, c_int64, item))

    def _limit(self, item: int) -> Union[int, float]:
        if self._type is NodeType.Float:
            return float(self._number(lib.NInfoAsFloat, c_double, item))
        return self._info_integer(item)

    def _list(self, relation: int) -> list[Node]:
        return [
            self._home.node(self._text(lambda to, size: lib.NList(self._raw, relation, index, to, size)))
            for index in range(self._number(lib.NListCount, c_int64, relation))
        ]


class Updates:
    """A registered callback; ends with close(), with its `with` block, or with this object."""

    def __init__(self, node: Node, callback: Callable[[Node], None]) -> None:
        self._node: Optional[Node] = None

        def call(handle: Any, private: Any) -> None:
            try:
                callback(node)
            except Exception:
                raise  # Python reports it as ignored, for the change has happened already
            except BaseException as error:
                keep_exception(error)

        self._call = NodeUpdate(call)
        self._registration = c_void_p()
        check(lib.NRegisterUpdate(node._raw, self._call, None, byref(self._registration)), node.name)
        self._node = node

    def close(self) -> None:
        node, self._node = self._node, None
        if node is not None:
            lib.NDeregisterUpdate(node._raw, self._registration)

    def __enter__(self) -> Updates:
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()

    def __del__(self) -> None:
        self.close()
