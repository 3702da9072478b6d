#include "GenApi/EventAdapterGeneric.h"

#include <charconv>

#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

CEventAdapterGeneric::CEventAdapterGeneric(INodeMap* pNodeMap) : CEventAdapter(pNodeMap) {}

CEventAdapterGeneric::~CEventAdapterGeneric() = default;

void CEventAdapterGeneric::DeliverMessage(const uint8_t[], uint32_t) {
  refuse<LogicalErrorException>("event adapter: a message can only be delivered together with its event ID");
}

void CEventAdapterGeneric::DeliverMessage(const uint8_t msg[], uint32_t numBytes,
                                          const GENICAM_NAMESPACE::gcstring& EventID) {
  deliver(msg, numBytes, EventID.view());
}

void CEventAdapterGeneric::DeliverMessage(const uint8_t msg[], uint32_t numBytes, uint64_t EventID) {
  char digits[16];
  const auto end = std::to_chars(digits, digits + sizeof(digits), EventID, 16).ptr;
  deliver(msg, numBytes, std::string_view(digits, static_cast<size_t>(end - digits)));
}

}  // namespace GENAPI_NAMESPACE
