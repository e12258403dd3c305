#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "platform/ref.h"

namespace vlm::platform {

// Base of every counted object that the platforms without a reference-counted runtime define. It
// is born with one reference. It must be at offset 0 of what derives from it, since an untyped
// handle is retained through the object's address; makeRef() sees to that.
class Object {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  void retain() const noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  void release() const noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
  // True when the caller's reference is the only one: then no other thread can obtain one.
  bool uniquelyReferenced() const noexcept {
    return references_.load(std::memory_order_acquire) == 1;
  }

 protected:
  virtual ~Object() = default;

 private:
  mutable std::atomic<std::int32_t> references_{1};
};

// A new T behind its first reference.
template <class T, class... Arguments>
Ref<T> makeRef(Arguments&&... arguments) {
  static_assert(std::is_base_of_v<Object, T>);
  auto* object = new T(std::forward<Arguments>(arguments)...);
  // Folds away: the base subobject of single inheritance comes first.
  if (static_cast<void*>(static_cast<Object*>(object)) != static_cast<void*>(object)) {
    __builtin_trap();
  }
  return Ref<T>::adopting(object);
}

}  // namespace vlm::platform
