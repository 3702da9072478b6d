/* Handles, result codes, enumerations, records and callbacks of the flat interface. */
#ifndef OXGENAPI_TYPES_H
#define OXGENAPI_TYPES_H

#ifdef __cplusplus
#include <cstddef>
#include <cstdint>
#include <cwchar>
#else
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <wchar.h>
#endif

#define OXGENAPI_EXPORT __attribute__((visibility("default")))

/* An output: a reference in C++, a pointer in C; the same at machine level. */
#ifdef __cplusplus
#define OX_OUT(type) type&
/* An enumeration of a fixed width, so that any number of that width may be passed. */
#define OX_ENUM(name, type) enum name : type
#else
#define OX_OUT(type) type*
#define OX_ENUM(name, type) \
  typedef type name;        \
  enum
#endif

/* Handles: each is the address of an interface container of libOxBase; only that library looks inside. */
typedef struct OxGenApiNodeMap* NODEMAP;             /* a node map, or a proxy for one */
typedef struct OxGenApiNode* NODE;                   /* one feature of a node map */
typedef struct OxGenApiNodeMapStream* NODEMAPSTREAM; /* a JSON document of node snapshots */
typedef struct OxGenApiFirmwareUpdater* FWUPDATER;   /* a firmware update file */

/* Result codes. */
#define OXGENAPI_OK UINT32_C(0)
#define OXGENAPI_E_UNSPECIFIED UINT32_C(0x80000001)      /* unspecified failure, see the last error's text */
#define OXGENAPI_E_INVALID_ARGUMENT UINT32_C(0x80000002) /* a bad argument, or a value out of range */
#define OXGENAPI_E_RUNTIME UINT32_C(0x80000003)          /* description, file or text not usable */
#define OXGENAPI_E_OUT_OF_MEMORY UINT32_C(0x80000005)    /* memory ran out */
#define OXGENAPI_E_NOT_READABLE UINT32_C(0x8000000b)     /* the feature is not readable now */
#define OXGENAPI_E_NOT_WRITABLE UINT32_C(0x8000000c)     /* the feature is not writable now */
#define OXGENAPI_E_ACCESS_DENIED UINT32_C(0x8000000e)    /* a port's refusal; device file download failed */
#define OXGENAPI_E_UPLOAD_FAILED UINT32_C(0x8000000f)    /* device file upload failed */
#define OXGENAPI_E_EXPIRED UINT32_C(0x80000011)          /* the object is ending */
#define OXGENAPI_E_NOT_SUPPORTED UINT32_C(0x80000013)    /* not supported for this node or request */
#define OXGENAPI_E_DEVICE_FILE                                                           \
  UINT32_C(0x80000016) /* a settings line does not parse; a device file cannot be opened \
                        */
#define OXGENAPI_E_INVALID_HANDLE UINT32_C(0x8000001d)    /* invalid handle, or the wrong kind of node */
#define OXGENAPI_E_INVALID_STATE UINT32_C(0x8000001e)     /* a required object is missing: nothing loaded yet */
#define OXGENAPI_E_INVALIDATE_FAILED UINT32_C(0x8000002d) /* invalidation failed; a setting does not hold */
#define OXGENAPI_E_NOT_PRESENT UINT32_C(0x8000002e)       /* no such node or callback */
#define OXGENAPI_E_FEATURE_TYPE UINT32_C(0x8000002f)      /* the node is neither a value nor a port */
#define OXGENAPI_E_FIRMWARE_INDEX UINT32_C(0x80000030)    /* no such entry in the update file */

/* The kind of a node. */
OX_ENUM(TNodeType, int32_t){
    NT_Invalid = -1,    /* written by NType for an invalid handle */
    NT_Boolean = 1,     /* true or false */
    NT_Category = 2,    /* a list of features, without a value */
    NT_Command = 3,     /* something to execute */
    NT_Enumeration = 4, /* one of several named entries */
    NT_EnumEntry = 5,   /* one entry of an enumeration */
    NT_Float = 6,       /* a floating point number, registers included */
    NT_Integer = 7,     /* an integer, registers included */
    NT_String = 8,      /* text, registers included */
    NT_Port = 9,        /* access to a device's address space */
    NT_Other = 10,      /* none of the other kinds */
    NT_Register = 11,   /* a block of bytes that is nothing else */
};

