/* Images of a camera: start, wait, look, give back, stop. The conventions of OxCamera.h hold.
 *
 *   TImage image;
 *   OxCameraStart(camera, 8);
 *   while (OxCameraNextImage(camera, 1000, &image) == 0) {
 *     use(image.Part.Data, image.Part.Width, image.Part.Height);
 *     OxCameraReturnImage(camera, &image);
 *   }
 *   OxCameraStop(camera);
 *
 * Start: TLParamsLocked becomes 1 (where the camera has it), PayloadSize is read, buffers are made, the receiver is
 * opened, AcquisitionStart is executed. Stop is the reverse. No other feature is written. A start that fails leaves
 * camera and handles as they were.
 *
 * Memory of an image stays valid until the image is given back, also after stop, loss and close. Give all images back
 * before you release the last reference to the camera. Nothing is copied and nothing allocated for a frame.
 *
 * Threads: start, stop, waits and giving back may come from any thread, several at once. No code of the caller runs on
 * the receive thread. Stop, close, loss and OxCameraCancelWait end waits of other threads within 100 ms. */
#ifndef OXCAMERA_STREAM_H
#define OXCAMERA_STREAM_H

#include "OxCamera/ImageTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Starts a stream into BufferCount buffers of the library; 0 for the default of TStreamOptions.
 * Errors: IN_USE when one runs, which goes on; INVALID_ARGUMENT for too few or too many buffers; READ_ONLY;
 *         NOT_SUPPORTED when this way to the camera has no streams; RUNTIME when the description lacks what a start
 *         needs, with its name; those of OxCameraWrite and of the features that are used. */
OXGENAPI_EXPORT uint32_t OxCameraStart(OXCAMERA Camera, size_t BufferCount);

/* The same with options. Errors: also BUFFER_TOO_SMALL for memory of the caller below the payload size; NO_PERMISSION
 * for RM_Packet without CAP_NET_RAW; INVALID_ARGUMENT for options without their StructSize. */
OXGENAPI_EXPORT uint32_t OxCameraStartEx(OXCAMERA Camera, const TStreamOptions* Options);

/* Stops. Waits end with STOPPED. Images that nobody has fetched are gone, those that the caller holds stay valid;
 * memory of the caller is no longer written. Stopping what does not run does nothing. Errors: those of the features,
 * after all that could be undone was undone. */
OXGENAPI_EXPORT uint32_t OxCameraStop(OXCAMERA Camera);

/* Waits for the next image.
 *   TimeMs  wall time, whatever arrives; 0: only looks; OX_WAIT_DEFAULT
 *   Image   out: undefined on failure
 * Errors: TIMEOUT, with what is known about the silence: no packets, packets without a frame, trigger mode on; ALL_HELD
 *         at once when the caller holds every buffer; STOPPED; CANCELLED; LOST and CLOSED, after the images that had
 *         come before. An image that is incomplete is no error: see State. */
OXGENAPI_EXPORT uint32_t OxCameraNextImage(OXCAMERA Camera, uint32_t TimeMs, TImage* Image);

/* One image that came after the call began; images that have waited longer are skipped. Starts a stream of the default
 * options if none runs, and leaves it running, so that calls in a loop are as fast as the camera. No image twice.
 * Errors: those of OxCameraStart and OxCameraNextImage. */
OXGENAPI_EXPORT uint32_t OxCameraGrabImage(OXCAMERA Camera, uint32_t TimeMs, TImage* Image);

/* Gives an image back: its buffer is filled again, or freed after a stop. Chunks attached from it are not available
 * any more. Errors: INVALID_ARGUMENT for an image that was given back, or is of another camera. */
OXGENAPI_EXPORT uint32_t OxCameraReturnImage(OXCAMERA Camera, const TImage* Image);

/* A part of an image that the caller holds. Index counts from 0, which is TImage::Part.
 * Errors: INVALID_ARGUMENT for an index or an image that is not there. */
OXGENAPI_EXPORT uint32_t OxCameraImagePart(OXCAMERA Camera, const TImage* Image, size_t Index, TImagePart* Part);

/* Ends waits that run now with CANCELLED, or the next one when none runs. */
OXGENAPI_EXPORT uint32_t OxCameraCancelWait(OXCAMERA Camera);

/* Counters of the stream that runs, or of the last one; zeros before the first. Errors: INVALID_ARGUMENT for a record
 * without its StructSize. */
OXGENAPI_EXPORT uint32_t OxCameraStreamStatistics(OXCAMERA Camera, TStreamStatistics* Statistics);

/* What hampers the stream, one sentence a line, empty when nothing is known: a receive buffer that the system cut, no
 * image for three seconds and why, buffers that are all held. Reads features. */
OXGENAPI_EXPORT uint32_t OxCameraStreamAdvice(OXCAMERA Camera, char* Text, OX_OUT(size_t) TextSize);

/* Makes the chunk features of the camera's node map show this image's values, until it is given back or another image
 * is attached. Errors: NOT_SUPPORTED for an image without chunks, or with missing data; RUNTIME for a layout that
 * cannot be read, with the reason: the image itself is as usable as before. INVALID_ARGUMENT as OxCameraImagePart. */
OXGENAPI_EXPORT uint32_t OxCameraAttachChunks(OXCAMERA Camera, const TImage* Image);

/* Lets the camera send these chunks with its images: writes ChunkModeActive, then ChunkSelector and ChunkEnable for
 * each, and puts the selector back. Chunks that are on stay on.
 *   Names  Count entries of ChunkSelector, such as Timestamp
 * Errors: INVALID_ARGUMENT with all names that the camera lacks, before anything is written; IN_USE while a stream
 * runs;
 *         NOT_SUPPORTED for a camera without chunks; those of the features. */
OXGENAPI_EXPORT uint32_t OxCameraEnableChunks(OXCAMERA Camera, const char* const* Names, size_t Count);

#ifdef __cplusplus
}
#endif

#endif
