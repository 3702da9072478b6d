#include "FileTransfer.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string>
#include <vector>

#include "Base/GCException.h"
#include "Base/GCUtilities.h"
#include "Failure.h"
#include "GenApi/Filestream.h"
#include "GenApi/GenApi.h"
#include "HostFile.h"

namespace orxGenApi {

using namespace GENAPI_NAMESPACE;
using GENICAM_NAMESPACE::BadAllocException;
using GENICAM_NAMESPACE::gcstring;

namespace {

// What the copies hold of a file at a time. The device's own blocks are smaller; its stream buffers cut them.
constexpr size_t kCopyBlockBytes = size_t{64} << 10;

// Runs a transfer; what fails in it, save for the host file, is a failure of the device under `code`.
template <class Transfer>
auto onDevice(uint32_t code, Transfer transfer) {
  try {
    return transfer();
  } catch (const orx_error&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const BadAllocException&) {
    throw std::bad_alloc();
  } catch (const std::exception& fault) {
    throw orx_error(code, fault.what());
  }
}

void requireOpen(const IDevFileStream& device) {
  if (device.fail()) throw silent_error(OXGENAPI_E_DEVICE_FILE, "the device does not open the file");
}

void writeWhole(ODevFileStream& device, const gcstring& deviceFile, const char* data, size_t size) {
  while (size > 0) {
    const std::streamsize part = static_cast<std::streamsize>(std::min(size, kCopyBlockBytes));
    if (device.rdbuf()->sputn(data, part) != part) {
      throw orx_error(OXGENAPI_E_UPLOAD_FAILED,
                      "writing file '" + std::string(deviceFile.view()) + "' stopped: the device takes no more bytes");
    }
    data += part;
    size -= static_cast<size_t>(part);
  }
}

}  // namespace

void uploadFile(INodeMap& nodeMap, const gcstring& deviceFile, const char* path) {
  HostFileReader host(path);
  if (!host.isReadable()) throw orx_error(OXGENAPI_E_RUNTIME, "Filename not readable");
  onDevice(OXGENAPI_E_UPLOAD_FAILED, [&] {
    ODevFileStream device(&nodeMap, deviceFile.c_str(), std::ios_base::out | std::ios_base::trunc);
    std::vector<char> block(kCopyBlockBytes);
    while (const std::streamsize count = host.sgetn(block.data(), static_cast<std::streamsize>(block.size())))
      writeWhole(device, deviceFile, block.data(), static_cast<size_t>(count));
    device.close();
  });
}

void uploadMemory(INodeMap& nodeMap, const gcstring& deviceFile, const void* data, size_t size) {
  onDevice(OXGENAPI_E_UPLOAD_FAILED, [&] {
    GENICAM_NAMESPACE::INTEGRAL_CAST<std::streamsize>(size);
    ODevFileStream device(&nodeMap, deviceFile.c_str(), std::ios_base::out | std::ios_base::trunc);
    writeWhole(device, deviceFile, static_cast<const char*>(data), size);
    device.close();
  });
}

void downloadFile(INodeMap& nodeMap, const gcstring& deviceFile, const char* path) {
  HostFileWriter host(path);
  if (!host.isOpen()) throw orx_error(OXGENAPI_E_RUNTIME, "Filename not writable");
  onDevice(OXGENAPI_E_ACCESS_DENIED, [&] {
    IDevFileStream device(&nodeMap, deviceFile.c_str(), std::ios_base::in);
    requireOpen(device);
    std::vector<char> block(kCopyBlockBytes);
    const std::streamsize room = static_cast<std::streamsize>(block.size());
    while (const std::streamsize count = device.rdbuf()->sgetn(block.data(), room))
      if (host.sputn(block.data(), count) != count) throw orx_error(OXGENAPI_E_RUNTIME, host.failure());
    device.close();
  });
  if (!host.close()) throw orx_error(OXGENAPI_E_RUNTIME, host.failure());
}

void downloadMemory(INodeMap& nodeMap, const gcstring& deviceFile, void* data, size_t& size) {
  onDevice(OXGENAPI_E_ACCESS_DENIED, [&] {
    IDevFileStream device(&nodeMap, deviceFile.c_str(), std::ios_base::in);
    requireOpen(device);
    constexpr size_t kLargest = static_cast<size_t>(std::numeric_limits<std::streamsize>::max());
    const std::streamsize count =
        device.rdbuf()->sgetn(static_cast<char*>(data), static_cast<std::streamsize>(std::min(size, kLargest)));
    device.close();
    size = static_cast<size_t>(count);
  });
}

size_t deviceFileSize(INodeMap& nodeMap, const gcstring& deviceFile) {
  return onDevice(OXGENAPI_E_ACCESS_DENIED, [&] {
    const CEnumerationPtr selector(nodeMap.GetNode("FileSelector"));
    if (!selector.IsValid()) throw orx_error(OXGENAPI_E_NOT_PRESENT, "FileSelector not present");
    if (!IsWritable(selector)) throw orx_error(OXGENAPI_E_NOT_WRITABLE, "FileSelector not writable");
    selector->FromString(deviceFile, true);
    const CIntegerPtr fileSize(nodeMap.GetNode("FileSize"));
    const int64_t bytes = IsReadable(fileSize) ? fileSize->GetValue(false, false) : -1;
    if (bytes < 0) throw silent_error(OXGENAPI_E_UNSPECIFIED, "FileSize is missing, not readable or negative");
    return static_cast<size_t>(bytes);
  });
}

}  // namespace orxGenApi