/* What NInfoAs... and NInfoEnum tell about a node; NInfoAsInteger in Node.h explains each. */
OX_ENUM(TNodeInfo, uint32_t){
    NI_Name = 0,             /* text */
    NI_DisplayName = 1,      /* text */
    NI_AccessMode = 2,       /* 0 not implemented, 1 not available, 2 read only, 3 write only, 4 read/write */
    NI_Max = 3,              /* integer or float nodes */
    NI_Min = 4,              /* integer or float nodes */
    NI_Increment = 5,        /* integer nodes, and float nodes that have one; no text form */
    NI_NumEnumEntries = 6,   /* enumeration nodes */
    NI_IsStreamable = 7,     /* boolean */
    NI_CachingMode = 8,      /* 0 no cache, 1 write through, 2 write around */
    NI_ToolTip = 9,          /* text */
    NI_Description = 10,     /* text */
    NI_Visibility = 11,      /* 0 beginner, 1 expert, 2 guru, -1 invisible */
    NI_PollingTime = 12,     /* milliseconds, negative when the node is not polled */
    NI_EventID = 13,         /* text, hexadecimal digits */
    NI_RegisterAddress = 14, /* register nodes (NT_Register); bytes */
    NI_RegisterLength = 15,  /* register nodes (NT_Register); bytes */
    NI_Representation = 16,  /* integer or float nodes: 0 linear, 1 logarithmic, 2 boolean, 3 pure number, 4 hexadecimal
                                number, 5 IPv4 address, 6 MAC address, -1 undefined */
    NI_Unit = 17,            /* text; integer or float nodes */
    NI_AliasName = 18,       /* text; empty when the node has no alias */
    NI_IsDeprecated = 19,    /* boolean */
    NI_IsFeature = 20,       /* boolean */
};

/* How a node is related to the nodes of a list. */
OX_ENUM(TNodeList, uint32_t){
    NL_Children = 0,          /* a category's features; any other node's reading children */
    NL_SelectedFeatures = 1,  /* what the node selects */
    NL_EnumEntries = 2,       /* an enumeration's entries */
    NL_SelectingFeatures = 3, /* what selects the node */
};

/* Which value calls of a node are verified against its limits. */
OX_ENUM(TVerifyMode, uint32_t){
    VM_None = 0,      /* none */
    VM_WriteOnly = 1, /* writes; what a fresh node has */
    VM_ReadOnly = 2,  /* reads */
    VM_ReadWrite = 3, /* both */
};

/* What NMInfoAs... tell about a loaded description. */
OX_ENUM(TNodeMapInfo, uint32_t){
    NMI_VendorName = 0,            /* text */
    NMI_ModelName = 1,             /* text */
    NMI_SchemaMajorVersion = 2,    /* number */
    NMI_SchemaMinorVersion = 3,    /* number */
    NMI_SchemaSubMinorVersion = 4, /* number */
    NMI_DeviceMajorVersion = 5,    /* number */
    NMI_DeviceMinorVersion = 6,    /* number */
    NMI_DeviceSubMinorVersion = 7, /* number */
    NMI_StandardNameSpace = 8,     /* text */
    NMI_ProductGuid = 9,           /* text */
    NMI_VersionGuid = 10,          /* text */
    NMI_ToolTip = 11,              /* text */
};

/* The access a port has at the moment. Any other value means that the port is not implemented. */
OX_ENUM(TAccessMode, uint32_t){
    AM_NotAvailable = 1,
    AM_ReadOnly = 2,
    AM_WriteOnly = 3,
    AM_ReadWrite = 4,
};

