// How the problems of a settings operation reach the caller: last error, callback, telemetry record.
#pragma once
#include <memory>

#include "LoadedMap.h"
#include "NodeMapBase.h"
#include "NodeMapSerializer.h"
#include "OxGenApi/Types.h"

namespace orxGenApi {

// For one operation on one load. Sets the last error, asks the callback, then sends the record: a warning when the
// operation goes on, an error when it stops. It goes on without a callback, and when the callback throws.
class SettingsReport final : public SettingsProblems {
 public:
  SettingsReport(NodeMapBase& nodeMap, std::shared_ptr<LoadedMap> load, TSettingsCallback callback, void* userData)
      : nodeMap_(nodeMap), load_(std::move(load)), callback_(callback), userData_(userData) {}

  bool goOn(GENAPI_NAMESPACE::INode* feature, uint32_t code, const std::string& text) override;
  void note(const char* text) override;
  // Whether the record of the failure that ends the operation is out: a call sends one.
  bool hasSentError() const { return sentError_; }

 private:
  NodeMapBase& nodeMap_;
  std::shared_ptr<LoadedMap> load_;
  TSettingsCallback callback_;
  void* userData_;
  bool sentError_ = false;
};

}  // namespace orxGenApi
