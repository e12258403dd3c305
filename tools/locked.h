#pragma once

#include <mutex>
#include <utility>

namespace vlm::tools {

// A value that can be reached under its lock only.
template <class T>
class Locked {
 public:
  template <class Use>
  auto with(Use&& use) {
    const std::lock_guard lock(mutex_);
    return std::forward<Use>(use)(value_);
  }

 private:
  std::mutex mutex_;
  T value_;
};

}  // namespace vlm::tools
