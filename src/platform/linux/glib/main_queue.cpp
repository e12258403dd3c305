#include "platform/linux/glib/main_queue.h"

#include <glib.h>

#include <deque>
#include <utility>

#include "platform/linux/glib/main_loop_watch.h"
#include "platform/mutex.h"
#include "platform/portable/semaphore.h"

namespace vlm::platform::glib {
namespace {

using Job = std::function<void()>;

// The default main context, which the process's first thread iterates. The jobs are in a
// list of ours and each source only says that one of them is due: so what a job refers to passes
// from thread to thread under a lock of this library, which the thread sanitizer can follow.
class MainQueue final : public DispatchQueue {
 public:
  const std::string& label() const override { return label_; }

  void async(Job job) override {
    {
      const MutexLock lock(mutex_);
      jobs_.push_back(std::move(job));
    }
    MainLoopWatch::shared().expect();
    // An idle source of the usual priority keeps jobs in order and behind nothing but the host's
    // own events. Invoking the context instead may run the job on this very thread.
    GSource* source = g_idle_source_new();
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_set_callback(source, runNext, nullptr, nullptr);
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
  static gboolean runNext(gpointer);

  Job take() {
    const MutexLock lock(mutex_);
    Job job = std::move(jobs_.front());
    jobs_.pop_front();
    return job;
  }

  const std::string label_ = "main";

  Mutex mutex_;
  std::deque<Job> jobs_ VLM_GUARDED_BY(mutex_);
};

// Never ended: who is called while the process ends may still post.
const std::shared_ptr<MainQueue>& shared() {
  static const auto* const queue = new std::shared_ptr<MainQueue>(std::make_shared<MainQueue>());
  return *queue;
}

gboolean MainQueue::runNext(gpointer) {
  MainLoopWatch::shared().served();
  shared()->take()();
  return G_SOURCE_REMOVE;
}

}  // namespace

std::shared_ptr<DispatchQueue> mainQueue() {
  return shared();
}

}  // namespace vlm::platform::glib
