/* Event messages: what a camera says by itself. The conventions of OxCamera.h hold.
 *
 *   TCameraEvent event = {sizeof event};
 *   while (OxCameraNextEvent(camera, 1000, &event) == 0) printf("%s: %zu bytes\n", event.EventID, event.Size);
 *
 * Switch events on first: EventSelector and EventNotification (SFNC). */
#ifndef OXCAMERA_EVENTS_H
#define OXCAMERA_EVENTS_H

#include "OxCamera/CameraTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct TCameraEvent {
  size_t StructSize; /* sizeof(TCameraEvent); set by the caller */
  char EventID[24];  /* hexadecimal digits, as descriptions write them */
  const void* Data;  /* the payload, as the camera sent it; null if there is none */
  size_t Size;       /* bytes of it */
} TCameraEvent;

/* Waits for the camera's oldest event message and delivers it to the camera's node map, on this thread: nodes with this
 * event ID take the payload, and their callbacks run before the call returns. A message that no node knows, or without
 * a payload, is only handed over.
 *   TimeMs  wall time; 0: only looks
 *   Event   out: its Data is valid until the next call for this camera
 * Messages wait in the camera or its driver while nobody asks; how many depends on them. One thread waits at a time, a
 * second one until the first is done.
 * Errors: TIMEOUT when none came; NOT_SUPPORTED when this way to the camera carries no event messages; LOST and CLOSED,
 *         within 100 ms; INVALID_ARGUMENT for a record without its StructSize. Those of NMDeliverEventEx: the message
 *         is handed over nevertheless. */
OXGENAPI_EXPORT uint32_t OxCameraNextEvent(OXCAMERA Camera, uint32_t TimeMs, TCameraEvent* Event);

#ifdef __cplusplus
}
#endif

#endif
