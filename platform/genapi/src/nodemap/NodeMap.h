// The node map: the public face of one device.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "GenApi/CacheCheck.h"
#include "GenApi/Findings.h"
#include "GenApi/IDestroy.h"
#include "GenApi/IDeviceInfo.h"
#include "GenApi/INodeMap.h"
#include "nodemap/LiveData.h"
#include "nodemap/PollClock.h"
#include "nodes/Device.h"

namespace GENAPI_NAMESPACE {

class NodeMap final : public INodeMap,
                      public IDestroy,
                      public IDeviceInfo,
                      public IFindings,
                      public ICheckedNodeMap,
                      public ILiveData {
 public:
  NodeMap(LoadedDescription loaded, const GENICAM_NAMESPACE::gcstring& deviceName);
  ~NodeMap() override;

  // INodeMap
  void GetNodes(NodeList_t& Nodes) const override;
  INode* GetNode(const GENICAM_NAMESPACE::gcstring& Key) const override;
  void InvalidateNodes() const override;
  bool Connect(IPort* pPort, const GENICAM_NAMESPACE::gcstring& PortName) const override;
  bool Connect(IPort* pPort) const override;
  GENICAM_NAMESPACE::gcstring GetDeviceName() const override { return device_->name; }
  void Poll(int64_t ElapsedTime) override;
  CLock& GetLock() const override { return device_->dispatch.lock(); }
  uint64_t GetNumNodes() const override { return device_->description.nodeCount(); }
  bool ParseSwissKnifes(GENICAM_NAMESPACE::gcstring_vector* pErrorList) const override;

  void Destroy() override { delete this; }

  // IDeviceInfo
  GENICAM_NAMESPACE::gcstring GetModelName() const override;
  GENICAM_NAMESPACE::gcstring GetVendorName() const override;
  GENICAM_NAMESPACE::gcstring GetToolTip() const override;
  GENICAM_NAMESPACE::gcstring GetStandardNameSpace() const override;
  void GetGenApiVersion(GENICAM_NAMESPACE::Version_t& Version, uint16_t& Build) const override;
  void GetSchemaVersion(GENICAM_NAMESPACE::Version_t& Version) const override;
  void GetDeviceVersion(GENICAM_NAMESPACE::Version_t& Version) const override;
  GENICAM_NAMESPACE::gcstring GetProductGuid() const override;
  GENICAM_NAMESPACE::gcstring GetVersionGuid() const override;

  void GetFindings(std::vector<Finding>& Findings) const override;
  void SetCacheCheck(ICacheCheck* pCheck) override;

  // ILiveData
  void chunkPorts(NodeList_t& nodes) override;
  void eventNodes(NodeList_t& nodes) override;
  void dropPortSilently(INode* portNode, bool accessMayChange) override;
  void changeTogether(LiveChange& change) override;
  std::string pathTo(INode* node) const override;
  MapEndRing& endObservers() override { return endObservers_; }

  // How many nodes drops and writes have visited so far; for tests of cost.
  uint64_t visits() const { return device_->evaluation.visits(); }

 private:
  INode* publicNode(NodeIndex index) const;
  const Description& description() const { return device_->description; }

  const std::unique_ptr<Device> device_;
  std::unique_ptr<PollClock> pollClock_;
  MapEndRing endObservers_;
};

}  // namespace GENAPI_NAMESPACE