/* The kind of a node map stream. */
OX_ENUM(TStreamType, uint32_t){
    ST_Json = 0, /* a JSON array, one object per pushed node */
};

/* What FWUpdateFileInfo tells about one information of an update entry. */
OX_ENUM(TFirmwareUpdateInfo, uint32_t){
    FUI_Key = 0,
    FUI_Value = 1,
    FUI_LanguageCode = 2,
};

#ifdef __cplusplus
extern "C" {
#endif

/* An event message: its ID and its payload, both read only during the call. */
typedef struct TEventData {
  uint64_t EventID;
  const uint8_t* pBuffer;
  uint64_t BufferSize; /* bytes */
} TEventData;

typedef struct TEventDataEx {
  const char* EventID; /* hexadecimal digits, as in the description */
  const uint8_t* pBuffer;
  uint64_t BufferSize; /* bytes */
} TEventDataEx;

typedef struct TEventDataExW {
  const wchar_t* EventID; /* hexadecimal digits, as in the description */
  const uint8_t* pBuffer;
  uint64_t BufferSize; /* bytes */
} TEventDataExW;

/* Where one chunk lies in an image buffer. The record is read during the call only; the buffer must stay valid for as
 * long as chunk features are read from it. */
typedef struct TChunkData {
  uint64_t ChunkID; /* above 0xffffffff it matches nothing */
  uint8_t* pBase;
  int64_t ChunkOffset; /* bytes from pBase, not negative */
  int64_t ChunkLength; /* bytes */
} TChunkData;

typedef struct TChunkDataEx {
  const char* ChunkID; /* hexadecimal digits without prefix, at most eight after leading zeros */
  uint8_t* pBase;
  int64_t ChunkOffset; /* bytes from pBase, not negative */
  int64_t ChunkLength; /* bytes */
} TChunkDataEx;

typedef struct TChunkDataExW {
  const wchar_t* ChunkID; /* hexadecimal digits without prefix, at most eight after leading zeros */
  uint8_t* pBase;
  int64_t ChunkOffset; /* bytes from pBase, not negative */
  int64_t ChunkLength; /* bytes */
} TChunkDataExW;

/* Port callbacks (NMConnectPort). Length bytes at device address Address, exactly. 0 or more is success; a failure is a
 * negative result code, and a text set with OxSetLastError under that same code travels to the caller of the node. */
typedef int (*TReadMem)(void* pBuffer, int64_t Address, int64_t Length, void* pUserData);
typedef int (*TWriteMem)(const void* pBuffer, int64_t Address, int64_t Length, void* pUserData);
typedef TAccessMode (*TPortAccessMode)(void* pUserData);

/* Called when the last reference to a node map proxy goes; must not throw. */
typedef void (*TReleaseNotify)(void* pUserData);

/* Called after a node changed (NRegisterUpdate). The handle is the caller's only during the call. */
typedef void (*TNodeUpdate)(NODE Node, void* pPrivate);

/* Identifies one registration of a node update callback. */
typedef intptr_t TCallbackHandle;

/* Called for each problem while settings are saved or loaded. Node is the feature concerned, or zero, and is the
 * callback's only during the call; Result is the problem's code, the last error holds its text. True: go on with the
 * next feature or line; false: stop. */
typedef bool (*TSettingsCallback)(NODE Node, uint32_t Result, void* pPrivate);

/* Called when a device has to be reset during a firmware update. Reopen the device, store a NODEMAP handle of its new
 * node map in NewNodeMap, return true; false: the device is gone. The two numbers, both milliseconds, come from
 * the update file: how long the reset is expected to take, and how long to wait before looking for the device. The
 * library takes a reference of its own on the handle. */
typedef bool (*TFirmwareReset)(unsigned int EstimatedDurationMs, unsigned int DelayEnumerationMs,
                               OX_OUT(void*) NewNodeMap, void* pPrivate);

#ifdef __cplusplus
}
#endif

#endif
