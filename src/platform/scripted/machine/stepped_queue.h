#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "platform/dispatch.h"
#include "platform/mutex.h"

namespace vlm::platform::scripted {

// The jobs of all queues of a machine in the order in which they were submitted. Nothing runs but
// in a step, which a test makes, or a wait that only a pending job can end.
class Stepper {
 public:
  // A serial queue: none of its jobs runs inside another one of them.
  struct Lane {
    std::string label;
    bool isMain = false;
    bool running = false;
  };

  std::shared_ptr<DispatchQueue> makeQueue(std::string label, bool isMain = false);
  std::shared_ptr<DispatchSemaphore> makeSemaphore(int count);

  void submit(std::shared_ptr<Lane> lane, std::function<void()> job) VLM_EXCLUDES(mutex_);
  // Runs the first job that can run. False when there is none.
  bool step() VLM_EXCLUDES(mutex_);
  // The next job after `passing` others comes late: when hurry() is called or only it can end a
  // wait. What follows it on its queue waits for it.
  void delay(int passing) VLM_EXCLUDES(mutex_);
  // True when there was such a job since delay(). From now on there is none.
  bool endDelay() VLM_EXCLUDES(mutex_);
  // Lets the late job run like any other. False when none was late.
  bool hurry() VLM_EXCLUDES(mutex_);
  // Steps until `done`. Ends the process, saying why, when nothing is left that could bring that
  // about: a real machine would hang here.
  void stepUntil(const std::function<bool()>& done, const std::string& what);

  // Which thread the test's own thread acts as between jobs.
  bool onMainThread() const { return onMainThread_; }
  void setOnMainThread(bool onMainThread) { onMainThread_ = onMainThread; }

 private:
  class Turn;
  struct Job {
    std::shared_ptr<Lane> lane;
    std::function<void()> run;
    bool isLate = false;
  };

  Mutex mutex_;
  std::deque<Job> jobs_ VLM_GUARDED_BY(mutex_);
  int untilLate_ VLM_GUARDED_BY(mutex_) = -1;  // jobs; none comes late while this is negative
  bool onMainThread_ = true;
};

}  // namespace vlm::platform::scripted
