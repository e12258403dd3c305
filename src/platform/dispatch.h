#pragma once

#include <functional>
#include <memory>
#include <string>

namespace vlm::platform {

enum class DispatchQoS { userInteractive, userInitiated, standard };

// A serial queue: jobs run one at a time, in the order in which they were submitted, on a thread
// of the platform's choosing. No signal handler of the host runs on that thread.
class DispatchQueue {
 public:
  virtual ~DispatchQueue() = default;
  virtual const std::string& label() const = 0;
  // Submits `job` and returns without waiting. A queue whose last reference goes still runs what
  // was submitted before. Any thread, also from a job of the same queue.
  virtual void async(std::function<void()> job) = 0;
  // Submits `job` and waits until it has run. Never from a job of the same queue.
  virtual void sync(const std::function<void()>& job) = 0;
};

std::shared_ptr<DispatchQueue> dispatch_queue_create(std::string label, DispatchQoS qos);

// The queue whose jobs run on the process's main thread, while the host runs its main loop.
std::shared_ptr<DispatchQueue> dispatch_get_main_queue();

// A counting semaphore. wait() has no time limit; signal() may come from any thread, before or
// after the wait.
class DispatchSemaphore {
 public:
  virtual ~DispatchSemaphore() = default;
  virtual void wait() = 0;
  virtual void signal() = 0;
};

// Shared, since a completion handler may outlive the call that waited for it.
std::shared_ptr<DispatchSemaphore> dispatch_semaphore_create(int count);

}  // namespace vlm::platform
