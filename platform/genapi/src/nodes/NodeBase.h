// What all nodes share: identity, description data, access mode, callbacks, relations; and the inner operations through
// which nodes read and write each other.
//
// A node is a function of its inputs. It keeps nothing but what its description says; answers, held values and register
// contents are the device's. Public operations (those of INode and the value interfaces) run inside Dispatch::operate.
// Inner operations are called with the lock held and neither take it nor check the node's access mode, which already
// covers its sources.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "GenApi/INode.h"
#include "GenApi/ISelector.h"
#include "GenApi/IValue.h"
#include "nodes/Device.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

// How a value is to be read.
struct Reading {
  // One byte together, so that a reading travels in a register; three would be assembled in memory at every level.
  bool verify : 1 = false;       // check the node's own limits
  bool ignoreCache : 1 = false;  // past every cache of the value chain
  bool asSource : 1 = false;     // through pValue: an enumeration answers with the entry's numeric value
};

class NodeBase : public INode, public ISelector {
 public:
  // `stay` says how long the node's access mode may be remembered.
  NodeBase(Device& device, NodeIndex index, Evaluation::Stay stay = Evaluation::Stay::UntilDropped);
  ~NodeBase() override = default;
  NodeBase(const NodeBase&) = delete;
  NodeBase& operator=(const NodeBase&) = delete;

  // IBase, INode
  EAccessMode GetAccessMode() const override;
  GENICAM_NAMESPACE::gcstring GetName(bool FullQualified) const override;
  ENameSpace GetNameSpace() const override;
  EVisibility GetVisibility() const override;
  void InvalidateNode() override;
  bool IsCachable() const override;
  EYesNo IsAccessModeCacheable() const override;
  ECachingMode GetCachingMode() const override;
  int64_t GetPollingTime() const override;
  GENICAM_NAMESPACE::gcstring GetToolTip() const override;
  GENICAM_NAMESPACE::gcstring GetDescription() const override;
  GENICAM_NAMESPACE::gcstring GetDisplayName() const override;
  GENICAM_NAMESPACE::gcstring GetDeviceName() const override;
  void GetChildren(NodeList_t& Children, ELinkType LinkType) const override;
  void GetParents(NodeList_t& Parents) const override;
  CallbackHandleType RegisterCallback(CNodeCallback* pCallback) override;
  bool DeregisterCallback(CallbackHandleType hCallback) override;
  INodeMap* GetNodeMap() const override;
  GENICAM_NAMESPACE::gcstring GetEventID() const override;
  bool IsStreamable() const override;
  void GetPropertyNames(GENICAM_NAMESPACE::gcstring_vector& PropertyNames) const override;
  bool GetProperty(const GENICAM_NAMESPACE::gcstring& PropertyName, GENICAM_NAMESPACE::gcstring& ValueStr,
                   GENICAM_NAMESPACE::gcstring& AttributeStr) override;
  void ImposeAccessMode(EAccessMode ImposedAccessMode) override;
  void ImposeVisibility(EVisibility ImposedVisibility) override;
  INode* GetAlias() const override;
  INode* GetCastAlias() const override;
  GENICAM_NAMESPACE::gcstring GetDocuURL() const override;
  bool IsDeprecated() const override;
  bool IsFeature() const override;

  // ISelector
  bool IsSelector() const override;
  void GetSelectedFeatures(FeatureList_t& list) const override;
  void GetSelectingFeatures(FeatureList_t& list) const override;

  // --- inner operations ---

  Device& device() const { return device_; }
  NodeIndex index() const { return index_; }
  const Description& description() const { return device_.description; }
  const NodeRecord& record() const { return description().node(index_); }
  std::span<const Property> properties() const { return description().properties(index_); }
  const Property* find(Element element) const { return description().find(index_, element); }
  std::string_view name() const { return record().name(); }
  // "Addressed > ... > ThisNode": how the evaluation under way has come here.
  std::string path() const { return evaluation().path(index_); }
  NodeBase& other(NodeIndex index) const { return device_.nodes.node(index); }
  // What the node's element says: a number, or which node it names; else `otherwise`, or kNoNode.
  int64_t given(Element element, int64_t otherwise) const {
    const Property* property = find(element);
    return property ? property->integer : otherwise;
  }
  NodeIndex target(Element element) const {
    const Property* property = find(element);
    return property ? property->target : kNoNode;
  }
  // The node that the first link of that kind names, or null.
  NodeBase* linked(Element element) const;
  ECachingMode cachingMode() const { return evaluation().cachingMode(index_); }
  bool isUncached() const { return cachingMode() == NoCache; }

  // The access mode, from what is remembered where that is allowed.
  EAccessMode accessMode() const {
    if (defective_) return NI;
    return evaluation().answer<kAccessMode, EAccessMode, NoObjection>(
        index_, false, [this] { return combinedMode(); }, stay_);
  }
  // Throw AccessException with the reason; RuntimeException when the node is defective.
  void requireReadable() const {
    if (!IsReadable(accessMode())) refuseAccess("readable");
  }
  void requireWritable() const {
    if (!IsWritable(accessMode())) refuseAccess("writable");
  }
  [[noreturn]] void refuseAccess(std::string_view attempt) const;
  void requireSound() const {
    if (defective_) refuseDefective();
  }
  [[noreturn]] void refuseDefective() const;

