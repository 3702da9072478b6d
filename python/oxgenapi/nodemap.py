"""The features of a device: description, ports, nodes, events, chunks, settings, files, snapshots."""

from __future__ import annotations

import ctypes
import difflib
import os
from ctypes import byref, c_size_t, c_uint32, c_void_p
from typing import Any, Callable, Iterable, Iterator, Optional, Protocol, Sequence, TypeVar, Union

from . import _html
from ._library import (ChunkData, Error, EventData, EventDataEx, Handle, PortAccess, ReadMem, SettingsCallback,
                       WriteMem, check, encoded, keep_exception, last_error_of, lib, read_text)
from ._numbers import Code, NodeMapInfo
from .features import Category
from .node import Access, Home, Node

Path = Union[str, "os.PathLike[str]"]
Chunk = tuple[int, int, int]  # ID, offset and length in bytes
_NOT_AVAILABLE = int(Access.NotAvailable)


class Registers(Protocol):
    """What a node map is connected to. An exception refuses the access; it is the cause of the Error that follows."""

    def read(self, address: int, length: int) -> bytes: ...

    def write(self, address: int, data: bytes) -> None: ...


Map = TypeVar("Map", bound="NodeMap")


class NodeMap:
    """The features of one device, as attributes: cam.Width, or cam["Width"] for a name that is no identifier. A feature
    that was asked for as an attribute is remembered until the next load."""

    def __init__(self) -> None:
        raw = c_void_p()
        check(lib.CreateNodeMap(byref(raw)))
        self._home = Home(Handle(raw.value))
        self._names: Optional[list[str]] = None  # of the features, once asked for

    @classmethod
    def of(cls: type[Map], device: Any) -> Map:
        """The node map of a device that has `description` (XML text) besides read and write."""
        map = cls()
        map.load_text(device.description)
        map.connect(device)
        return map

    @property
    def _handle(self) -> Handle:
        return self._home.handle

    # ---- description and ports ----

    def load_file(self, path: Path) -> None:
        """Loads a description, XML or zip, in place of the one before; ports are connected anew afterwards."""
        check(lib.NMLoadXMLFile(self._handle.raw, encoded(path)), os.fspath(path))
        self._forget()

    def load_text(self, xml: str) -> None:
        check(lib.NMLoadXMLString(self._handle.raw, encoded(xml)))
        self._forget()

    def _forget(self) -> None:
        """Nodes of the earlier description belong to that one; so do its ports, whose nodes keep them."""
        self._home = Home(self._handle)
        self._names = None
        for name in [name for name in self.__dict__ if not name.startswith("_")]:
            del self.__dict__[name]

    def connect(self, registers: Registers, port: str = "Device") -> None:
        """Register accesses through the named port go to `registers`, on the thread that uses a feature."""
        native = getattr(registers, "_native_port", None)
        if not native and not all(callable(getattr(registers, name, None)) for name in ("read", "write")):
            raise TypeError(f"read(address, length) and write(address, data) are wanted, {type(registers).__name__} lacks them")
        *callbacks, keeper = native() if native else _python_port(registers)
        check(lib.NMConnectPortEx(self._handle.raw, *callbacks, encoded(port)), port)
        self._home.ports[port] = (callbacks, keeper)

    # ---- nodes ----

    def __getitem__(self, name: str) -> Any:
        if not isinstance(name, str):
            raise TypeError(f"a feature's name is a str, not {type(name).__name__}")
        return self._home.node(name)

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_"):
            raise AttributeError(name)
        try:
            node = self.__dict__[name] = self[name]  # found without this function from now on
            return node
        except Error as error:
            if error.code != Code.NOT_PRESENT:
                raise
            near = difflib.get_close_matches(name, self.feature_names(), 3)
            hint = f"; did you mean {' or '.join(near)}?" if near else ""
            raise AttributeError(f"no feature {name}{hint}") from None

    def __setattr__(self, name: str, value: Any) -> None:
        if not name.startswith("_"):
            raise AttributeError(f"a feature is set by its value: .{name}.value = {value!r}")
        super().__setattr__(name, value)

    def __contains__(self, name: object) -> bool:
        if not isinstance(name, str):
            return False
        raw = c_void_p()
        found: bool = lib.NMGetNode(self._handle.raw, encoded(name), byref(raw)) == 0
        Handle(raw.value).close()
        return found

    def __iter__(self) -> Iterator[Any]:
        return self.features()

    def __dir__(self) -> list[str]:
        own = [name for name in super().__dir__() if not name.startswith("_")]  # what was asked for is among them
        return list(dict.fromkeys(own + [name for name in self.feature_names() if name.isidentifier()]))

    def _ipython_key_completions_(self) -> list[str]:
        """What completes cam["Wid in IPython."""
        return self.feature_names()

    def feature_names(self) -> list[str]:
        """The names of all features: what categories hold."""
        if self._names is None:
            try:
                self._names = list(dict.fromkeys(node.name for node in self.features()))
            except Error:
                return []  # nothing is loaded, or it has no categories
        return list(self._names)

    def node_names(self) -> list[str]:
        """The names of all nodes, in description order."""
        count = c_uint32()
        check(lib.NMNodeCount(self._handle.raw, byref(count)))
        return [read_text(lambda to, size: lib.NMListNode(self._handle.raw, index, to, size))
                for index in range(count.value)]

    def features(self, category: str = "Root") -> Iterator[Any]:
        """The features of a category, those of its sub-categories included."""
        return self._below(self[category], [category])

    def _below(self, category: Node, path: list[str]) -> Iterator[Any]:
        for node in category.children:
            if not isinstance(node, Category):
                yield node
            elif node.name not in path:  # a category may hold itself
                yield from self._below(node, path + [node.name])

    @property
    def vendor(self) -> str:
        return self._info(NodeMapInfo.VendorName)

    @property
    def model(self) -> str:
        return self._info(NodeMapInfo.ModelName)

    def _info(self, item: int) -> str:
        return read_text(lambda to, size: lib.NMInfoAsString(self._handle.raw, item, to, size))

    def poll(self, elapsed_ms: int) -> None:
        """Advances the clocks of polled nodes by the milliseconds since the last call."""
        check(lib.NMPollNodes(self._handle.raw, elapsed_ms))

    def __repr__(self) -> str:
        try:
            return f"<NodeMap {self.vendor} {self.model}>"
        except Error as error:
            return f"<NodeMap, {error.text}>"

    def _repr_html_(self) -> str:
        """What a notebook shows: the tree of features, without their values."""

        def items(category: Node, path: list[str]) -> Iterator[str]:
            for node in category.children:
                if not isinstance(node, Category):
                    yield _html.leaf(node.name, node.type.name, node.tool_tip)
                elif node.name not in path:
                    yield _html.branch(node.display_name, items(node, path + [node.name]))

        try:
            return _html.tree(f"{self.vendor} {self.model}", items(self["Root"], ["Root"]))
        except Error as error:
            return _html.tree(error.text, [])

    # ---- events and chunks ----

    def deliver_event(self, id: Union[int, str], payload: bytes) -> None:
        """`id`: a number, or hexadecimal digits as in the description."""
        data = ctypes.create_string_buffer(bytes(payload), max(len(payload), 1))
        address = ctypes.addressof(data)
        if isinstance(id, int):
            check(lib.NMDeliverEvent(self._handle.raw, byref(EventData(id, address, len(payload)))))
        else:
            check(lib.NMDeliverEventEx(self._handle.raw, byref(EventDataEx(encoded(id), address, len(payload)))))

    def attach_chunks(self, buffer: Any, chunks: Iterable[Chunk]) -> AttachedChunks:
        """Makes chunk features read from an image buffer: anything with the buffer protocol. It is used in place and held
        until the chunks are detached; a read-only one is copied.

            with cam.attach_chunks(image.data, image.chunks):
                print(cam.ChunkExposureTime.value)"""
        return AttachedChunks(self, buffer, chunks)

    # ---- settings ----

    def save_settings(self, path: Path, features: Sequence[str] = ()) -> list[Error]:
        """Saves all streamable features, or the named ones. Returns what could not be saved."""
        problems = _Problems()
        if features:
            code = lib.NMSaveSetEx(self._handle.raw, encoded(path), _joined(features), problems.callback, None)
        else:
            code = lib.NMSaveSet(self._handle.raw, encoded(path), problems.callback, None)
        return problems.of(code, os.fspath(path))

    def settings(self, features: Sequence[str] = ()) -> str:
        """The same as text; what could not be saved is left out."""
        room = 1 << 16
        while True:
            problems, buffer, size = _Problems(), ctypes.create_string_buffer(room), c_size_t(room)
            arguments: list[Any] = [self._handle.raw, buffer, byref(size), problems.callback, None]
            if features:
                arguments.insert(3, _joined(features))
            problems.of((lib.NMSaveSetStringEx if features else lib.NMSaveSetString)(*arguments))
            if size.value < room:
                return buffer.value.decode("utf-8", "surrogateescape")
            room *= 4

    def load_settings(self, path: Path, validate: bool = False,
                      on_problem: Optional[Callable[[Error], bool]] = None) -> list[Error]:
        """Applies a file's lines. `validate`: reads each value back and compares. `on_problem` returns whether to go on
        (without it: yes). Returns what could not be applied."""
        problems = _Problems(on_problem)
        return problems.of(lib.NMLoadSetEx(self._handle.raw, encoded(path), validate, problems.callback, None),
                           os.fspath(path))

    def load_settings_text(self, text: str, validate: bool = False,
                           on_problem: Optional[Callable[[Error], bool]] = None) -> list[Error]:
        problems = _Problems(on_problem)
        return problems.of(lib.NMLoadSetString(self._handle.raw, encoded(text), validate, problems.callback, None))

    # ---- device files: `name` is an entry of FileSelector ----

    def upload(self, name: str, data: bytes) -> None:
        check(lib.NMUploadFileMemory(self._handle.raw, encoded(name), bytes(data), len(data)), name)

    def upload_file(self, name: str, path: Path) -> None:
        check(lib.NMUploadFile(self._handle.raw, encoded(name), encoded(path)), name)

    def download(self, name: str) -> bytes:
        size = c_size_t()
        check(lib.NMDownloadFileMemory(self._handle.raw, encoded(name), None, byref(size)), name)
        if size.value == 0:
            return b""
        buffer = ctypes.create_string_buffer(size.value)
        check(lib.NMDownloadFileMemory(self._handle.raw, encoded(name), buffer, byref(size)), name)
        return buffer.raw[:size.value]

    def download_file(self, name: str, path: Path) -> None:
        check(lib.NMDownloadFile(self._handle.raw, encoded(name), encoded(path)), name)

    def to_json(self, nodes: Iterable[Node]) -> str:
        """Names, types and values of nodes as they are now, a JSON array."""
        raw = c_void_p()
        check(lib.NMCreateStream(self._handle.raw, 0, byref(raw)))
        stream = Handle(raw.value)
        for node in nodes:
            check(lib.NMStreamPush(stream.raw, node._raw), node.name)
        return read_text(lambda to, size: lib.NMStreamDump(stream.raw, to, size))

    def close(self) -> None:
        """Gives the node map back. Nodes made from it keep it alive until they go."""
        self._handle.close()
        self._forget()

    def __enter__(self: Map) -> Map:
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()


