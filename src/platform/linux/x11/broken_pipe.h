#pragma once

#include <csignal>
#include <ctime>

namespace vlm::platform::x11 {

// XCB writes to its socket in a way that raises SIGPIPE when the server goes at that very moment,
// and the signal's default is to end the process. While this lives, the calling thread is not
// troubled by it: the write just fails, as XCB expects.
class BrokenPipeGuard {
 public:
  BrokenPipeGuard() noexcept {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    sigset_t pending;
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  ~BrokenPipeGuard() {
    const timespec now{};
    if (!wasPending_) sigtimedwait(&pipe_, nullptr, &now);  // ours, if there is one
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  BrokenPipeGuard(const BrokenPipeGuard&) = delete;
  BrokenPipeGuard& operator=(const BrokenPipeGuard&) = delete;

 private:
  sigset_t pipe_;
  sigset_t before_;
  bool wasPending_;
};

}  // namespace vlm::platform::x11
