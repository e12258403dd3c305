#include "platform/dispatch.h"

#include <glib.h>
#include <unistd.h>

#include <utility>

#include "platform/portable/semaphore.h"
#include "platform/portable/thread_queue.h"

namespace vlm::platform {
namespace {

using Job = std::function<void()>;

gboolean runJob(gpointer data) {
  (*static_cast<Job*>(data))();
  return G_SOURCE_REMOVE;
}

void freeJob(gpointer data) {
  delete static_cast<Job*>(data);
}

// The default main context, whoever iterates it on the process's first thread.
class MainQueue final : public DispatchQueue {
 public:
  const std::string& label() const override { return label_; }

  void async(Job job) override {
    // An idle source of the usual priority keeps jobs in order and behind nothing but the host's
    // own events. Invoking the context instead may run the job on this very thread.
    GSource* source = g_idle_source_new();
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_set_callback(source, runJob, new Job(std::move(job)), freeJob);
    g_source_attach(source, nullptr);
    g_source_unref(source);
  }

  void sync(const Job& job) override {
    ThreadSemaphore done(0);
    async([&] {
      job();
      done.signal();
    });
    done.wait();
  }

 private:
  const std::string label_ = "main";
};

}  // namespace

std::shared_ptr<DispatchQueue> dispatch_queue_create(std::string label, DispatchQoS qos) {
  return makeThreadQueue(std::move(label), qos);
}

std::shared_ptr<DispatchQueue> dispatch_get_main_queue() {
  static const auto queue = std::make_shared<MainQueue>();
  return queue;
}

bool isMainThread() noexcept {
  return gettid() == getpid();
}

std::shared_ptr<DispatchSemaphore> dispatch_semaphore_create(int count) {
  return std::make_shared<ThreadSemaphore>(count);
}

}  // namespace vlm::platform
