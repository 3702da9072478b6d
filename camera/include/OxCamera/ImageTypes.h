/* Images and streams as records. Numbers are in bytes, pixels and nanoseconds as each comment says. */
#ifndef OXCAMERA_IMAGETYPES_H
#define OXCAMERA_IMAGETYPES_H

#include "OxCamera/CameraTypes.h"

/* Result codes of streams. */
#define OXCAMERA_E_STOPPED UINT32_C(0x8000004c)   /* no stream runs, or it was stopped during the wait */
#define OXCAMERA_E_CANCELLED UINT32_C(0x8000004d) /* OxCameraCancelWait ended the wait */
#define OXCAMERA_E_ALL_HELD UINT32_C(0x8000004e)  /* the caller holds all buffers, so no image can come */
#define OXCAMERA_E_BUFFER_TOO_SMALL \
  UINT32_C(0x8000004f) /* the buffer is smaller than a frame; the text has both sizes */

/* Times to wait, beside milliseconds. */
#define OX_WAIT_DEFAULT UINT32_C(0xffffffff) /* 1 s, longer for a camera whose exposure or period is longer */

/* A number that is not known. */
#define OX_UNKNOWN UINT64_C(0xffffffffffffffff)

OX_ENUM(TImageState, uint32_t){
    IS_Complete = 0, IS_Incomplete = 1, /* data is missing; what arrived lies in its proper place */
    IS_TooSmall = 2,                    /* the buffer is smaller than the frame: see Needed */
};

/* What a buffer holds (GigE Vision and USB3 Vision name their payload types so). */
OX_ENUM(TPayloadKind, uint32_t){
    PK_Unknown = 0, PK_Image = 1, PK_Chunks = 2,   PK_MultiPart = 3, PK_Raw = 4,
    PK_File = 5,    PK_Jpeg = 6,  PK_Jpeg2000 = 7, PK_H264 = 8,      PK_None = 9, /* no data at all */
};

OX_ENUM(TPartKind, uint32_t){
    IP_Unknown = 0,    IP_Image = 1,  IP_Plane = 2,      IP_Depth = 3,
    IP_Confidence = 4, IP_Chunks = 5, IP_Compressed = 6, IP_Other = 7,
};

OX_ENUM(TReceiveMethod, uint32_t){
    RM_Automatic = 0, /* the packet socket where it works, else the standard one; in statistics: no sockets are used */
    RM_Standard = 1,  /* a socket of the system */
    RM_Packet = 2,    /* a packet socket: needs CAP_NET_RAW, receives nothing on the loopback interface */
};

OX_ENUM(TPacketSize, uint32_t){
    PS_Keep = 0,      /* the camera's register stays as it is */
    PS_Automatic = 1, /* the transport finds the largest packets that arrive */
    PS_Number = 2,    /* PacketBytes */
};

