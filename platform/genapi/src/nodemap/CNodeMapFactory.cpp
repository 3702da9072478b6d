#include <new>
#include <string>

#include "Base/GCException.h"
#include "GenApi/NodeMapFactory.h"
#include "description/DescriptionLoader.h"
#include "nodemap/NodeMap.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;
using GENICAM_NAMESPACE::gcstring_vector;

// A file, or bytes; and what was loaded from them, so that one factory makes several maps of one description.
struct CNodeMapFactory::Source {
  EContentType contentType = ContentType_Auto;
  std::string fileName;
  std::string bytes;
  LoadedDescription loaded;
};

CNodeMapFactory::CNodeMapFactory() = default;
CNodeMapFactory::CNodeMapFactory(const CNodeMapFactory&) = default;
CNodeMapFactory& CNodeMapFactory::operator=(const CNodeMapFactory&) = default;
CNodeMapFactory::~CNodeMapFactory() = default;

CNodeMapFactory::CNodeMapFactory(EContentType ContentType, const gcstring& FileName, ECacheUsage, bool)
    : source_(std::make_shared<Source>()) {
  if (FileName.empty()) throw INVALID_ARGUMENT_EXCEPTION("the name of the description file is empty");
  source_->contentType = ContentType;
  source_->fileName = FileName.c_str();
}

CNodeMapFactory::CNodeMapFactory(EContentType ContentType, const void* pData, size_t DataSize, ECacheUsage, bool)
    : source_(std::make_shared<Source>()) {
  if (!pData || DataSize == 0) throw INVALID_ARGUMENT_EXCEPTION("the description is empty");
  source_->contentType = ContentType;
  source_->bytes.assign(static_cast<const char*>(pData), DataSize);
}

CNodeMapFactory::CNodeMapFactory(const gcstring& XmlData, ECacheUsage CacheUsage, bool SuppressStringsForNodes)
    : CNodeMapFactory(ContentType_Xml, XmlData.c_str(), XmlData.size(), CacheUsage, SuppressStringsForNodes) {}

INodeMap* CNodeMapFactory::CreateNodeMap(const gcstring& DeviceName, bool ReleaseDescriptionData) {
  if (!source_) throw LOGICAL_ERROR_EXCEPTION("the node map factory has no description");
  try {
    if (!source_->loaded.description) {
      source_->loaded = source_->fileName.empty() ? loadDescriptionText(source_->bytes, source_->contentType)
                                                  : loadDescriptionFile(source_->fileName, source_->contentType);
    }
    auto* map = new NodeMap(source_->loaded, DeviceName);
    if (ReleaseDescriptionData) std::string().swap(source_->bytes);
    return map;
  } catch (const std::bad_alloc&) {
    throw BAD_ALLOC_EXCEPTION("out of memory while loading the description");
  }
}

bool CNodeMapFactory::IsEmpty() const {
  return source_ == nullptr;
}
bool CNodeMapFactory::IsLoaded() const {
  return source_ && source_->loaded.description;
}
void CNodeMapFactory::ClearCache() {
  clearDescriptionCache();
}

void CNodeMapFactory::GetSupportedSchemaVersions(gcstring_vector& SchemaVersions) {
  SchemaVersions.clear();
  SchemaVersions.push_back("1.0");
  SchemaVersions.push_back("1.1");
}

}  // namespace GENAPI_NAMESPACE
