"""Numbers of the flat interface, made from Types.h by header_numbers.py."""

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
