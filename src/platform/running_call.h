#pragma once

#include <atomic>
#include <thread>

namespace vlm::platform {

// The thread that a call out of the platform runs on right now. What waits for such calls asks
// whether it is made from one: it can't wait for its own end.
class RunningCall {
 public:
  class Scope {
   public:
    explicit Scope(RunningCall& call) : call_(call) { call_.thread_ = std::this_thread::get_id(); }
    ~Scope() { call_.thread_ = std::thread::id(); }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    RunningCall& call_;
  };

  bool isHere() const { return thread_ == std::this_thread::get_id(); }

 private:
  std::atomic<std::thread::id> thread_;
};

}  // namespace vlm::platform
