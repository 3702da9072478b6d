/* Finding cameras. The conventions of OxCamera.h hold. Any thread may call; a list never changes. */
#ifndef OXCAMERA_CAMERALIST_H
#define OXCAMERA_CAMERALIST_H

#include "OxCamera/CameraTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Asks every transport for its cameras. A camera found on several ways stands in the list once. Whatever fails on one
 * interface or in one transport becomes a note and hides nothing else; no camera at all is no failure.
 *   TimeMs  how long answers are collected, 0 for 1000
 *   List    out: a handle with one reference owned by the caller; zero on failure
 * Environment: OXGENAPI_TRANSPORTS, folders of transport modules, separated by colons, in place of the installed one;
 *   OXGENAPI_INTERFACES, names or addresses of the network interfaces to ask, separated by commas, in place of all;
 *   OXGENAPI_ADDRESSES, addresses of cameras to ask directly besides, separated by commas (routers pass no searches
 * on); OXGENAPI_SIMULATED, the simulated cameras that are there, see docs/cameras.md. */
OXGENAPI_EXPORT uint32_t OxCameraFind(uint32_t TimeMs, OX_OUT(OXCAMERALIST) List);

/* How many cameras there are. */
OXGENAPI_EXPORT uint32_t OxCameraListCount(OXCAMERALIST List, OX_OUT(size_t) Count);

/* What is known about the camera at an index below the count.
 *   Text, TextSize  text buffer (may be null) and its in/out size in bytes
 * Errors: INVALID_ARGUMENT for an index out of range, or for an item that has no such form. */
OXGENAPI_EXPORT uint32_t OxCameraListText(OXCAMERALIST List, size_t Index, TCameraInfo Info, char* Text,
                                          OX_OUT(size_t) TextSize);
OXGENAPI_EXPORT uint32_t OxCameraListNumber(OXCAMERALIST List, size_t Index, TCameraInfo Info, OX_OUT(int64_t) Value);

/* What the search has tried: modules, interfaces, answers, and advice when nothing was found. Each note is one sentence
 * that names its subject first.
 * Errors of OxCameraNote: INVALID_ARGUMENT for an index out of range. */
OXGENAPI_EXPORT uint32_t OxCameraNoteCount(OXCAMERALIST List, OX_OUT(size_t) Count);
OXGENAPI_EXPORT uint32_t OxCameraNote(OXCAMERALIST List, size_t Index, OX_OUT(TCameraNote) Kind, char* Text,
                                      OX_OUT(size_t) TextSize);

/* Proposes an IPv4 address on the camera's interface that nobody answers to; takes up to two seconds.
 * Errors: INVALID_ARGUMENT for an index out of range; NOT_SUPPORTED for a camera without network address; FAILED where
 *         the interface has no free one. */
OXGENAPI_EXPORT uint32_t OxCameraProposeAddress(OXCAMERALIST List, size_t Index, OX_OUT(TNetworkAddress) Address);

/* Gives a camera an address until it is powered off, whatever it has now; it need not be reachable. Search again after
 * that. Nothing is stored.
 * Errors: INVALID_ARGUMENT for an index out of range or an inconsistent address, with the reason; NOT_SUPPORTED as
 *         above; TIMEOUT when the camera does not confirm; IN_USE while a program controls it. */
OXGENAPI_EXPORT uint32_t OxCameraForceAddress(OXCAMERALIST List, size_t Index, const TNetworkAddress* Address);

#ifdef __cplusplus
}
#endif

#endif
