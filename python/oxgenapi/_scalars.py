"""Values as they come from callers: Python's own, and what behaves like them (the numbers of numpy, for one)."""

from __future__ import annotations

import operator
from typing import Any, Union

Plain = Union[bool, int, float, str, bytes]


def plain(value: Any, feature: str) -> Plain:
    """The value as a bool, int, float, str or bytes; TypeError for anything else. No bit of a number is lost."""
    if isinstance(value, (bool, int, float, str, bytes)):
        return value
    if isinstance(value, (bytearray, memoryview)):
        return bytes(value)
    if type(value).__name__ in ("bool_", "bool"):  # numpy's is no number in Python's sense
        return bool(value)
    try:
        return operator.index(value)
    except TypeError:
        pass
    if hasattr(type(value), "__float__"):
        try:
            return float(value)
        except TypeError:  # an array
            pass
    raise TypeError(f"{feature}: a value is a bool, number, str or bytes, not {type(value).__name__}")


def whole(value: float, feature: str) -> None:
    """Refuses what an integer would cut."""
    if value != value or value in (float("inf"), float("-inf")) or value != int(value):
        raise ValueError(f"{feature}: {value!r} is not a whole number")


def fitting(value: int, feature: str) -> int:
    if not -(1 << 63) <= value < 1 << 63:
        raise OverflowError(f"{feature}: {value} does not fit 64 bits")
    return value
