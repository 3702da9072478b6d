#include "ExportFrame.h"
#include "FileTransfer.h"
#include "LoadedMap.h"
#include "NodeMapBase.h"
#include "OxGenApi/NodeMap.h"
#include "Text.h"

namespace orxGenApi {
namespace {

using GENAPI_NAMESPACE::INodeMap;
using GENICAM_NAMESPACE::gcstring;

constexpr const char* kEmptyBuffer = "Buffer must not be empty";

// Runs a transfer with the loaded description, which is held until it is done.
template <class Transfer, class... NamesAndValues>
uint32_t onDeviceFiles(NODEMAP handle, const Arguments<NamesAndValues...>& arguments, Transfer&& transfer) {
  return onObject<NodeMapBase>(handle, arguments, [&](NodeMapBase& nodeMap) {
    const std::shared_ptr<LoadedMap> load = nodeMap.loaded();
    if (!load) return refuse(arguments, OXGENAPI_E_INVALID_STATE, "Invalid nodemap state");
    return guardedExport(arguments, kAsking, [&] {
      transfer(*load->map());
      return OXGENAPI_OK;
    });
  });
}

template <class Character>
uint32_t upload(NODEMAP NodeMap, const Character* FileSelectorEntryName, const Character* Filename) {
  return onDeviceFiles(
      NodeMap, args("NodeMap", NodeMap, "FileSelectorEntryName", FileSelectorEntryName, "Filename", Filename),
      [&](INodeMap& map) {
        uploadFile(map, gcstring(parameterText(FileSelectorEntryName)), parameterText(Filename).c_str());
      });
}

template <class Character>
uint32_t uploadFromMemory(NODEMAP NodeMap, const Character* FileSelectorEntryName, const void* pBuffer,
                          size_t BufferSize) {
  const auto arguments = args("NodeMap", NodeMap, "FileSelectorEntryName", FileSelectorEntryName, "pBuffer", pBuffer,
                              "BufferSize", BufferSize);
  if (pBuffer == nullptr || BufferSize == 0) return refuse(arguments, OXGENAPI_E_INVALID_ARGUMENT, kEmptyBuffer);
  return onDeviceFiles(NodeMap, arguments, [&](INodeMap& map) {
    uploadMemory(map, gcstring(parameterText(FileSelectorEntryName)), pBuffer, BufferSize);
  });
}

template <class Character>
uint32_t download(NODEMAP NodeMap, const Character* FileSelectorEntryName, const Character* Filename) {
  return onDeviceFiles(
      NodeMap, args("NodeMap", NodeMap, "FileSelectorEntryName", FileSelectorEntryName, "Filename", Filename),
      [&](INodeMap& map) {
        downloadFile(map, gcstring(parameterText(FileSelectorEntryName)), parameterText(Filename).c_str());
      });
}

template <class Character>
uint32_t downloadToMemory(NODEMAP NodeMap, const Character* FileSelectorEntryName, void* pBuffer, size_t* BufferSize) {
  const auto arguments = args("NodeMap", NodeMap, "FileSelectorEntryName", FileSelectorEntryName, "pBuffer", pBuffer,
                              "BufferSize", BufferSize);
  if (BufferSize == nullptr || (pBuffer != nullptr && *BufferSize == 0))
    return refuse(arguments, OXGENAPI_E_INVALID_ARGUMENT, kEmptyBuffer);
  return onDeviceFiles(NodeMap, arguments, [&](INodeMap& map) {
    const gcstring deviceFile(parameterText(FileSelectorEntryName));
    if (pBuffer == nullptr)
      *BufferSize = deviceFileSize(map, deviceFile);
    else
      downloadMemory(map, deviceFile, pBuffer, *BufferSize);
  });
}

}  // namespace
}  // namespace orxGenApi

using namespace orxGenApi;

uint32_t NMUploadFile(NODEMAP NodeMap, const char* FileSelectorEntryName, const char* Filename) {
  return upload(NodeMap, FileSelectorEntryName, Filename);
}

uint32_t NMUploadFileW(NODEMAP NodeMap, const wchar_t* FileSelectorEntryName, const wchar_t* Filename) {
  return upload(NodeMap, FileSelectorEntryName, Filename);
}

uint32_t NMUploadFileMemory(NODEMAP NodeMap, const char* FileSelectorEntryName, const void* pBuffer,
                            size_t BufferSize) {
  return uploadFromMemory(NodeMap, FileSelectorEntryName, pBuffer, BufferSize);
}

uint32_t NMUploadFileMemoryW(NODEMAP NodeMap, const wchar_t* FileSelectorEntryName, const void* pBuffer,
                             size_t BufferSize) {
  return uploadFromMemory(NodeMap, FileSelectorEntryName, pBuffer, BufferSize);
}

uint32_t NMDownloadFile(NODEMAP NodeMap, const char* FileSelectorEntryName, const char* Filename) {
  return download(NodeMap, FileSelectorEntryName, Filename);
}

uint32_t NMDownloadFileW(NODEMAP NodeMap, const wchar_t* FileSelectorEntryName, const wchar_t* Filename) {
  return download(NodeMap, FileSelectorEntryName, Filename);
}

uint32_t NMDownloadFileMemory(NODEMAP NodeMap, const char* FileSelectorEntryName, void* pBuffer, size_t* BufferSize) {
  return downloadToMemory(NodeMap, FileSelectorEntryName, pBuffer, BufferSize);
}

uint32_t NMDownloadFileMemoryW(NODEMAP NodeMap, const wchar_t* FileSelectorEntryName, void* pBuffer,
                               size_t* BufferSize) {
  return downloadToMemory(NodeMap, FileSelectorEntryName, pBuffer, BufferSize);
}
