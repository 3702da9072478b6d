"""Numbers of the flat interfaces, made from their headers by header_numbers.py."""

import enum


class Code(enum.IntEnum):
    """Result codes; Error.code is one of them, or another number that a port gave."""

    UNSPECIFIED = 0x80000001
    INVALID_ARGUMENT = 0x80000002
    RUNTIME = 0x80000003
    OUT_OF_MEMORY = 0x80000005
    NOT_READABLE = 0x8000000b
    NOT_WRITABLE = 0x8000000c
    ACCESS_DENIED = 0x8000000e
    UPLOAD_FAILED = 0x8000000f
    EXPIRED = 0x80000011
    NOT_SUPPORTED = 0x80000013
    DEVICE_FILE = 0x80000016
    INVALID_HANDLE = 0x8000001d
    INVALID_STATE = 0x8000001e
    INVALIDATE_FAILED = 0x8000002d
    NOT_PRESENT = 0x8000002e
    FEATURE_TYPE = 0x8000002f
    FIRMWARE_INDEX = 0x80000030


class CameraCode(enum.IntEnum):
    """Result codes of cameras, besides those of Code."""

    NOT_FOUND = 0x80000040
    AMBIGUOUS = 0x80000041
    IN_USE = 0x80000042
    NO_PERMISSION = 0x80000043
    UNREACHABLE = 0x80000044
    TIMEOUT = 0x80000045
    OUTCOME_UNKNOWN = 0x80000046
    LOST = 0x80000047
    CLOSED = 0x80000048
    READ_ONLY = 0x80000049
    REFUSED = 0x8000004a
    FAILED = 0x8000004b
    STOPPED = 0x8000004c
    CANCELLED = 0x8000004d
    ALL_HELD = 0x8000004e
    BUFFER_TOO_SMALL = 0x8000004f


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


class NodeInfo(enum.IntEnum):
    Name = 0
    DisplayName = 1
    AccessMode = 2
    Max = 3
    Min = 4
    Increment = 5
    NumEnumEntries = 6
    IsStreamable = 7
    CachingMode = 8
    ToolTip = 9
    Description = 10
    Visibility = 11
    PollingTime = 12
    EventID = 13
    RegisterAddress = 14
    RegisterLength = 15
    Representation = 16
    Unit = 17
    AliasName = 18
    IsDeprecated = 19
    IsFeature = 20


class NodeList(enum.IntEnum):
    Children = 0
    SelectedFeatures = 1
    EnumEntries = 2
    SelectingFeatures = 3


class VerifyMode(enum.IntEnum):
    """Which value calls of a node are checked against its limits."""

    Nothing = 0
    WriteOnly = 1
    ReadOnly = 2
    ReadWrite = 3


class NodeMapInfo(enum.IntEnum):
    VendorName = 0
    ModelName = 1
    SchemaMajorVersion = 2
    SchemaMinorVersion = 3
    SchemaSubMinorVersion = 4
    DeviceMajorVersion = 5
    DeviceMinorVersion = 6
    DeviceSubMinorVersion = 7
    StandardNameSpace = 8
    ProductGuid = 9
    VersionGuid = 10
    ToolTip = 11


class FirmwareUpdateInfo(enum.IntEnum):
    Key = 0
    Value = 1
    LanguageCode = 2


class CameraState(enum.IntEnum):
    Open = 0
    Lost = 1
    Closed = 2


class Reach(enum.IntEnum):
    """Whether a listed camera can be opened."""

    Unknown = 0
    Free = 1
    Busy = 2
    WrongSubnet = 3
    NoPermission = 4


class CameraInfo(enum.IntEnum):
    Id = 0
    Vendor = 1
    Model = 2
    Serial = 3
    UserName = 4
    Version = 5
    Address = 6
    Interface = 7
    InterfaceAddress = 8
    Protocol = 9
    Transport = 10
    Ways = 11
    Identity = 12
    Obstacle = 13
    Reach = 14
    LinkSpeed = 15


class ByteOrder(enum.IntEnum):
    """How words of four bytes are moved: old network cameras mean registers, newer ones memory."""

    Automatic = 0
    Memory = 1
    Register = 2


class ImageState(enum.IntEnum):
    Complete = 0
    Incomplete = 1
    TooSmall = 2


class PayloadKind(enum.IntEnum):
    Unknown = 0
    Image = 1
    Chunks = 2
    MultiPart = 3
    Raw = 4
    File = 5
    Jpeg = 6
    Jpeg2000 = 7
    H264 = 8
    Nothing = 9


class PartKind(enum.IntEnum):
    Unknown = 0
    Image = 1
    Plane = 2
    Depth = 3
    Confidence = 4
    Chunks = 5
    Compressed = 6
    Other = 7