#ifdef __cplusplus
extern "C" {
#endif

/* One part of an image: most images have one. Data is in place in the image's buffer. */
typedef struct TImagePart {
  const void* Data; /* null if no data arrived */
  uint64_t Size;    /* bytes from Data on that belong to this part */
  TPartKind Kind;
  uint32_t PixelFormat;     /* PFNC number, 0 for a part without pixels */
  char PixelFormatName[32]; /* PFNC name, empty for a number that is not known */
  uint32_t Width;           /* pixels */
  uint32_t Height;          /* pixels; of the frame as it was delivered */
  uint32_t OffsetX;         /* pixels */
  uint32_t OffsetY;         /* pixels */
  uint64_t Stride;          /* bytes from row to row; 0: a row may begin inside a byte */
  uint32_t XPadding;        /* bytes after each row */
  uint32_t YPadding;        /* bytes after the last row */
  uint32_t BitsPerPixel;    /* bits 16 to 23 of the number */
  uint32_t SignificantBits; /* of one sample; 0: not known */
  uint32_t BigEndian;       /* 1: 16-bit samples have the high byte first */
  uint64_t Purpose;         /* number of the component, as the camera gives it */
} TImagePart;

/* An image: the caller's from OxCameraNextImage to OxCameraReturnImage. */
typedef struct TImage {
  size_t StructSize; /* sizeof(TImage); filled in by the library */
  uint64_t Serial;   /* identifies this delivery; unique within the process */
  uint64_t Buffer;   /* index of the stream's buffer, from 0 */
  void* User;        /* for memory of the caller: its TFrameMemory::User */
  TImageState State;
  TPayloadKind Payload;
  const void* Data;    /* the whole payload, chunks included; null if no data arrived */
  uint64_t Size;       /* bytes of it that were received */
  uint64_t Needed;     /* bytes of the whole frame; OX_UNKNOWN if not known */
  uint64_t FrameId;    /* as the camera sent it */
  uint64_t Count;      /* frames since the start, lost ones included; 1 for the first that arrived */
  uint32_t TimeKnown;  /* 1: Time is the camera's */
  uint32_t HasChunks;  /* 1: OxCameraAttachChunks finds some */
  uint64_t Time;       /* ns of the camera's clock; 0 when not known */
  int64_t FirstDataNs; /* ns since 1970 by the computer, when data came first; 0 when not known */
  int64_t CompleteNs;  /* ns since 1970 by the computer, when the buffer was handed over */
  uint32_t PartCount;  /* 0: no pixels, see Payload */
  uint32_t Skipped;    /* in latest-only mode: images dropped since the one before */
  TImagePart Part;     /* the first; OxCameraImagePart has the others */
} TImage;

/* Memory for one frame. It stays the caller's, and is written between start and stop. */
typedef struct TFrameMemory {
  void* Data;
  size_t Size; /* bytes, at least the payload size */
  void* User;  /* returned in TImage::User of each image in this memory */
} TFrameMemory;

/* How OxCameraStartEx starts. A field that is zero means the default, given first. */
typedef struct TStreamOptions {
  size_t StructSize;           /* sizeof(TStreamOptions) */
  size_t BufferCount;          /* 8; at least 2, at most 4096 */
  const TFrameMemory* Buffers; /* BufferCount of them; null: the library allocates */
  uint32_t LatestOnly;         /* 1: only the newest image waits, older ones are skipped */
  TPacketSize PacketSize;      /* PS_Keep */
  uint32_t PacketBytes;        /* for PS_Number */
  TReceiveMethod Receive;      /* RM_Automatic */
  uint64_t SocketBytes;        /* size of the receive buffer in the kernel: one frame, at least 1 MiB */
  uint32_t ResendPercent;      /* most packets of a frame to request again, in percent: 25; above 100: none */
} TStreamOptions;

/* What became of the frames of a stream. Every frame that the camera announced is in exactly one of the first four.
 * OX_UNKNOWN where the transport does not count. */
typedef struct TStreamStatistics {
  size_t StructSize; /* sizeof(TStreamStatistics); set by the caller */
  uint64_t Complete;
  uint64_t Incomplete; /* delivered with data missing, or too large for their buffer */
  uint64_t Lost;       /* numbers that never came */
  uint64_t NoBuffer;   /* came while no buffer was free */
  uint64_t Delivered;  /* handed to the caller, of those that came */
  uint64_t Skipped;    /* dropped for a newer one in latest-only mode, or older than the call that asked */
  uint64_t Bytes;      /* of complete and incomplete frames */
  uint64_t PayloadSize;
  uint64_t Buffers; /* all */
  uint64_t Held;    /* with the caller */
  uint64_t Waiting; /* filled, for the next wait */
  uint64_t Packets; /* received */
  uint64_t Missing; /* packets that never came */
  uint64_t ResendsAsked;
  uint64_t Resent;
  uint64_t Duplicates;
  uint64_t Ignored;
  uint64_t PacketAsked; /* bytes of a packet; 0: kept, or no packets */
  uint64_t PacketSet;   /* as the camera reads back */
  uint64_t SocketAsked; /* bytes of the receive buffer */
  uint64_t SocketGranted;
  TReceiveMethod Receive; /* in use */
  uint32_t Running;       /* 1 between start and stop */
} TStreamStatistics;

#ifdef __cplusplus
}
#endif

#endif
