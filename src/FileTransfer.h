// Moves whole files between the host and the files inside a device.
//
// Data goes through one small block, so memory does not grow with the file. Every transfer closes the device file
// before it reports success, because many devices only commit a file when it is closed.
//
// All functions take the node map that carries the device's file features and the device file's name (an entry of
// FileSelector). They throw orx_error, and let pass what is no standard exception, or is out of memory. Two of the
// codes come as silent_error.
#pragma once
#include <cstddef>
#include <cstdint>

#include "Base/GCString.h"
#include "GenApi/INodeMap.h"

namespace orxGenApi {

// Replaces the device file by the host file. Throws 0x80000003 "Filename not readable" before the device is touched,
// 0x80000003 when the host file fails later, 0x8000000f with the failure's text for everything else.
void uploadFile(GENAPI_NAMESPACE::INodeMap& nodeMap, const GENICAM_NAMESPACE::gcstring& deviceFile, const char* path);

// Replaces the device file by `size` bytes. Throws 0x8000000f with the failure's text; with "INTEGRAL_CAST failed",
// before the device is touched, for more bytes than streams can count.
void uploadMemory(GENAPI_NAMESPACE::INodeMap& nodeMap, const GENICAM_NAMESPACE::gcstring& deviceFile, const void* data,
                  size_t size);

// Replaces the host file by the device file. Throws 0x80000003 "Filename not writable" before the device is touched,
// 0x80000003 when the host file fails later (a full disk), 0x8000000e with the failure's text for everything else;
// silently 0x80000016 when the device does not open the file.
void downloadFile(GENAPI_NAMESPACE::INodeMap& nodeMap, const GENICAM_NAMESPACE::gcstring& deviceFile, const char* path);

// Reads up to `size` bytes of the device file; `size` becomes the number read. Throws 0x8000000e with the failure's
// text, silently 0x80000016 when the device does not open the file; `size` is unchanged then.
void downloadMemory(GENAPI_NAMESPACE::INodeMap& nodeMap, const GENICAM_NAMESPACE::gcstring& deviceFile, void* data,
                    size_t& size);

// The size of the device file in bytes as the device tells it; the file stays selected. Throws 0x8000002e "FileSelector
// not present", 0x8000000c "FileSelector not writable", 0x8000000e with the failure's text; silently 0x80000001 when
// FileSize is missing, not readable or negative.
size_t deviceFileSize(GENAPI_NAMESPACE::INodeMap& nodeMap, const GENICAM_NAMESPACE::gcstring& deviceFile);

}  // namespace orxGenApi
