// Work for the main loop, on which everything runs but the library's callbacks.
#pragma once

#include <glib-unix.h>

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace remote {

using Job = std::function<void()>;
using Milliseconds = std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

// Repeats a job, on time or when a descriptor is ready, until it goes.
class Source {
 public:
  Source() = default;
  ~Source() { reset(); }
  Source(Source&& other) noexcept : id_(std::exchange(other.id_, 0)) {}
  Source& operator=(Source&& other) noexcept {
    std::swap(id_, other.id_);
    return *this;
  }

  static Source every(Milliseconds interval, Job job) {
    return Source(g_timeout_add_full(
        G_PRIORITY_DEFAULT, static_cast<guint>(interval.count()),
        [](gpointer data) { return run(data); }, new Job(std::move(job)), drop));
  }
  static Source whenReady(int fd, int conditions, Job job) {
    return Source(g_unix_fd_add_full(
        G_PRIORITY_DEFAULT, fd, static_cast<GIOCondition>(conditions),
        [](gint, GIOCondition, gpointer data) { return run(data); }, new Job(std::move(job)),
        drop));
  }

  explicit operator bool() const { return id_ != 0; }
  void reset() {
    if (id_ != 0) g_source_remove(std::exchange(id_, 0));
  }

 private:
  explicit Source(guint id) : id_(id) {}
  static gboolean run(gpointer data) {
    (*static_cast<Job*>(data))();
    return G_SOURCE_CONTINUE;
  }
  static void drop(gpointer data) { delete static_cast<Job*>(data); }

  guint id_ = 0;
};

// Brings jobs to the main loop from any thread. Those that are still on their way when it goes are
// dropped.
class Mailbox {
 public:
  void post(Job job) const {
    g_idle_add_full(G_PRIORITY_DEFAULT, run, new Letter{alive_, std::move(job)}, drop);
  }

 private:
  struct Letter {
    std::weak_ptr<int> receiver;
    Job job;
  };
  static gboolean run(gpointer data) {
    const auto& letter = *static_cast<Letter*>(data);
    if (!letter.receiver.expired()) letter.job();
    return G_SOURCE_REMOVE;
  }
  static void drop(gpointer data) { delete static_cast<Letter*>(data); }

  std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace remote
