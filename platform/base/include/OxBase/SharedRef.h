// Counted references in C++ to objects that live in interface containers.
//
// A class T that can live in a container derives from enable_shared_from_this<B>, where B is T itself or a base class
// of T that carries the interface, and B names
//   static uint64_t interfaceId()   the id under which the object is found: a fixed one, or one that
//                                   OxRegisterInterface gave; 0 means that it could not be registered;
//   using InterfaceType = ...       the class whose address is answered for that id; left out, it is B.
// make_shared_t<T>(arguments...) creates a T.
//
// Threads: as with std::shared_ptr, different references to one object may be used from different threads at once; one
// and the same reference object may not while a thread changes it.
#ifndef OXBASE_SHAREDREF_H
#define OXBASE_SHAREDREF_H

#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>
#include <utility>

#include "OxBase/Exceptions.h"
#include "OxBase/IDisposableType.h"
#include "OxBase/OxBase.h"

namespace orxBase {

template <class T>
class weak_ref;

// A strong reference: the container, of which it owns one use count, and the object in it.
template <class T>
class shared_ref {
 public:
  shared_ref() noexcept = default;
  shared_ref(std::nullptr_t) noexcept {}

  // Takes over a use count that the caller owns.
  static shared_ref adopt(OxHandle container, T* object) noexcept { return shared_ref(container, object); }

  // Takes a use count of its own. The caller owns one while it calls.
  static shared_ref add(OxHandle container, T* object) noexcept {
    return OxIfaceContainerAddUseCounter(container) < 0 ? shared_ref() : shared_ref(container, object);
  }

  shared_ref(const shared_ref& other) noexcept : container_(other.container_), object_(other.object_) { take(); }
  shared_ref(shared_ref&& other) noexcept
      : container_(std::exchange(other.container_, nullptr)), object_(std::exchange(other.object_, nullptr)) {}

  template <class U, class = std::enable_if_t<std::is_convertible<U*, T*>::value>>
  shared_ref(const shared_ref<U>& other) noexcept : container_(other.container()), object_(other.get()) {
    take();
  }
  template <class U, class = std::enable_if_t<std::is_convertible<U*, T*>::value>>
  shared_ref(shared_ref<U>&& other) noexcept : object_(other.get()) {
    container_ = other.release();
  }

  shared_ref& operator=(shared_ref other) noexcept {
    swap(other);
    return *this;
  }
  ~shared_ref() { reset(); }

  // The object, null for an empty reference.
  T* get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return container_ != nullptr; }

  // The handle; still owned by this reference.
  OxHandle container() const noexcept { return container_; }

  // Hands the handle with its use count to the caller and leaves this reference empty.
  OxHandle release() noexcept {
    object_ = nullptr;
    return std::exchange(container_, nullptr);
  }

  // Gives the use count back; the last one destroys the object before this returns.
  void reset() noexcept {
    object_ = nullptr;
    if (OxHandle container = std::exchange(container_, nullptr)) OxIfaceContainerReleaseUseCounter(container);
  }

  void swap(shared_ref& other) noexcept {
    std::swap(container_, other.container_);
    std::swap(object_, other.object_);
  }

  friend bool operator==(const shared_ref& a, const shared_ref& b) noexcept { return a.container_ == b.container_; }
  friend bool operator!=(const shared_ref& a, const shared_ref& b) noexcept { return a.container_ != b.container_; }

 private:
  shared_ref(OxHandle container, T* object) noexcept : container_(container), object_(object) {}
  void take() noexcept {
    if (container_ != nullptr && OxIfaceContainerAddUseCounter(container_) < 0) release();
  }

  OxHandle container_ = nullptr;
  T* object_ = nullptr;
};

// A weak reference: does not keep the object alive, and knows for certain whether it still is.
template <class T>
class weak_ref {
 public:
  weak_ref() noexcept = default;
  weak_ref(const shared_ref<T>& strong) noexcept : weak_ref(strong.container(), strong.get()) {}
  // Takes a weak count of its own. The caller owns a use count or a weak count while it calls.
  weak_ref(OxHandle container, T* object) noexcept : container_(container), object_(object) { take(); }

  weak_ref(const weak_ref& other) noexcept : weak_ref(other.container_, other.object_) {}
  weak_ref(weak_ref&& other) noexcept
      : container_(std::exchange(other.container_, nullptr)), object_(std::exchange(other.object_, nullptr)) {}
  weak_ref& operator=(weak_ref other) noexcept {
    std::swap(container_, other.container_);
    std::swap(object_, other.object_);
    return *this;
  }
  ~weak_ref() { reset(); }

  // A strong reference, or an empty one when the object is gone or on its way.
  shared_ref<T> lock() const noexcept {
    if (container_ == nullptr || OxIfaceContainerCheckedAddUseCounter(container_) < 0) return {};
    return shared_ref<T>::adopt(container_, object_);
  }

  bool expired() const noexcept { return !lock(); }
  // The handle that is watched, alive or not; null for an empty reference.
  OxHandle container() const noexcept { return container_; }

  void reset() noexcept {
    object_ = nullptr;
    if (OxHandle container = std::exchange(container_, nullptr)) OxIfaceContainerReleaseWeakCounter(container);
  }

