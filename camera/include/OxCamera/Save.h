/* Images into files and into pictures of 8 or 16 bits. The conventions of OxCamera.h hold. These functions work on
 * memory only: on a held image, or on a record that the caller has filled in himself. */
#ifndef OXCAMERA_SAVE_H
#define OXCAMERA_SAVE_H

#include "OxCamera/CameraTypes.h"
#include "OxCamera/ImageTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* How OxCameraSaveImage saves. */
typedef struct TSaveOptions {
  size_t StructSize;   /* sizeof(TSaveOptions) */
  uint32_t Overwrite;  /* 1: replace a file of that name */
  uint32_t EightBits;  /* 1: make 8 bits of deeper pictures; otherwise more than 8 become 16 */
  uint32_t PngLevel;   /* 0, not compressed, to 9, smallest; 1 is the fastest that compresses */
  const char* Members; /* for raw: a JSON object whose members go into the file beside; null: none */
  OXCAMERA Camera;     /* for raw: the JSON beside gets this camera's ID and user-defined name; null: it does not */
} TSaveOptions;

/* Saves the first part of an image. The ending of Path says how: .png, .tif, .tiff, .pgm, .ppm, .pnm, .jpg, .npy, .raw.
 * An image that is no picture of a known format is saved raw, with ".raw" added to the name and a JSON beside it. The
 * JSON holds the layout of the pixels and, if known, camera, cameraName, frameId, time (ns of the camera's clock),
 * firstDataNs and completeNs (ns since 1970, the computer's clock). Members wins where it has a member of the same
 * name. The file appears under its name when it is complete; after a failure nothing is left.
 *   Options                null: overwrite nothing, PNG level 1
 *   SavedPath, SavedSize   text buffer for the name of the file, may be null; in/out size in bytes
 * Errors: INVALID_ARGUMENT for an unknown ending, an option out of range, or an image that misses data; INVALID_HANDLE
 *         if Camera is not null and not valid; ACCESS_DENIED if the file exists; NOT_SUPPORTED; FAILED with the
 *         system's reason if it cannot be written. */
OXGENAPI_EXPORT uint32_t OxCameraSaveImage(const TImage* Image, const char* Path, const TSaveOptions* Options,
                                           char* SavedPath, OX_OUT(size_t) SavedSize);

/* Makes a picture of the first part: rows of gray, or of red, green, blue, without padding.
 *   Channels    1 or 3
 *   SampleBits  8 or 16; values are scaled from the significant bits to all of them
 *   Size        bytes that Buffer has: at least Width * Height * Channels * SampleBits / 8
 * Errors: INVALID_ARGUMENT for a buffer too small, or an image that misses data; NOT_SUPPORTED for a format that is no
 *         picture. */
OXGENAPI_EXPORT uint32_t OxCameraConvertImage(const TImage* Image, uint32_t Channels, uint32_t SampleBits, void* Buffer,
                                              size_t Size);

#ifdef __cplusplus
}
#endif

#endif
