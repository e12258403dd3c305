#include "platform/portable/thread_queue.h"

#include <pthread.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <thread>
#include <utility>

#include "platform/mutex.h"
#include "platform/portable/semaphore.h"

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

void nameThread(std::string label) {
#if defined(__APPLE__)
  pthread_setname_np(label.c_str());
#else
  label.resize(std::min<std::size_t>(label.size(), 15));  // the kernel takes no longer name
  pthread_setname_np(pthread_self(), label.c_str());
#endif
}

class ThreadQueue final : public DispatchQueue {
 public:
  explicit ThreadQueue(std::string label)
      : label_(std::move(label)), state_(std::make_shared<State>()) {
    thread_ = std::thread([state = state_, label = label_] {
      nameThread(label);
      while (auto job = state->next()) job();
    });
  }

  ~ThreadQueue() override {
    {
      MutexLock lock(state_->mutex);
      state_->closed = true;
      state_->changed.notify_one();
    }
    // The last reference can go in a job of this very queue, which then ends after it.
    if (thread_.get_id() == std::this_thread::get_id()) {
      thread_.detach();
    } else {
      thread_.join();
    }
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
  std::thread thread_;
};

}  // namespace

std::shared_ptr<DispatchQueue> makeThreadQueue(std::string label, DispatchQoS) {
  // Raising a thread's priority takes rights that a desktop process does not have; every queue
  // runs at the process's own.
  return std::make_shared<ThreadQueue>(std::move(label));
}

}  // namespace vlm::platform
