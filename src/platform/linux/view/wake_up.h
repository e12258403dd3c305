#pragma once

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <system_error>

namespace vlm::platform::view {

// Wakes a thread that sleeps in poll(). Any number of signals before it looks are one.
class WakeUp {
 public:
  WakeUp() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category());
  }
  ~WakeUp() { close(descriptor_); }
  WakeUp(const WakeUp&) = delete;
  WakeUp& operator=(const WakeUp&) = delete;

  int descriptor() const noexcept { return descriptor_; }
  void signal() const noexcept { eventfd_write(descriptor_, 1); }
  void clear() const noexcept {
    eventfd_t count = 0;
    eventfd_read(descriptor_, &count);
  }

 private:
  const int descriptor_;
};

}  // namespace vlm::platform::view
