#include "platform/portable/thread_queue.h"

#include <condition_variable>
#include <deque>
#include <utility>

#include "platform/mutex.h"
#include "platform/portable/semaphore.h"
#include "platform/portable/thread.h"

namespace vlm::platform {
namespace {

// Shared by the queue and its thread, so that either may end first.
struct State {
  Mutex mutex;
  std::condition_variable_any changed;
  std::deque<std::function<void()>> jobs VLM_GUARDED_BY(mutex);
  bool closed VLM_GUARDED_BY(mutex) = false;

  // The next job; an empty one when the queue is closed and everything has run.
  std::function<void()> next() {
    MutexLock lock(mutex);
    while (jobs.empty() && !closed) changed.wait(mutex);
    if (jobs.empty()) return {};
    auto job = std::move(jobs.front());
    jobs.pop_front();
    return job;
  }
};

class ThreadQueue final : public DispatchQueue {
 public:
  explicit ThreadQueue(std::string label)
      : label_(std::move(label)), state_(std::make_shared<State>()) {
    thread_ = Thread(label_.c_str(), [state = state_] {
      while (auto job = state->next()) job();
    });
  }

  ~ThreadQueue() override {
    const MutexLock lock(state_->mutex);
    state_->closed = true;
    state_->changed.notify_one();
  }

  const std::string& label() const override { return label_; }

  void async(std::function<void()> job) override {
    MutexLock lock(state_->mutex);
    state_->jobs.push_back(std::move(job));
    state_->changed.notify_one();
  }

  void sync(const std::function<void()>& job) override {
    ThreadSemaphore done(0);
    async([&] {
      job();
      done.signal();
    });
    done.wait();
  }

 private:
  const std::string label_;
  const std::shared_ptr<State> state_;
  Thread thread_;  // ended after the queue is closed
};

}  // namespace

std::shared_ptr<DispatchQueue> makeThreadQueue(std::string label, DispatchQoS) {
  // Raising a thread's priority takes rights that a desktop process does not have; every queue
  // runs at the process's own.
  return std::make_shared<ThreadQueue>(std::move(label));
}

}  // namespace vlm::platform
