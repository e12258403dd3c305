#pragma once

#include <cstddef>
#include <utility>

namespace vlm::platform {

// Adds or drops one reference to an object that the platform counts. Both accept the address of
// any such object, so that an untyped handle of the C boundary can be retained without knowing
// more about it. Null does nothing. Any thread.
void CFRetain(const void* object) noexcept;
void CFRelease(const void* object) noexcept;

// The one strong reference to an object that the platform owns. As large as a pointer: on a
// platform that has such references itself, a Ref is exactly one of them.
template <class T>
class Ref {
 public:
  constexpr Ref() noexcept = default;
  constexpr Ref(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor): null is a Ref
  Ref(const Ref& other) noexcept : object_(other.object_) { CFRetain(object_); }
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ~Ref() { CFRelease(object_); }

  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  // A new reference beside the one that the owner of `object` keeps.
  static Ref retaining(T* object) noexcept {
    CFRetain(object);
    return adopting(object);
  }

  // Takes over a reference that is already counted, such as the one a new object is born with.
  static Ref adopting(T* object) noexcept {
    Ref ref;
    ref.object_ = object;
    return ref;
  }

  T* get() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  T* operator->() const noexcept { return object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  friend bool operator==(const Ref&, const Ref&) noexcept = default;

 private:
  T* object_ = nullptr;
};

}  // namespace vlm::platform
