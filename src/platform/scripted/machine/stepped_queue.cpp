#include "platform/scripted/machine/stepped_queue.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

namespace vlm::platform::scripted {
namespace {

class SteppedQueue final : public DispatchQueue {
 public:
  SteppedQueue(Stepper& stepper, std::string label, bool isMain)
      : stepper_(stepper),
        lane_(std::make_shared<Stepper::Lane>(Stepper::Lane{std::move(label), isMain})) {}

  const std::string& label() const override { return lane_->label; }
  void async(std::function<void()> job) override { stepper_.submit(lane_, std::move(job)); }
  void sync(const std::function<void()>& job) override {
    const auto what = "a synchronous job of queue " + label();
    const auto done = std::make_shared<bool>(false);
    // Where another job ends the wait by an exception, this one must not run without its caller.
    const std::shared_ptr<const std::function<void()>> here(&job, [](const auto*) {});
    stepper_.submit(lane_, [caller = std::weak_ptr(here), done] {
      if (const auto waiting = caller.lock()) (*waiting)();
      *done = true;
    });
    stepper_.stepUntil([done] { return *done; }, what);
  }

 private:
  Stepper& stepper_;
  const std::shared_ptr<Stepper::Lane> lane_;
};

class SteppedSemaphore final : public DispatchSemaphore {
 public:
  SteppedSemaphore(Stepper& stepper, int count) : stepper_(stepper), count_(count) {}
  void wait() override {
    stepper_.stepUntil([this] { return count_ > 0; }, "a semaphore");
    --count_;
  }
  void signal() override { ++count_; }

 private:
  Stepper& stepper_;
  int count_;
};

}  // namespace

std::shared_ptr<DispatchQueue> Stepper::makeQueue(std::string label, bool isMain) {
  return std::make_shared<SteppedQueue>(*this, std::move(label), isMain);
}

std::shared_ptr<DispatchSemaphore> Stepper::makeSemaphore(int count) {
  return std::make_shared<SteppedSemaphore>(*this, count);
}

void Stepper::submit(std::shared_ptr<Lane> lane, std::function<void()> job) {
  const MutexLock lock(mutex_);
  const bool isLate = untilLate_ >= 0 && untilLate_-- == 0;
  jobs_.push_back({std::move(lane), std::move(job), isLate});
}

// The time of one job, however it ends.
class Stepper::Turn {
 public:
  Turn(Lane& lane, bool& onMainThread)
      : lane_(lane), onMainThread_(onMainThread), before_(onMainThread) {
    lane_.running = true;
    onMainThread_ = lane_.isMain;
  }
  ~Turn() {
    onMainThread_ = before_;
    lane_.running = false;
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  Lane& lane_;
  bool& onMainThread_;
  const bool before_;
};

bool Stepper::step() {
  std::optional<Job> job;
  {
    const MutexLock lock(mutex_);
    const Lane* held = nullptr;
    const auto ready = std::ranges::find_if(jobs_, [&](const Job& each) {
      if (each.isLate) held = each.lane.get();
      return !each.lane->running && each.lane.get() != held;
    });
    if (ready == jobs_.end()) return false;
    job = std::move(*ready);
    jobs_.erase(ready);
  }
  const Turn turn(*job->lane, onMainThread_);
  job->run();
  // What the job owns ends where it ran.
  job->run = nullptr;
  return true;
}

void Stepper::delay(int passing) {
  const MutexLock lock(mutex_);
  untilLate_ = passing;
}

bool Stepper::endDelay() {
  const MutexLock lock(mutex_);
  return std::exchange(untilLate_, -1) < 0;
}

bool Stepper::hurry() {
  const MutexLock lock(mutex_);
  const auto late = std::ranges::find(jobs_, true, &Job::isLate);
  if (late == jobs_.end()) return false;
  late->isLate = false;
  return true;
}

void Stepper::stepUntil(const std::function<bool()>& done, const std::string& what) {
  while (!done()) {
    if (step() || hurry()) continue;
    std::fprintf(stderr, "scripted machine: nothing left to run can end the wait for %s\n",
                 what.c_str());
    std::abort();
  }
}

}  // namespace vlm::platform::scripted