 private:
  void take() noexcept {
    if (container_ != nullptr && OxIfaceContainerAddWeakCounter(container_) >= 0) return;
    container_ = nullptr;
    object_ = nullptr;
  }

  OxHandle container_ = nullptr;
  T* object_ = nullptr;
};

namespace detail {

// The class whose address answers for T's interface id.
template <class T, class = void>
struct interface_type {
  using type = T;
};
template <class T>
struct interface_type<T, std::void_t<typename T::InterfaceType>> {
  using type = typename T::InterfaceType;
};

// Whether the container answers the interface with a pointer.
inline bool answersInterface(OxHandle container, uint64_t id) noexcept {
  void* found = nullptr;
  return OxIfaceContainerQuery(container, id, &found) >= 0 && found != nullptr;
}

}  // namespace detail

// Gives an object its weak link to its own container, and answers the container's questions for it.
template <class T>
class enable_shared_from_this : public virtual ORX::IDisposableType {
 public:
  // A new strong reference to this object. Throws bad_weak_ptr while the object is not yet published (in its
  // constructor) or no longer alive (in its destructor).
  shared_ref<T> shared_from_this() {
    if (weakSelf_ == nullptr || OxIfaceContainerCheckedAddUseCounter(weakSelf_) < 0) throw bad_weak_ptr();
    return shared_ref<T>::adopt(weakSelf_, static_cast<T*>(this));
  }

  // A weak reference to this object, empty while it is not yet published.
  weak_ref<T> weak_from_this() noexcept { return weak_ref<T>(weakSelf_, static_cast<T*>(this)); }

  void DestroyInPlace() noexcept override { static_cast<T*>(this)->~T(); }

  int32_t ListInterfaces(ORX::InterfaceEntry* entries, size_t* count) noexcept override {
    if (count == nullptr) return OX_E_INVALID_ARGUMENT;
    if (entries == nullptr) {
      *count = 1;
      return OX_OK;
    }
    if (*count == 0) return OX_E_INVALID_ARGUMENT;
    const uint64_t id = T::interfaceId();
    if (id == 0) return OX_E_OUT_OF_MEMORY;
    using Interface = typename detail::interface_type<T>::type;
    entries[0] = {id, static_cast<Interface*>(static_cast<T*>(this))};
    return OX_OK;
  }

  // Points the weak link at the container in which the object was published. A link to a living container that answers
  // the class's interface is kept. make_shared_t calls it, before anyone else knows the object.
  void linkToContainer(OxHandle container) noexcept {
    if (weakSelf_ != nullptr && OxIfaceContainerCheckedAddUseCounter(weakSelf_) >= 0) {
      const bool answers = detail::answersInterface(weakSelf_, T::interfaceId());
      OxIfaceContainerReleaseUseCounter(weakSelf_);
      if (answers) return;
    }
    if (weakSelf_ == container) return;
    OxIfaceContainerAddWeakCounter(container);
    if (OxHandle former = std::exchange(weakSelf_, container)) OxIfaceContainerReleaseWeakCounter(former);
  }

 protected:
  enable_shared_from_this() noexcept = default;
  // A copy is another object: it gets a link of its own when it is published.
  enable_shared_from_this(const enable_shared_from_this&) noexcept : ORX::IDisposableType() {}
  enable_shared_from_this& operator=(const enable_shared_from_this&) noexcept { return *this; }
  virtual ~enable_shared_from_this() {
    if (weakSelf_ != nullptr) OxIfaceContainerReleaseWeakCounter(weakSelf_);
  }

 private:
  OxHandle weakSelf_ = nullptr;
};

namespace detail {

// Creates a container, builds a T in it from the arguments, publishes it and sets its weak link.
// Throws bad_alloc when the container cannot be created or published for lack of memory, invalid_argument ("Interface
// in ptr present this container") when an interface of the object is already present, exception with the status for any
// other refusal, and whatever T's constructor throws. Nothing leaks then.
template <class T, class... Arguments>
shared_ref<T> make_shared_t(Arguments&&... arguments) {
  static_assert(alignof(T) <= alignof(std::max_align_t), "container storage is aligned to max_align_t");

  void* storage = nullptr;
  const OxHandle container = OxCreatePlacementIfaceContainer(sizeof(T), &storage);
  // Owns the container's first use count from here on, so that every exception gives it back.
  shared_ref<T> reference = shared_ref<T>::adopt(container, static_cast<T*>(storage));
  if (container == nullptr || storage == nullptr) throw bad_alloc();

  T* object = ::new (storage) T(std::forward<Arguments>(arguments)...);
  const int32_t status = OxIfaceContainerAdd(container, static_cast<ORX::IDisposableType*>(object));
  if (status < 0) {
    object->~T();  // not published, so the container does not know it
    if (status == OX_E_INVALID_ARGUMENT) throw invalid_argument("Interface in ptr present this container", status);
    if (status == OX_E_OUT_OF_MEMORY) throw bad_alloc();
    throw exception({}, status);
  }
  object->linkToContainer(container);
  return reference;
}

}  // namespace detail
}  // namespace orxBase

#endif
