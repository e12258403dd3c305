#pragma once

#import <Foundation/Foundation.h>
#include <utility>

namespace vlm::platform::bridge {

// Owns one reference to an Objective-C object. The sources are compiled without automatic
// reference counting, which not every compiler of theirs has.
template <class T>
class Objc {
 public:
  Objc() noexcept = default;
  Objc(const Objc& other) noexcept : object_([other.object_ retain]) {}
  Objc(Objc&& other) noexcept : object_(std::exchange(other.object_, nil)) {}
  Objc& operator=(Objc other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Objc() { [object_ release]; }

  // A new reference beside the one that the owner of `object` keeps.
  static Objc retaining(T* object) noexcept { return adopting([object retain]); }
  // Takes over the reference that an object is born with.
  static Objc adopting(T* object) noexcept {
    Objc result;
    result.object_ = object;
    return result;
  }

  T* get() const noexcept { return object_; }
  T* release() noexcept { return std::exchange(object_, nil); }
  explicit operator bool() const noexcept { return object_ != nil; }

 private:
  T* object_ = nil;
};

}  // namespace vlm::platform::bridge
