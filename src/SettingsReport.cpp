#include "SettingsReport.h"

#include "CallTelemetry.h"
#include "Node.h"
#include "OxBase/OxBase.h"

namespace orxGenApi {

using GENAPI_NAMESPACE::INode;
using Telemetry::_OxGenApi::Log;
using Telemetry::_OxGenApi::sendRecord;

bool SettingsReport::goOn(INode* feature, uint32_t code, const std::string& text) {
  // Found before the last error is set: finding it may fail.
  orxBase::shared_ref<Node> node;
  if (callback_ != nullptr && feature != nullptr) {
    try {
      node = nodeMap_.nodeFor(load_, feature);
    } catch (...) {  // the problem is told without a handle
    }
  }
  OxSetLastError(code, text.c_str());
  bool goesOn = true;
  if (callback_ != nullptr) {
    try {
      goesOn = callback_(static_cast<NODE>(node.container()), code, userData_);
    } catch (...) {  // counts as go on
    }
  }
  sendRecord(goesOn ? OXT_LEVEL_WARNING : OXT_LEVEL_ERROR,
             [&](Log& record) { record.message.append("NodeMapSerializer: ").append(text); });
  sentError_ = !goesOn;
  return goesOn;
}

void SettingsReport::note(const char* text) {
  sendRecord(OXT_LEVEL_ERROR, [&](Log& record) { record.message = text; });
  sentError_ = true;
}

}  // namespace orxGenApi
