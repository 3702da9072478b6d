// Delivers event payloads whose event ID the caller knows.
#pragma once
#include "Base/GCString.h"
#include "GenApi/EventAdapter.h"

namespace GENAPI_NAMESPACE {

class CEventAdapterGeneric : public CEventAdapter {
 public:
  explicit CEventAdapterGeneric(INodeMap* pNodeMap = nullptr);
  ~CEventAdapterGeneric() override;

  // LogicalErrorException: the payload alone does not tell the event ID.
  void DeliverMessage(const uint8_t msg[], uint32_t numBytes) override;
  // EventID: hexadecimal digits, any case, any count, no prefix; leading zeros do not matter. 0 bytes are an empty
  // payload. Callbacks run on the calling thread before it returns. An ID that no node has is no error. Throws
  // InvalidArgumentException (ID text, null msg with bytes, more than kMaxEventBytes) and what callbacks throw.
  void DeliverMessage(const uint8_t msg[], uint32_t numBytes, const GENICAM_NAMESPACE::gcstring& EventID);
  // The same with the ID as a number.
  void DeliverMessage(const uint8_t msg[], uint32_t numBytes, uint64_t EventID);
};

}  // namespace GENAPI_NAMESPACE
