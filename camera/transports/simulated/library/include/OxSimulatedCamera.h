/* The simulated camera for C and every language that can call C: its registers as port callbacks, its images with their
 * chunks and its event messages as the records that a node map takes.
 *
 *   OxSimulatedCamera* camera = OxSimulatedCameraCreate();
 *   NMLoadXMLString(map, OxSimulatedCameraDescription());
 *   NMConnectPort(map, OxSimulatedCameraRead, OxSimulatedCameraWrite, OxSimulatedCameraAccess, camera);
 *
 * A camera must outlive the ports connected to it. One thread at a time may fetch events or images; everything else may
 * be called from any thread. */
#ifndef OXSIMULATEDCAMERA_H
#define OXSIMULATEDCAMERA_H

#include <OxGenApi/Types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct OxSimulatedCamera OxSimulatedCamera;

/* A camera fresh from the factory, null when memory is out. */
OXGENAPI_EXPORT OxSimulatedCamera* OxSimulatedCameraCreate(void);
/* Ends a camera; null is allowed. */
OXGENAPI_EXPORT void OxSimulatedCameraDestroy(OxSimulatedCamera* Camera);

/* The description that fits the firmware now running: XML text, zero-terminated, valid as long as the program. With
 * null: the one of a camera fresh from the factory. */
OXGENAPI_EXPORT const char* OxSimulatedCameraDescription(const OxSimulatedCamera* Camera);

/* Port callbacks for NMConnectPort; pUserData is the camera. A refused access leaves its reason in the last error. */
OXGENAPI_EXPORT int OxSimulatedCameraRead(void* pBuffer, int64_t Address, int64_t Length, void* pUserData);
OXGENAPI_EXPORT int OxSimulatedCameraWrite(const void* pBuffer, int64_t Address, int64_t Length, void* pUserData);
OXGENAPI_EXPORT TAccessMode OxSimulatedCameraAccess(void* pUserData);

/* Takes the oldest event message that is due. False: there is none, Event is as it was. The payload is valid until the
 * next call. */
OXGENAPI_EXPORT bool OxSimulatedCameraNextEvent(OxSimulatedCamera* Camera, TEventData* Event);

/* An image as a transport layer leaves it in a buffer, and where its chunks lie. */
typedef struct OxSimulatedImage {
  uint8_t* pBuffer;
  size_t BufferSize; /* bytes */
  uint64_t FrameID;  /* counts from 1 */
  const TChunkData* Chunks;
  size_t ChunkCount;
} OxSimulatedImage;

/* Takes the oldest image that waits, or a new one. False: the camera does not run, waits for a trigger, or memory is
 * out; Image is as it was. Buffer and chunks are valid until the next call. */
OXGENAPI_EXPORT bool OxSimulatedCameraNextImage(OxSimulatedCamera* Camera, OxSimulatedImage* Image);

/* Power-cycles the camera: registers return to their values at power on, an activated firmware starts. */
OXGENAPI_EXPORT void OxSimulatedCameraReset(OxSimulatedCamera* Camera);

#ifdef __cplusplus
}
#endif

#endif
