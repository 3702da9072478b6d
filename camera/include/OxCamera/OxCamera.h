/* Cameras: find one, open it, keep it. Stands beside libOxGenApi, whose node maps hold the features.
 *
 *   OXCAMERA camera;
 *   NODEMAP map;
 *   OxCameraOpen("GV01", OX_CONTROL, &camera);
 *   OxCameraNodeMap(camera, &map);
 *
 * 1. Handles and owners. OXCAMERA and OXCAMERALIST are handles of libOxBase like those of OxGenApi.h, and keep all its
 *    rules: one reference for each handle handed out, given back with OxIfaceContainerReleaseUseCounter; zero, stale,
 *    foreign and random values are refused with INVALID_HANDLE "Invalid OXCAMERA handle" (OXCAMERALIST) before any
 *    other check. The last reference to a camera closes it. A node map handed out is an object of its own: it may
 *    outlive its camera, and its features then fail with "The camera is closed".
 *
 * 2. Strings and buffers. Text is UTF-8. It is returned into a caller's buffer with an in/out size as in OxGenApi.h.
 *    Sizes and addresses are in bytes, times in milliseconds of wall time.
 *
 * 3. Results and the last error. A function returns 0 or a code with the top bit set: OXCAMERA_E_... of CameraTypes.h
 * or OXGENAPI_E_... . A failing function leaves code and text as the calling thread's last error; success leaves that
 *    alone. Comments name codes without their prefix. Every function can also report INVALID_HANDLE, OUT_OF_MEMORY and
 *    UNSPECIFIED. Output pointers must be valid unless the function says otherwise. A failing call leaves outputs as
 *    they were; functions that create an object set it to zero. No exception leaves any function.
 *
 * 4. Threads. Every function may be called from any thread, for one camera or for several. The library has threads of
 *    its own: one for each open camera, short ones while it searches, and one for each loss that is called back. The
 *    first never runs a caller's code.
 *
 * 5. Cameras and foreign code. What a device says is input: texts, sizes and answers are checked. Transports are
 * modules that are loaded when cameras are first looked for; one that is missing, broken or of another version costs
 * only its own cameras.
 */
#ifndef OXCAMERA_OXCAMERA_H
#define OXCAMERA_OXCAMERA_H

#include "OxCamera/Camera.h"
#include "OxCamera/CameraList.h"
#include "OxCamera/CameraTypes.h"
#include "OxCamera/Events.h"
#include "OxCamera/ImageTypes.h"
#include "OxCamera/Save.h"
#include "OxCamera/Stream.h"
#include "OxGenApi/OxGenApi.h"

#endif
