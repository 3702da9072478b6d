"""Features of GenICam cameras, over the shared library libOxGenApi.

    import oxgenapi

    with oxgenapi.SimulatedCamera() as device, oxgenapi.NodeMap.of(device) as cam:
        cam.ExposureTime.value = 5000
        print(cam.ExposureTime)         # <ExposureTime = 5000.0 us, 10.0 .. 1000000.0, ReadWrite>

A failing call raises Error with the library's code and text. Calls may come from any thread.
"""

from ._library import Code, Error, genapi_version, library_version
from .firmware import FirmwareUpdater
from .node import Access, Node, NodeType, Representation, VerifyMode, Visibility
from .nodemap import AttachedChunks, NodeMap, Registers
from .simulation import Event, Image, SimulatedCamera

__all__ = [
    "Access", "AttachedChunks", "Code", "Error", "Event", "FirmwareUpdater", "Image", "Node", "NodeMap", "NodeType",
    "Registers", "Representation", "SimulatedCamera", "VerifyMode", "Visibility", "genapi_version", "library_version",
]
