"""Features of each type, with values in the Python type that fits."""

from __future__ import annotations

import ctypes
from ctypes import byref, c_bool, c_double, c_int64
from typing import TYPE_CHECKING, Any, Generic, Optional, SupportsFloat, SupportsIndex, TypeVar, Union, overload

from ._library import _raised, lib, settle
from ._numbers import NodeType
from ._scalars import fitting
from .node import Node

Number = Union[SupportsIndex, SupportsFloat]
Entry = TypeVar("Entry", bound=str)

if TYPE_CHECKING:
    _Got = TypeVar("_Got")
    _Set = TypeVar("_Set")

    class _Value(Generic[_Got, _Set]):
        """Reads as one type and takes more of them."""

        @overload
        def __get__(self, node: None, owner: Any) -> Any: ...
        @overload
        def __get__(self, node: object, owner: Any) -> _Got: ...
        def __get__(self, node: Any, owner: Any) -> Any: ...
        def __set__(self, node: Any, value: _Set) -> None: ...


# Reading is written out in each class: it is what programs do most.
_get_boolean, _get_integer, _get_float = lib.NGetAsBoolean, lib.NGetAsInteger, lib.NGetAsFloat


class Integer(Node, type=NodeType.Integer):
    """A whole number of 64 bits. A number with a fraction is refused with ValueError."""

    __slots__ = ()

    if TYPE_CHECKING:
        value: _Value[int, Union[Number, str]]
    else:

        @property
        def value(self) -> int:
            number = c_int64()
            code = _get_integer(self._raw, byref(number))
            if code or _raised:
                settle(code, self._name)
            return number.value

        @value.setter
        def value(self, value):
            if type(value) is int:
                self._check(lib.NSetAsInteger(self._raw, fitting(value, self._name)))
            else:
                self._write(value)

    @property
    def min(self) -> int:
        return int(super().min)

    @property
    def max(self) -> int:
        return int(super().max)

    @property
    def increment(self) -> int:
        return int(super().increment or 1)


class Float(Node, type=NodeType.Float):
    __slots__ = ()

    if TYPE_CHECKING:
        value: _Value[float, Union[Number, str]]
    else:

        @property
        def value(self) -> float:
            number = c_double()
            code = _get_float(self._raw, byref(number))
            if code or _raised:
                settle(code, self._name)
            return number.value

        @value.setter
        def value(self, value):
            if type(value) is float:
                self._check(lib.NSetAsFloat(self._raw, value))
            else:
                self._write(value)

    @property
    def min(self) -> float:
        return super().min

    @property
    def max(self) -> float:
        return super().max

    @property
    def increment(self) -> Optional[float]:
        """None where every value between the limits is allowed."""
        return super().increment


class _Switch(Node):
    """Reads as a bool."""

    __slots__ = ()

    if not TYPE_CHECKING:

        @property
        def value(self) -> bool:
            number = c_bool()
            code = _get_boolean(self._raw, byref(number))
            if code or _raised:
                settle(code, self._name)
            return number.value

        @value.setter
        def value(self, value):
            self._write(value)


class Boolean(_Switch, type=NodeType.Boolean):
    __slots__ = ()

    if TYPE_CHECKING:
        value: _Value[bool, Union[bool, SupportsIndex, str]]


class Command(_Switch, type=NodeType.Command):
    """`value` tells whether it is done."""

    __slots__ = ()

    if TYPE_CHECKING:
        value: _Value[bool, Union[bool, SupportsIndex, str]]

    def execute(self) -> None:
        self._check(lib.NSetAsBoolean(self._raw, True))

    @property
    def done(self) -> bool:
        """Whether the device has finished what execute() began."""
        return self.value


class Enumeration(Node, Generic[Entry], type=NodeType.Enumeration):
    """Its value is the name of an entry; `number` is that entry's number."""

    __slots__ = ()

    if TYPE_CHECKING:
        value: _Value[Entry, Union[Entry, SupportsIndex]]


class String(Node, type=NodeType.String):
    __slots__ = ()

    if TYPE_CHECKING:
        value: _Value[str, str]


class Register(Node, type=NodeType.Register):
    """Its value is bytes, as many as `length`."""

    __slots__ = ()

    if TYPE_CHECKING:
        value: _Value[bytes, Union[bytes, bytearray, memoryview, str]]
    else:

        @property
        def value(self) -> bytes:
            length = c_int64()
            self._check(lib.NGetAsRegisterData(self._raw, None, byref(length)))
            buffer = ctypes.create_string_buffer(length.value)
            self._check(lib.NGetAsRegisterData(self._raw, buffer, byref(length)))
            return buffer.raw

        @value.setter
        def value(self, value):
            self._write(value)


class Category(Node, type=NodeType.Category):
    """`children` are its features and categories."""

    __slots__ = ()


class Port(Node, type=NodeType.Port):
    """Reads and writes the device's memory."""

    __slots__ = ()