def _joined(features: Sequence[str]) -> bytes:
    return encoded(features if isinstance(features, str) else "|".join(features))  # one name alone is meant as one


def _python_port(registers: Registers) -> tuple[Any, Any, Any, None, Any]:
    def read(buffer: int, address: int, length: int, private: Any) -> int:
        try:
            data = registers.read(address, length)
            if len(data) != length:
                raise ValueError(f"read({address:#x}, {length}) returned {len(data)} bytes")
            ctypes.memmove(buffer, bytes(data), length)
            return 0
        except BaseException as error:
            return keep_exception(error)

    def write(buffer: int, address: int, length: int, private: Any) -> int:
        try:
            registers.write(address, ctypes.string_at(buffer, length))
            return 0
        except BaseException as error:
            return keep_exception(error)

    def access(private: Any) -> int:
        try:
            return int(getattr(registers, "access", Access.ReadWrite))
        except Exception:
            return _NOT_AVAILABLE
        except BaseException as error:
            keep_exception(error)
            return _NOT_AVAILABLE

    return ReadMem(read), WriteMem(write), PortAccess(access), None, registers


class AttachedChunks:
    """Chunks of an image, attached until close() or the end of the `with` block."""

    def __init__(self, map: NodeMap, buffer: Any, chunks: Iterable[Chunk]) -> None:
        self._map: Optional[NodeMap] = None
        self._memory = _memory_of(buffer)
        base, size = ctypes.addressof(self._memory), ctypes.sizeof(self._memory)
        chunks = list(chunks)
        for id, offset, length in chunks:
            if not 0 <= offset <= size - length:
                raise ValueError(f"chunk {id:#x}: bytes {offset} .. {offset + length} of a buffer of {size}")
        self._extent = max((offset + length for _, offset, length in chunks), default=0)
        records = (ChunkData * len(chunks))(*[ChunkData(id, base, offset, length) for id, offset, length in chunks])
        self._map = map
        try:
            check(lib.NMAttachChunkList(map._handle.raw, records, len(chunks)))
        except Error:
            self.close()
            raise

    def update(self, buffer: Any) -> None:
        """Moves the chunks to another buffer of the same layout."""
        memory = _memory_of(buffer)
        if ctypes.sizeof(memory) < self._extent or self._map is None:
            raise ValueError("closed" if self._map is None else f"the chunks need {self._extent} bytes")
        check(lib.NMUpdateChunks(self._map._handle.raw, ctypes.addressof(memory)))
        self._memory = memory

    def close(self) -> None:
        map, self._map = self._map, None
        if map is not None and map._handle.raw:
            lib.NMDetachAllChunks(map._handle.raw)
        self._memory = None

    def __enter__(self) -> AttachedChunks:
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()

    def __del__(self) -> None:
        self.close()


def _memory_of(buffer: Any) -> Any:
    view = memoryview(buffer).cast("B")
    kind = ctypes.c_uint8 * view.nbytes
    return kind.from_buffer_copy(view) if view.readonly else kind.from_buffer(view)


class _Problems:
    """Collects what a settings call reports; an exception of the user's function stops the call and is raised after it."""

    def __init__(self, on_problem: Optional[Callable[[Error], bool]] = None) -> None:
        self._problems: list[Error] = []
        self._raised: Optional[BaseException] = None
        self._on_problem = on_problem
        self.callback = SettingsCallback(self._collect)

    def _collect(self, node: Optional[int], code: int, private: Any) -> bool:
        try:
            error = last_error_of(node, code)
            self._problems.append(error)
            return self._on_problem is None or bool(self._on_problem(error))
        except BaseException as raised:
            self._raised = raised
            return False

    def of(self, code: int, feature: str = "") -> list[Error]:
        if self._raised is not None:
            raise self._raised
        check(code, feature)
        return self._problems
