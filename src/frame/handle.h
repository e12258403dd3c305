#pragma once

#include <memory>
#include <utility>

namespace vlm::frame {

// Base of every object that has a handle. The handle is the object's address and owns
// exactly one reference, which the object keeps for it between give() and takeBack().
template <class T>
class HandleObject : public std::enable_shared_from_this<T> {
 public:
  // Makes the handle of a new object.
  static void* give(std::shared_ptr<T> object) {
    T* address = object.get();
    address->handleReference_ = std::move(object);
    return address;
  }

  // A reference for the time of a call; null for a null handle.
  static std::shared_ptr<T> borrow(void* handle) {
    return handle == nullptr ? nullptr : static_cast<T*>(handle)->shared_from_this();
  }

  // Ends the handle and returns the reference that it owned; null for a null handle.
  static std::shared_ptr<T> takeBack(void* handle) {
    return handle == nullptr ? nullptr : std::move(static_cast<T*>(handle)->handleReference_);
  }

 private:
  std::shared_ptr<T> handleReference_;
};

}  // namespace vlm::frame
