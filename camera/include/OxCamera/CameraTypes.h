/* Handles, result codes, enumerations, records and callbacks of the camera library. */
#ifndef OXCAMERA_CAMERATYPES_H
#define OXCAMERA_CAMERATYPES_H

#include <OxGenApi/Types.h>

/* Handles: each is the address of an interface container of libOxBase; only that library looks inside. */
typedef struct OxCameraObject* OXCAMERA;         /* an open camera */
typedef struct OxCameraListObject* OXCAMERALIST; /* what one search has found */

/* Result codes besides those of libOxGenApi (OxGenApi/Types.h). */
#define OXCAMERA_E_NOT_FOUND UINT32_C(0x80000040)       /* no camera of that name, or none at all */
#define OXCAMERA_E_AMBIGUOUS UINT32_C(0x80000041)       /* several cameras have that name; the text lists them */
#define OXCAMERA_E_IN_USE UINT32_C(0x80000042)          /* another program, or this one, has control */
#define OXCAMERA_E_NO_PERMISSION UINT32_C(0x80000043)   /* the system does not allow access */
#define OXCAMERA_E_UNREACHABLE UINT32_C(0x80000044)     /* wrong subnet, or the route uses another interface */
#define OXCAMERA_E_TIMEOUT UINT32_C(0x80000045)         /* no answer in time; nothing was changed */
#define OXCAMERA_E_OUTCOME_UNKNOWN UINT32_C(0x80000046) /* no answer to a write, which may have happened */
#define OXCAMERA_E_LOST UINT32_C(0x80000047)            /* the camera, or the control over it, is gone */
#define OXCAMERA_E_CLOSED UINT32_C(0x80000048)          /* the camera was closed by this program */
#define OXCAMERA_E_READ_ONLY UINT32_C(0x80000049)       /* a write to a camera that was opened read only */
#define OXCAMERA_E_REFUSED UINT32_C(0x8000004a)         /* the camera answered with a refusal */
#define OXCAMERA_E_FAILED UINT32_C(0x8000004b)          /* the transport failed, see the text */

/* How a camera is opened. */
OX_ENUM(TCameraAccess, uint32_t){
    OX_CONTROL = 0,   /* to read and write; keeps others from writing */
    OX_READ_ONLY = 1, /* to read only, also while another program has control */
};

/* Where an open camera stands. */
OX_ENUM(TCameraState, uint32_t){
    CS_Open = 0, CS_Lost = 1, /* OxCameraReopen may bring it back */
    CS_Closed = 2,            /* for good */
};

/* Whether a listed camera can be opened. */
OX_ENUM(TCameraReach, uint32_t){
    CR_Unknown = 0,      CR_Free = 1,
    CR_Busy = 2,         /* another program has control; read only works where the camera allows it */
    CR_WrongSubnet = 3,  /* it answers, but its address does not fit the interface */
    CR_NoPermission = 4, /* the system does not let this user open it */
};

/* What is known about a camera. Texts come from devices: what cannot be printed in them is written as \xNN. */
OX_ENUM(TCameraInfo, uint32_t){
    CI_Id = 0,               /* text: names this camera, and no other of the list, in OxCameraOpen */
    CI_Vendor = 1,           /* text */
    CI_Model = 2,            /* text */
    CI_Serial = 3,           /* text; of a camera without one its MAC address or GUID */
    CI_UserName = 4,         /* text: the name that its user stored in the camera */
    CI_Version = 5,          /* text */
    CI_Address = 6,          /* text: network address or bus position */
    CI_Interface = 7,        /* text: the interface on which it answered, such as eth0 */
    CI_InterfaceAddress = 8, /* text: the interface's own address and mask, such as 192.168.0.2/24 */
    CI_Protocol = 9,         /* text: GigEVision, USB3Vision, Simulated */
    CI_Transport = 10,       /* text: the transport that opens it */
    CI_Ways = 11,            /* text: all ways to it as transport:ID, separated by blanks, the one in use first */
    CI_Identity = 12,        /* text: MAC address or GUID */
    CI_Obstacle = 13,        /* text: why it cannot be opened and what mends that; empty when nothing is known */
    CI_Reach = 14,           /* number: a TCameraReach; of a camera that was opened: as it was found */
    CI_LinkSpeed = 15,       /* number: bits per second, 0 when not known */
};

/* What a search has tried. */
OX_ENUM(TCameraNote, uint32_t){
    CN_Module = 0,          /* a transport that was loaded, with its file */
    CN_ModuleFailed = 1,    /* a file that is no usable transport, and why */
    CN_Interface = 2,       /* an interface that was asked */
    CN_InterfaceFailed = 3, /* an interface that could not be asked, and why */
    CN_Answer = 4,          /* an answer that could not be understood */
    CN_Advice = 5,          /* what to check, where nothing was found */
};

/* How words of four bytes are moved between program and network camera. Descriptions older than schema version 1.1 mean
 * register access, newer ones memory access; cameras that contradict themselves have the bytes in the other order. */
OX_ENUM(TByteOrder, uint32_t){
    BO_Automatic = 0, /* by the list of known cameras, else by the description's schema version */
    BO_Memory = 1,    /* as memory: the bytes as they lie in the camera */
    BO_Register = 2,  /* as registers: a number, highest byte first */
};

#ifdef __cplusplus
extern "C" {
#endif

/* How OxCameraOpenEx opens. Zero in a field stands for the default. */
typedef struct TCameraOptions {
  size_t StructSize;       /* sizeof(TCameraOptions) */
  TCameraAccess Access;    /* OX_CONTROL */
  uint32_t SearchMs;       /* how long answers to a search are collected: 1000 */
  uint32_t AnswerMs;       /* how long one answer may take: 2000. A transport may have limits of its own */
  uint32_t RetryMs;        /* a camera that is not there or busy is tried again for so long: 0, once */
  uint32_t HeartbeatMs;    /* a camera that is silent for so long counts as lost: 3000 */
  TByteOrder ByteOrder;    /* BO_Automatic */
  const char* Description; /* file, XML or zip, in place of the camera's own: null */
  const char* Registers;   /* file with a register image in place of a camera; Name is not looked at then: null */
} TCameraOptions;

/* An IPv4 configuration, each field zero-terminated text such as 192.168.0.20; 0.0.0.0 stands for none. */
typedef struct TNetworkAddress {
  char Address[16];
  char Mask[16];
  char Gateway[16];
} TNetworkAddress;

/* Ways in which a camera gets its address at power on, as bits. */
#define OX_ADDRESS_STORED UINT32_C(1)
#define OX_ADDRESS_DHCP UINT32_C(2)
#define OX_ADDRESS_LINK_LOCAL UINT32_C(4)

/* A camera's addresses: the one in use, and the one it starts with when OX_ADDRESS_STORED is on. */
typedef struct TNetworkConfiguration {
  TNetworkAddress Current;
  TNetworkAddress Stored;
  uint32_t Modes;     /* switched on */
  uint32_t Supported; /* what the camera has */
} TNetworkConfiguration;

/* Called once for each loss, on a thread of the library that does nothing else. Camera is the callback's only during
 * the call; Reason is one line of UTF-8. Every function may be called, OxCameraReopen and OxCameraClose included. Must
 * not throw. */
typedef void (*TCameraLoss)(OXCAMERA Camera, const char* Reason, void* pUserData);

#ifdef __cplusplus
}
#endif

#endif
