// Callbacks on node changes.
#pragma once
#include <type_traits>

#include "GenApi/INode.h"
#include "GenApi/Types.h"

namespace GENAPI_NAMESPACE {

class CNodeCallback {
 public:
  CNodeCallback(INode* pNode, ECallbackType CallbackType) : m_pNode(pNode), m_CallbackType(CallbackType) {}
  virtual ~CNodeCallback() = default;
  // Called once inside and once outside the lock; acts only on the type it was made for.
  virtual void operator()(ECallbackType CallbackType) const = 0;
  virtual void Destroy() = 0;
  INode* GetNode() { return m_pNode; }

 protected:
  INode* m_pNode;
  ECallbackType m_CallbackType;
};

template <class Function>
class Function_NodeCallback : public CNodeCallback {
 public:
  Function_NodeCallback(INode* pNode, const Function& function, ECallbackType CallbackType)
      : CNodeCallback(pNode, CallbackType), function_(function) {}
  void operator()(ECallbackType CallbackType) const override {
    if (CallbackType == m_CallbackType) function_(m_pNode);
  }
  void Destroy() override { delete this; }

 private:
  Function function_;
};

template <class Client, class Member>
class Member_NodeCallback : public CNodeCallback {
 public:
  Member_NodeCallback(INode* pNode, Client& client, Member member, ECallbackType CallbackType)
      : CNodeCallback(pNode, CallbackType), client_(client), member_(member) {}
  void operator()(ECallbackType CallbackType) const override {
    if (CallbackType == m_CallbackType) (client_.*member_)(m_pNode);
  }
  void Destroy() override { delete this; }

 private:
  Client& client_;
  Member member_;
};

template <class Function>
CNodeCallback* make_NodeCallback(INode* pNode, const Function& function, ECallbackType CallbackType) {
  // The name of a function is kept as a pointer to it.
  return new Function_NodeCallback<std::decay_t<const Function>>(pNode, function, CallbackType);
}

template <class Client, class Member>
CNodeCallback* make_NodeCallback(INode* pNode, Client& client, Member member, ECallbackType CallbackType) {
  return new Member_NodeCallback<Client, Member>(pNode, client, member, CallbackType);
}

// Registers a function that takes the node; inside the lock.
template <class Function>
CallbackHandleType Register(INode* pNode, const Function& function) {
  return pNode->RegisterCallback(make_NodeCallback(pNode, function, cbPostInsideLock));
}

template <class Client, class Member>
CallbackHandleType Register(INode* pNode, Client& client, Member member,
                            ECallbackType CallbackType = cbPostInsideLock) {
  return pNode->RegisterCallback(make_NodeCallback(pNode, client, member, CallbackType));
}

// Ends a registration wherever it was made; an unknown handle is ignored.
void Deregister(CallbackHandleType hCallback);

}  // namespace GENAPI_NAMESPACE
