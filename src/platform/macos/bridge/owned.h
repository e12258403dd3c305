#pragma once

#import <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace vlm::platform::bridge {

// Owns one Core Foundation reference. Null is allowed.
template <class T>
class Owned {
 public:
  Owned() noexcept = default;
  explicit Owned(T object) noexcept : object_(object) {}
  Owned(Owned&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Owned& operator=(Owned other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Owned() {
    if (object_ != nullptr) ::CFRelease(object_);
  }

  // A new reference beside the one that the owner of `object` keeps.
  static Owned retaining(T object) noexcept {
    if (object != nullptr) ::CFRetain(object);
    return Owned(object);
  }

  T get() const noexcept { return object_; }
  T release() noexcept { return std::exchange(object_, nullptr); }
  // For a function that writes a reference that its caller owns.
  T* out() noexcept { return &object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

 private:
  T object_ = nullptr;
};

}  // namespace vlm::platform::bridge
