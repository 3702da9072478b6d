// Makes node maps from description files and texts.
#pragma once
#include <cstddef>
#include <memory>

#include "Base/GCString.h"
#include "Base/GCStringVector.h"
#include "GenApi/Types.h"

namespace GENAPI_NAMESPACE {

class INodeMap;

class CNodeMapFactory {
 public:
  CNodeMapFactory();
  // Constructor argument errors (empty file name, null data, size 0, empty text) throw InvalidArgumentException.
  // Cache usage and the last flag are accepted and change nothing observable.
  CNodeMapFactory(EContentType ContentType, const GENICAM_NAMESPACE::gcstring& FileName,
                  ECacheUsage CacheUsage = CacheUsage_Automatic, bool SuppressStringsForNodes = false);
  CNodeMapFactory(EContentType ContentType, const void* pData, size_t DataSize,
                  ECacheUsage CacheUsage = CacheUsage_Automatic, bool SuppressStringsForNodes = false);
  explicit CNodeMapFactory(const GENICAM_NAMESPACE::gcstring& XmlData, ECacheUsage CacheUsage = CacheUsage_Automatic,
                           bool SuppressStringsForNodes = false);
  CNodeMapFactory(const CNodeMapFactory&);
  CNodeMapFactory& operator=(const CNodeMapFactory&);
  ~CNodeMapFactory();

  // Throws RuntimeException naming file, line, node and element; BadAllocException when memory ran out. The node map
  // belongs to the caller, who ends it through IDestroy. ReleaseDescriptionData lets the factory drop the text.
  INodeMap* CreateNodeMap(const GENICAM_NAMESPACE::gcstring& DeviceName = "Device", bool ReleaseDescriptionData = true);
  bool IsEmpty() const;
  bool IsLoaded() const;
  // Forgets descriptions that no node map uses; those in use stay shared.
  static void ClearCache();
  static void GetSupportedSchemaVersions(GENICAM_NAMESPACE::gcstring_vector& SchemaVersions);

 private:
  struct Source;
  std::shared_ptr<Source> source_;
};

}  // namespace GENAPI_NAMESPACE
