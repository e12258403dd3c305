#pragma once

#include <atomic>
#include <utility>

namespace vlm::platform::bridge {

// A handler that is called once or not at all: the frameworks do not say whether a frame that they
// refuse has its handler called as well.
template <class Handler>
class SingleAnswer {
 public:
  explicit SingleAnswer(Handler handler) : handler_(std::move(handler)) {}

  template <class... Arguments>
  void give(Arguments&&... arguments) {
    if (!over_.exchange(true)) handler_(std::forward<Arguments>(arguments)...);
  }
  void withdraw() { over_ = true; }

 private:
  const Handler handler_;
  std::atomic<bool> over_ = false;
};

}  // namespace vlm::platform::bridge
