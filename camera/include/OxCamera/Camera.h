/* An open camera: features, registers, description, loss. The conventions of OxCamera.h hold. */
#ifndef OXCAMERA_CAMERA_H
#define OXCAMERA_CAMERA_H

#include "OxCamera/CameraTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Opening and closing -----------------------------------------------------------------------------------------*/

/* Opens a camera with default options.
 *   Name    null or empty: the only camera there is (simulated ones count where they are listed);
 *           an IPv4 address, which is asked directly, without a search, also across routers;
 *           an ID from a list, a serial number or a user name;
 *           transport:NAME or interface:NAME, any of these by that way only; a transport's name alone: its only camera;
 *           "simulated": a simulated camera, always there
 *   Camera  out: a handle with one reference owned by the caller; zero on failure. The last reference closes.
 * Errors: NOT_FOUND with what was asked; AMBIGUOUS with the IDs of all that fit; IN_USE when control was refused, with
 *         the holder where it is known; NO_PERMISSION and UNREACHABLE with what mends it; TIMEOUT; FAILED. */
OXGENAPI_EXPORT uint32_t OxCameraOpen(const char* Name, TCameraAccess Access, OX_OUT(OXCAMERA) Camera);

/* The same with options. Errors: also INVALID_ARGUMENT for options without their StructSize. */
OXGENAPI_EXPORT uint32_t OxCameraOpenEx(const char* Name, const TCameraOptions* Options, OX_OUT(OXCAMERA) Camera);

/* Whether a handle is a live camera, open or not. Sets no error. */
OXGENAPI_EXPORT bool IsCamera(OXCAMERA Object);

/* Gives the camera back, at the latest after two seconds. Running accesses and waits of other threads end with CLOSED,
 * node maps and nodes stay valid handles without a camera. Closing twice does nothing. */
OXGENAPI_EXPORT uint32_t OxCameraClose(OXCAMERA Camera);

/* What is known about the camera, as OxCameraListText and OxCameraListNumber tell it.
 * Errors: INVALID_ARGUMENT for an item that has no such form. */
OXGENAPI_EXPORT uint32_t OxCameraText(OXCAMERA Camera, TCameraInfo Info, char* Text, OX_OUT(size_t) TextSize);
OXGENAPI_EXPORT uint32_t OxCameraNumber(OXCAMERA Camera, TCameraInfo Info, OX_OUT(int64_t) Value);

/* ---- Features and registers --------------------------------------------------------------------------------------*/

/* The camera's node map, with its description loaded (on the first call) and its port connected. Every call hands out
 * the same node map; it stays the same when the camera is opened again.
 *   NodeMap  out: a handle with one reference owned by the caller; zero on failure
 * Errors: RUNTIME when there is no description or it cannot be used, with the reason of each source that was tried; the
 *         camera stays open for its registers and the description's bytes. LOST; CLOSED. */
OXGENAPI_EXPORT uint32_t OxCameraNodeMap(OXCAMERA Camera, OX_OUT(NODEMAP) NodeMap);

/* The bytes of the description, XML or zip, usable or not.
 *   Buffer  null: Size receives the number of bytes. Otherwise at most Size bytes are copied.
 *   Size    in: room in Buffer; out: the number of bytes that the description has
 * Errors: RUNTIME when no source of a description can be read, with the reasons; LOST; CLOSED. */
OXGENAPI_EXPORT uint32_t OxCameraDescription(OXCAMERA Camera, void* Buffer, OX_OUT(size_t) Size);

/* Move Length bytes as they lie in the camera, with or without a description. One access of a camera happens at a time;
 * others wait. A write is sent once.
 * Errors: INVALID_ARGUMENT for a null buffer; TIMEOUT (reads); OUTCOME_UNKNOWN (writes); READ_ONLY (writes); REFUSED;
 *         LOST; CLOSED; FAILED. */