  // What the type itself allows, without guards and what was imposed.
  virtual EAccessMode typeMode() const { return RW; }

  // The value as number, by the rules for links of mixed type. The default refuses: the loader lets no value link point
  // to a node without one.
  virtual int64_t readInteger(Reading how) const;
  virtual double readFloat(Reading how) const;
  virtual void writeInteger(int64_t value, bool verify) const;
  virtual void writeFloat(double value, bool verify) const;
  virtual std::string readText(Reading how) const;
  virtual void writeText(std::string_view value, bool verify) const;
  // Non-zero; for guards.
  virtual bool readTruth() const { return readInteger({}) != 0; }

  // Limits as another node sees them. Nodes without limits of their own leave the asking node its full range.
  virtual bool hasLimits() const { return false; }
  virtual int64_t integerMin() const;
  virtual int64_t integerMax() const;
  virtual int64_t integerIncrement() const { return 1; }
  virtual double floatMin() const;
  virtual double floatMax() const;
  virtual bool hasFloatIncrement() const { return false; }
  virtual double floatIncrement() const;
  virtual bool hasValueSet() const { return false; }
  virtual std::vector<int64_t> integerValueSet(bool bounded) const;
  virtual std::vector<double> floatValueSet(bool bounded) const;
  virtual int64_t textMaxLength() const;
  // The node that the value comes from now; null when it is the node's own.
  virtual const NodeBase* valueSource() const { return nullptr; }
  // How the value is shown: by the node's own elements, by those of its source, or by default.
  std::string_view unit() const;
  ERepresentation representation() const;
  EDisplayNotation displayNotation() const;
  int64_t displayPrecision() const;

  // Puts a question that nobody remembers to another node, which may have to pass it on to a third. Throws
  // LogicalErrorException past kMaxLinkDepth, RuntimeException when the other node is defective.
  template <class Ask>
  auto ask(const NodeBase& source, Ask&& question) const {
    const Evaluation::Frame frame(evaluation(), index_);
    source.requireSound();
    return question(source);
  }

  // What a value means, in words; enumerations name the entry.
  virtual std::string describeValue(int64_t value) const;
  // Nodes related by a link type, each once.
  std::vector<NodeIndex> related(ELinkType type) const;

  // The frames of public operations: a read, which needs a readable node; a write, which needs a writable one when it
  // is verified; and a question that can be asked of every node that is not defective.
  template <class Body>
  auto reading(Body&& body) const {
    return device_.dispatch.operate(index_, [&] {
      requireReadable();
      return body();
    });
  }
  template <class Body>
  void writing(bool verify, Body&& body) const {
    device_.dispatch.operate(index_, [&] {
      Dispatch::requireShallowNesting();
      if (verify)
        requireWritable();
      else
        requireSound();
      body();
    });
  }
  template <class Body>
  auto asking(Body&& body) const {
    return device_.dispatch.operate(index_, [&] {
      requireSound();
      return body();
    });
  }

 protected:
  Evaluation& evaluation() const { return device_.evaluation; }
  // Guards, what was imposed, and the type, put together.
  virtual EAccessMode combinedMode() const;

  // One write of the node: checks, stores, tells what depends on it, and asks pError. `store` may answer whether the
  // node's content is known afterwards.
  template <class Check, class Store>
  void write(bool verify, Check&& check, Store&& store) const {
    const Evaluation::Frame frame(evaluation(), index_);
    requireSound();
    evaluation().countStep(index_);
    if (verify) check();
    bool contentKnown = true;
    if constexpr (std::is_void_v<decltype(store())>)
      store();
    else
      contentKnown = store();
    completeWrite(contentKnown);
    if (verify && hasErrorLinks_) checkErrors();
  }
  template <class Store>
  void write(bool verify, Store&& store) const {
    write(
        verify, [] {}, store);
  }
  // Puts a question that nobody remembers to the node that the value comes from; `otherwise` when it is the node's own.
  template <class Result, class Ask>
  Result askSource(Result otherwise, Ask&& question) const {
    const NodeBase* source = valueSource();
    return source ? ask(*source, question) : otherwise;
  }
  // The answer to IsValueCacheValid of a node with a source.
  bool isValueValid() const;
  // Invalidates the node after `change` has changed what is imposed on it.
  template <class Change>
  void impose(Change&& change) const {
    device_.dispatch.operate(index_, [&] {
      change(device_.state.imposed[index_]);
      device_.state.nodes[index_].marks |= kImposed;
      device_.dispatch.invalidated(index_);
    });
  }

 private:
  void completeWrite(bool contentKnown) const;
  // Throws RuntimeException when a pError enumeration reports an error.
  void checkErrors() const;
  std::string accessModeReason(int depth) const;
  // The element that shows the value; null for the default.
  const Property* presentation(Element element) const;

  // What a node whose access mode leads back to itself answers meanwhile.
  struct NoObjection {
    static constexpr EAccessMode kAnswer = RW;
  };

  Device& device_;
  const NodeIndex index_;
  const bool defective_;
  const Evaluation::Stay stay_;
  bool hasGuards_ = false;
  bool hasErrorLinks_ = false;
  bool isSelector_ = false;
};

// What a caller gave as text, fit to stand in a message of one line.
std::string shownText(std::string_view text);

}  // namespace GENAPI_NAMESPACE
