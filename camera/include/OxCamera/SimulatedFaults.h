/* Failures on demand of simulated cameras: registers beside those that the description names. Each has four bytes, big
 * endian; OxCameraRead and OxCameraWrite reach them, the tool's peek and poke too.
 *
 *   const uint8_t time[4] = {0, 0, 0x0b, 0xb8};
 *   OxCameraWrite(camera, time, OX_FAULT_SILENT_MS, 4);    nothing answers for three seconds
 */
#ifndef OXCAMERA_SIMULATEDFAULTS_H
#define OXCAMERA_SIMULATEDFAULTS_H

#include "OxCamera/CameraTypes.h"

#define OX_FAULT_BASE UINT64_C(0x7fff00000000)
#define OX_FAULT_LATE_MS (OX_FAULT_BASE + 0)    /* answers come so much later; longer than AnswerMs means not at all */
#define OX_FAULT_LATE_COUNT (OX_FAULT_BASE + 4) /* only so many answers; 0: all */
#define OX_FAULT_UNPLUG_MS (OX_FAULT_BASE + 8)  /* the cable is out for so long, then the camera powers on */
#define OX_FAULT_SILENT_MS (OX_FAULT_BASE + 12) /* nothing answers for so long; what is written arrives */
#define OX_FAULT_TAKE_OVER (OX_FAULT_BASE + 16) /* any value: another program takes control */
#define OX_FAULT_WRITES (OX_FAULT_BASE + 20) /* read only: writes that have arrived, those to these registers aside */
#define OX_FAULT_PINGS (OX_FAULT_BASE + 24)  /* read only: heartbeats that have arrived */

#define OX_FAULT_DELAY_MS (OX_FAULT_BASE + 28) /* the next of the faults above that is written begins so much later */

/* Of streams. */
#define OX_FAULT_CUT_FRAMES (OX_FAULT_BASE + 32)  /* so many frames come without their second half */
#define OX_FAULT_LOSE_FRAMES (OX_FAULT_BASE + 36) /* so many frames never come */

#endif
