#include <exception>
#include <new>
#include <string>

#include "GenApi/NodeMapFactory.h"
#include "description/DescriptionLoader.h"
#include "nodemap/NodeMap.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;
using GENICAM_NAMESPACE::gcstring_vector;

// What was loaded, or why nothing was; one factory makes several maps of one description. Bytes are loaded at once,
// since they are the client's and need not be copied for a later look; a file is read when the first map is made.
struct CNodeMapFactory::Source {
  EContentType contentType = ContentType_Auto;
  std::string fileName;
  LoadedDescription loaded;
  std::exception_ptr failure;
};

CNodeMapFactory::CNodeMapFactory() = default;
CNodeMapFactory::CNodeMapFactory(const CNodeMapFactory&) = default;
CNodeMapFactory& CNodeMapFactory::operator=(const CNodeMapFactory&) = default;
CNodeMapFactory::~CNodeMapFactory() = default;

CNodeMapFactory::CNodeMapFactory(EContentType ContentType, const gcstring& FileName, ECacheUsage, bool)
    : source_(std::make_shared<Source>()) {
  if (FileName.empty()) refuse<InvalidArgumentException>("the name of the description file is empty");
  source_->contentType = ContentType;
  source_->fileName = FileName.c_str();
}

CNodeMapFactory::CNodeMapFactory(EContentType ContentType, const void* pData, size_t DataSize, ECacheUsage, bool)
    : source_(std::make_shared<Source>()) {
  if (!pData || DataSize == 0) refuse<InvalidArgumentException>("the description is empty");
  try {
    source_->loaded = loadDescriptionText({static_cast<const char*>(pData), DataSize}, ContentType);
  } catch (...) {
    source_->failure = std::current_exception();
  }
}

CNodeMapFactory::CNodeMapFactory(const gcstring& XmlData, ECacheUsage CacheUsage, bool SuppressStringsForNodes)
    : CNodeMapFactory(ContentType_Xml, XmlData.c_str(), XmlData.size(), CacheUsage, SuppressStringsForNodes) {}

// There is no text to release: the description keeps what it needs of it.
INodeMap* CNodeMapFactory::CreateNodeMap(const gcstring& DeviceName, bool) {
  if (!source_) refuse<LogicalErrorException>("the node map factory has no description");
  if (source_->failure) std::rethrow_exception(source_->failure);
  try {
    if (!source_->loaded.description) source_->loaded = loadDescriptionFile(source_->fileName, source_->contentType);
    return new NodeMap(source_->loaded, DeviceName);
  } catch (const std::bad_alloc&) {
    refuse<BadAllocException>("out of memory while loading the description");
  }
}

bool CNodeMapFactory::IsEmpty() const { return source_ == nullptr; }
bool CNodeMapFactory::IsLoaded() const { return source_ && source_->loaded.description; }
void CNodeMapFactory::ClearCache() { clearDescriptionCache(); }

void CNodeMapFactory::GetSupportedSchemaVersions(gcstring_vector& SchemaVersions) {
  SchemaVersions.clear();
  SchemaVersions.push_back("1.0");
  SchemaVersions.push_back("1.1");
}

}  // namespace GENAPI_NAMESPACE
