// The queues: one thread each, in the order of submission. The main queue keeps its jobs until the
// test runs them.
#include "dispatch/dispatch.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

#define vlm engine
#include "platform/portable/thread.h"
#undef vlm

struct dispatch_object_s {
  using Job = std::pair<void*, dispatch_function_t>;
  std::atomic<int> references = 1;
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<Job> jobs;
  long count = 0;
  bool over = false;
  std::thread thread;

  void serve() {
    std::unique_lock lock(mutex);
    while (true) {
      changed.wait(lock, [&] { return over || !jobs.empty(); });
      if (jobs.empty()) return;
      const auto [context, work] = jobs.front();
      jobs.pop_front();
      lock.unlock();
      work(context);
      lock.lock();
    }
  }
};

namespace standin {

void runMainQueue() {
  auto* const queue = dispatch_get_main_queue();
  std::unique_lock lock(queue->mutex);
  while (!queue->jobs.empty()) {
    const auto [context, work] = queue->jobs.front();
    queue->jobs.pop_front();
    lock.unlock();
    work(context);
    lock.lock();
  }
}

}  // namespace standin

extern "C" {

dispatch_queue_t dispatch_queue_create(const char*, dispatch_queue_attr_t) {
  auto* const queue = new dispatch_object_s;
  // As on a Mac, no signal of the host's comes to a queue.
  const engine::platform::HostSignalsBlocked blocked;
  queue->thread = std::thread([queue] { queue->serve(); });
  return queue;
}
dispatch_queue_attr_t dispatch_queue_attr_make_with_qos_class(dispatch_queue_attr_t attributes,
                                                              qos_class_t, int) {
  return attributes;
}
dispatch_queue_t dispatch_get_main_queue(void) {
  static auto* const queue = new dispatch_object_s;
  return queue;
}
void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work) {
  const std::lock_guard lock(queue->mutex);
  queue->jobs.emplace_back(context, work);
  queue->changed.notify_all();
}
void dispatch_sync_f(dispatch_queue_t queue, void* context, dispatch_function_t work) {
  struct Call {
    void* context;
    dispatch_function_t work;
    dispatch_semaphore_t done;
  } call{context, work, dispatch_semaphore_create(0)};
  dispatch_async_f(queue, &call, [](void* it) {
    auto* const made = static_cast<Call*>(it);
    made->work(made->context);
    dispatch_semaphore_signal(made->done);
  });
  dispatch_semaphore_wait(call.done, DISPATCH_TIME_FOREVER);
  dispatch_release(call.done);
}
void dispatch_retain(dispatch_object_t object) {
  ++object->references;
}
// A queue ends when it has run what was submitted. Not from a job of its own.
void dispatch_release(dispatch_object_t object) {
  if (--object->references > 0) return;
  {
    const std::lock_guard lock(object->mutex);
    object->over = true;
    object->changed.notify_all();
  }
  if (object->thread.joinable()) object->thread.join();
  delete object;
}
dispatch_semaphore_t dispatch_semaphore_create(long value) {
  auto* const semaphore = new dispatch_object_s;
  semaphore->count = value;
  return semaphore;
}
long dispatch_semaphore_wait(dispatch_semaphore_t semaphore, uint64_t) {
  std::unique_lock lock(semaphore->mutex);
  semaphore->changed.wait(lock, [&] { return semaphore->count > 0; });
  --semaphore->count;
  return 0;
}
long dispatch_semaphore_signal(dispatch_semaphore_t semaphore) {
  const std::lock_guard lock(semaphore->mutex);
  ++semaphore->count;
  semaphore->changed.notify_all();
  return 1;
}
}