OXGENAPI_EXPORT uint32_t OxCameraRead(OXCAMERA Camera, void* Buffer, uint64_t Address, size_t Length);
OXGENAPI_EXPORT uint32_t OxCameraWrite(OXCAMERA Camera, const void* Buffer, uint64_t Address, size_t Length);

/* Port callbacks for a node map of one's own (NMConnectPort); pUserData is the OXCAMERA handle. They apply the byte
 * order of the camera. A failed access returns the code with which OxCameraRead or OxCameraWrite would fail, except
 * that READ_ONLY and REFUSED are OXGENAPI_E_ACCESS_DENIED here, which features report as not readable or not writable.
 */
OXGENAPI_EXPORT int OxCameraPortRead(void* pBuffer, int64_t Address, int64_t Length, void* pUserData);
OXGENAPI_EXPORT int OxCameraPortWrite(const void* pBuffer, int64_t Address, int64_t Length, void* pUserData);
OXGENAPI_EXPORT TAccessMode OxCameraPortAccess(void* pUserData);

/* Why the last failed access of this camera failed; features report such failures under a code of their own.
 *   Code            out: 0 when none has failed since the camera was opened, or opened again
 *   Text, TextSize  text buffer (may be null) and its in/out size in bytes */
OXGENAPI_EXPORT uint32_t OxCameraLastFailure(OXCAMERA Camera, OX_OUT(uint32_t) Code, char* Text,
                                             OX_OUT(size_t) TextSize);

/* ---- Loss --------------------------------------------------------------------------------------------------------
 * From open to close the library keeps the connection alive on a thread of its own, whatever the caller does. A camera
 * that has been silent for the heartbeat time, or that somebody else has taken over, is lost: running accesses and
 * waits end with LOST, so does every later one. */

OXGENAPI_EXPORT uint32_t OxCameraState(OXCAMERA Camera, OX_OUT(TCameraState) State);

/* Calls back when the camera is lost, at the latest one second after the heartbeat time; at once when it is lost
 * already. One callback at a time, null for none; replaces the one before. Waits for a callback that runs, except when
 * called from inside it.
 *   Release  may be null; called once with pUserData when Callback is not used any more */
OXGENAPI_EXPORT uint32_t OxCameraOnLoss(OXCAMERA Camera, TCameraLoss Callback, void* pUserData, TReleaseNotify Release);

/* Waits until the camera is lost. Returns 0 then. Errors: TIMEOUT after TimeMs; CLOSED. */
OXGENAPI_EXPORT uint32_t OxCameraWaitForLoss(OXCAMERA Camera, uint32_t TimeMs);

/* Opens the same camera again, at its address or wherever it answers now, after a loss or to begin afresh. Handles of
 * the camera, its node map and its nodes stay; what they remembered is dropped. If the camera came back with another
 * description, that is loaded: nodes of the former one stay valid without a camera.
 *   RetryMs  a camera that is not there yet is tried again for so long
 * Errors: as for OxCameraOpen, the camera then is lost; CLOSED. */
OXGENAPI_EXPORT uint32_t OxCameraReopen(OXCAMERA Camera, uint32_t RetryMs);

/* ---- Network -----------------------------------------------------------------------------------------------------*/

/* The camera's addresses, read from the camera. Errors: NOT_SUPPORTED for a camera without; those of OxCameraRead. */
OXGENAPI_EXPORT uint32_t OxCameraNetwork(OXCAMERA Camera, OX_OUT(TNetworkConfiguration) Configuration);

/* Stores the address that the camera uses from its next power on, switches OX_ADDRESS_STORED on, and reads both back.
 * Errors: INVALID_ARGUMENT for an inconsistent address, with the reason; FAILED when the camera reads back something
 *         else; those of OxCameraWrite; NOT_SUPPORTED. */
OXGENAPI_EXPORT uint32_t OxCameraStoreAddress(OXCAMERA Camera, const TNetworkAddress* Address);

#ifdef __cplusplus
}
#endif

#endif
