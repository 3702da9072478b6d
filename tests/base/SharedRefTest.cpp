// Counted references and the creation of objects in containers.
#include <gtest/gtest.h>

#include <type_traits>

#include "Probe.h"

namespace {

using orxBase::shared_ref;
using orxBase::detail::make_shared_t;

// The shape of the library's own objects: an abstract interface and a base class that carries the weak link.
class IShape : public virtual ORX::IDisposableType {
 public:
  virtual ~IShape() = default;
  virtual int corners() const = 0;
};
class ShapeBase : public IShape, public orxBase::enable_shared_from_this<ShapeBase> {
 public:
  using InterfaceType = IShape;
  static uint64_t interfaceId() { return 46; }
};
class Triangle : public ShapeBase {
 public:
  explicit Triangle(int& ends) : ends_(ends) {}
  ~Triangle() override { ++ends_; }
  int corners() const override { return 3; }

 private:
  int& ends_;
};

TEST(SharedRef, DerivedObjectIsFoundThroughItsInterfaceAndEndsAsAWhole) {
  int ends = 0;
  {
    const shared_ref<ShapeBase> shape = make_shared_t<Triangle>(ends);
    void* found = nullptr;
    ASSERT_EQ(OxIfaceContainerQuery(shape.container(), 46, &found), OX_OK);
    EXPECT_EQ(static_cast<IShape*>(found)->corners(), 3);
    const shared_ref<ShapeBase> self = shape->shared_from_this();
    EXPECT_EQ(self, shape);
    EXPECT_EQ(self.get(), shape.get());
  }
  EXPECT_EQ(ends, 1);
}

TEST(SharedRef, CopiesMovesAndReleaseKeepTheCountRight) {
  std::atomic<int> ends{0};
  ProbeRef first = makeProbe(ends);
  ProbeRef copy = first;
  ProbeRef moved = std::move(first);
  EXPECT_FALSE(first);
  const ProbeRef& itself = copy;
  copy = itself;
  moved = copy;
  copy.reset();
  EXPECT_EQ(ends, 0);
  const OxHandle handle = moved.release();
  EXPECT_FALSE(moved);
  EXPECT_EQ(ends, 0);
  {
    const ProbeRef added = ProbeRef::add(handle, nullptr);
    const ProbeRef adopted = ProbeRef::adopt(handle, nullptr);
    EXPECT_EQ(added, adopted);
  }
  EXPECT_EQ(ends, 1);
  EXPECT_FALSE(ProbeRef::add(handle, nullptr)) << "a dead handle gives an empty reference";
  EXPECT_FALSE(orxBase::weak_ref<Probe>().lock());
}

TEST(SharedRef, SelfReferenceIsRefusedBeforeAndAfterLife) {
  struct Curious : Probe {
    explicit Curious(std::atomic<int>& ends)
        : Probe(ends, [this] { EXPECT_THROW(shared_from_this(), orxBase::bad_weak_ptr); }) {
      EXPECT_THROW(shared_from_this(), orxBase::bad_weak_ptr);
      EXPECT_EQ(weak_from_this().container(), nullptr);
    }
  };
  std::atomic<int> ends{0};
  make_shared_t<Curious>(ends);
  EXPECT_EQ(ends, 1);
}

TEST(SharedRef, LivingSelfLinkIsKeptAndADeadOneReplaced) {
  std::atomic<int> ends{0};
  ProbeRef first = makeProbe(ends), second = makeProbe(ends);
  first->linkToContainer(second.container());
  EXPECT_EQ(first->weak_from_this().container(), first.container());

  Probe onStack(ends);
  onStack.linkToContainer(first.container());
  const OxHandle former = first.container();
  first.reset();
  onStack.linkToContainer(second.container());
  EXPECT_EQ(onStack.weak_from_this().container(), second.container());
  EXPECT_EQ(OxIfaceContainerReleaseWeakCounter(former), OX_E_INVALID_HANDLE) << "the former link was given back";
}

// Answers the container's question for its interfaces with a status of the test's choice.
class Refused : public Probe {
 public:
  Refused(std::atomic<int>& ends, int32_t answer) : Probe(ends), answer_(answer) {}
  int32_t ListInterfaces(ORX::InterfaceEntry*, size_t*) noexcept override { return answer_; }

 private:
  int32_t answer_;
};

TEST(MakeShared, RefusedPublicationDestroysTheObjectAndThrowsByStatus) {
  const auto fails = [](int32_t answer, const std::type_info& type, const char* text) {
    std::atomic<int> ends{0};
    try {
      make_shared_t<Refused>(ends, answer);
      ADD_FAILURE() << "published";
    } catch (const orxBase::exception& e) {
      EXPECT_EQ(typeid(e), type);
      EXPECT_EQ(e.code(), answer);
      EXPECT_EQ(e.message(), text);
    }
    EXPECT_EQ(ends, 1);
  };
  fails(OX_E_INVALID_ARGUMENT, typeid(orxBase::invalid_argument), "Interface in ptr present this container");
  fails(OX_E_OUT_OF_MEMORY, typeid(orxBase::bad_alloc), "");
  fails(orxBase::resultCode(0x80000013), typeid(orxBase::exception), "");
}

}  // namespace
