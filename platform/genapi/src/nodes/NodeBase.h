// What all nodes share: identity, description data, access mode, callbacks, relations; and the inner operations through
// which nodes read and write each other.
//
// Public operations (those of INode and the value interfaces) run inside NodeMap::operate. Inner operations are called
// with the lock held and neither take it nor check the node's access mode, which already covers its sources.
#pragma once
#include <atomic>
#include <string_view>
#include <vector>

#include "GenApi/INode.h"
#include "GenApi/ISelector.h"
#include "GenApi/IValue.h"
#include "description/Description.h"
#include "nodemap/NodeMap.h"

namespace GENAPI_NAMESPACE {

// How a value is to be read.
struct Reading {
  bool verify = false;       // check the node's own limits
  bool ignoreCache = false;  // past every cache of the value chain
  bool asSource = false;     // through pValue: an enumeration answers with the entry's numeric value
};

class NodeBase : public INode, public ISelector {
 public:
  NodeBase(NodeMap& map, NodeIndex index);
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

  NodeMap& map() const { return map_; }
  NodeIndex index() const { return index_; }
  const NodeRecord& record() const { return map_.description().node(index_); }
  std::span<const Property> properties() const { return map_.description().properties(index_); }
  const Property* find(Element element) const { return map_.description().find(index_, element); }
  std::string_view name() const { return record().name(); }
  NodeState& state() const { return map_.state(index_); }
  // The node that the first link of that kind names, or null.
  NodeBase* linked(Element element) const;
  bool isDefective() const { return defective_; }
  // Decided at the first question: it takes the graph of dependencies, which nodes that are only there do without.
  ECachingMode cachingMode() const {
    const uint8_t known = cachingMode_.load(std::memory_order_relaxed);
    return known != kUndecided ? static_cast<ECachingMode>(known) : decideCachingMode();
  }
  bool isUncached() const { return cachingMode() == NoCache; }
  bool isWriteThrough() const { return cachingMode() == WriteThrough; }

  // The access mode, from what is remembered where that is allowed.
  EAccessMode accessMode() {
    const NodeState& mine = state();
    if (!(mine.flags & kHasAccessMode)) return computeAccessMode();
    if (EvaluationStep* asking = map_.evaluation()) asking->noteConsumption();
    return static_cast<EAccessMode>(mine.accessMode);
  }
  // Throw AccessException with the reason; RuntimeException when the node is defective.
  void requireReadable() {
    if (!IsReadable(accessMode())) refuseReading();
  }
  void requireWritable() {
    if (!IsWritable(accessMode())) refuseWriting();
  }
  [[noreturn]] void refuseReading();
  [[noreturn]] void refuseWriting();
  void requireSound() const {
    if (defective_) refuseDefective();
  }
  [[noreturn]] void refuseDefective() const;

  // What the type itself allows, without guards and what was imposed.
  virtual EAccessMode typeMode() { return RW; }

  // The value as number, by the rules for links of mixed type. The default refuses: the loader lets no value link point
  // to a node without one.
  virtual int64_t readInteger(Reading how);
  virtual double readFloat(Reading how);
  virtual void writeInteger(int64_t value, bool verify);
  virtual void writeFloat(double value, bool verify);
  virtual GENICAM_NAMESPACE::gcstring readText(Reading how);
  virtual void writeText(std::string_view value, bool verify);
  // Non-zero; for guards.
  virtual bool readTruth() { return readInteger({}) != 0; }

  // Limits as another node sees them. Nodes without limits of their own leave the asking node its full range.
  virtual bool hasLimits() { return false; }
  virtual int64_t integerMin();
  virtual int64_t integerMax();
  virtual int64_t integerIncrement() { return 1; }
  virtual double floatMin();
  virtual double floatMax();
  virtual bool hasFloatIncrement() { return false; }
  virtual double floatIncrement();
  virtual bool hasValueSet() { return false; }
  virtual std::vector<int64_t> integerValueSet(bool bounded);
  virtual std::vector<double> floatValueSet(bool bounded);
  virtual int64_t textMaxLength();
  virtual std::string_view unit() { return {}; }
  virtual ERepresentation representation() { return PureNumber; }
  virtual EDisplayNotation displayNotation() { return fnAutomatic; }
  virtual int64_t displayPrecision() { return 6; }

  // Puts a question to another node, which may have to pass it on to a third. Throws LogicalErrorException past
  // kMaxLinkDepth, RuntimeException when the other node is defective.
  template <class Question>
  auto ask(NodeBase& other, Question&& question) {
    const EvaluationStep step(map_, *this);
    other.requireSound();
    return question(other);
  }

  // A register's place was dropped or retired.
  virtual void forgetContent() noexcept {}
  virtual void forgetPlace() noexcept {}
  // Whether written content may answer reads of this register.
  virtual bool mayUseWritten() const { return true; }

  // Completes the node's own write after its sources were written: drops and collects what depends on it, then lets the
  // node itself count as valid where its caching mode says so and all of its content is known.
  void completeWrite(bool contentKnown = true);
  // After a verified write: asks each pError enumeration; throws RuntimeException when one reports an error.
  void checkErrors();
  // Nodes related by a link type, each once.
  std::vector<NodeIndex> related(ELinkType type) const;
  // What a value means, in words; enumerations name the entry.
  virtual std::string describeValue(int64_t value) const;

  // The frames of public operations: a read, which needs a readable node; a write, which needs a writable one when it
  // is verified; and a question that can be asked of every node that is not defective.
  template <class Body>
  auto reading(Body&& body) {
    return map_.operate(this, [&] {
      requireReadable();
      return body();
    });
  }
  template <class Body>
  void writing(bool verify, Body&& body) {
    map_.operate(this, [&] {
      NodeMap::requireShallowNesting();
      verify ? requireWritable() : requireSound();
      body();
    });
  }
  template <class Body>
  auto asked(Body&& body) const {
    return map_.operate(const_cast<NodeBase*>(this), [&] {
      requireSound();
      return body();
    });
  }

 protected:
  // Guards, what was imposed, and the type, put together.
  virtual EAccessMode combinedMode();
  // False for nodes whose access mode is asked afresh each time.
  virtual bool keepsAccessMode() const { return true; }

 private:
  [[gnu::noinline]] ECachingMode decideCachingMode() const;
  EAccessMode computeAccessMode();
  std::string accessModeReason(int depth);
  [[noreturn]] void refuse(const char* attempt);

  NodeMap& map_;
  const NodeIndex index_;
  const bool defective_;
  static constexpr uint8_t kUndecided = 0xff;
  mutable std::atomic<uint8_t> cachingMode_{kUndecided};
  bool hasGuards_ = false;
  bool hasErrorLinks_ = false;
  bool isSelector_ = false;
};

// The text with its terminating zero, for the formats of the exception macros.
std::string zeroTerminated(std::string_view text);
// What a caller gave as text, fit to stand in a message of one line.
std::string shownText(std::string_view text);

}  // namespace GENAPI_NAMESPACE
