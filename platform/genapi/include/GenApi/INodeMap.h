// A loaded description with its nodes.
#pragma once
#include "Base/GCString.h"
#include "Base/GCStringVector.h"
#include "GenApi/Container.h"
#include "GenApi/Synch.h"

namespace GENAPI_NAMESPACE {

class IPort;

class INodeMap {
 public:
  virtual ~INodeMap() = default;
  // All nodes in description order, enumeration entries included. The list is replaced.
  virtual void GetNodes(NodeList_t& Nodes) const = 0;
  // By plain name or with the prefix "Std::" or "Cust::"; null when there is none.
  virtual INode* GetNode(const GENICAM_NAMESPACE::gcstring& Key) const = 0;
  // Drops every cache and fires the callbacks of every node.
  virtual void InvalidateNodes() const = 0;
  // Connects an implementation to a port node; false (and no change) when there is no such port node. Null
  // disconnects. The implementation stays the caller's and must outlive the connection.
  virtual bool Connect(IPort* pPort, const GENICAM_NAMESPACE::gcstring& PortName) const = 0;
  // As above with the port name "Device".
  virtual bool Connect(IPort* pPort) const = 0;
  virtual GENICAM_NAMESPACE::gcstring GetDeviceName() const = 0;
  // Advances the clocks of all polled nodes by milliseconds; fires callbacks of what is due. Negative times are
  // InvalidArgumentException.
  virtual void Poll(int64_t ElapsedTime) = 0;
  virtual CLock& GetLock() const = 0;
  virtual uint64_t GetNumNodes() const = 0;
  // Compiles every formula; one line per defect is added to the list. True when there is none.
  virtual bool ParseSwissKnifes(GENICAM_NAMESPACE::gcstring_vector* pErrorList = nullptr) const = 0;
};

}  // namespace GENAPI_NAMESPACE
