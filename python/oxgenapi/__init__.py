"""Features of GenICam cameras, over the shared library libOxGenApi.

    import oxgenapi

    with oxgenapi.open("GV01") as cam:  # by ID, address, serial number or user name
        cam.ExposureTime.value = 2000

    with oxgenapi.SimulatedCamera() as device, oxgenapi.NodeMap.of(device) as cam:
        cam.ExposureTime.value = 5000
        print(cam.ExposureTime)         # <ExposureTime = 5000.0 us, 10.0 .. 10000000.0, ReadWrite>

A failing call raises Error with the library's code and text. Calls may come from any thread.
"""

from ._library import Error, genapi_version, library_version
from ._numbers import (ByteOrder, CameraCode, CameraState, Code, ImageState, NodeType, PartKind, PayloadKind, Reach,
                       VerifyMode)
from .camera import Camera, CameraEvent, FoundCamera, Network, NetworkAddress, cameras, open
from .features import Boolean, Category, Command, Enumeration, Float, Integer, Port, Register, String
from .firmware import FirmwareUpdater
from .images import Picture, PicturePart
from .node import Access, Node, Representation, Visibility
from .nodemap import AttachedChunks, NodeMap, Registers
from .simulation import Event, Image, SimulatedCamera

__all__ = [
    "Access", "AttachedChunks", "Boolean", "ByteOrder", "Camera", "CameraCode", "CameraEvent", "CameraState", "Category",
    "Code", "Command", "Enumeration", "Error", "Event", "FirmwareUpdater", "Float", "FoundCamera", "Image", "ImageState", "Integer",
    "Network", "NetworkAddress", "Node", "NodeMap", "NodeType", "PartKind", "PayloadKind", "Picture", "PicturePart", "Port",
    "Reach", "Register", "Registers",
    "Representation", "SimulatedCamera", "String", "VerifyMode", "Visibility", "cameras", "genapi_version",
    "library_version", "open",
]

__version__ = "3.1.0"
