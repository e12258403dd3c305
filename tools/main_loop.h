#pragma once

#include <glib.h>

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <string>

#include "locked.h"

namespace vlm::tools {

struct SourceEnd {
  void operator()(GSource* source) const {
    g_source_destroy(source);
    g_source_unref(source);
  }
};
using Source = std::unique_ptr<GSource, SourceEnd>;

// Why a run of the main loop ended.
struct Ending {
  std::string reason;
  bool failed = false;
};

// The main loop of the process, on which the library counts for its view. It ends when it is asked
// to, or while it runs on SIGINT or SIGTERM.
class MainLoop {
 public:
  using Job = std::function<void()>;

  MainLoop();

  // Runs until the first end() or fail(), which may come before. On the main thread, once.
  Ending run();

  // Any thread. The first one counts.
  void end(std::string reason) { finish({std::move(reason), false}); }
  void fail(std::string reason) { finish({std::move(reason), true}); }

  // Runs a job on the main thread, if run() has not ended by then. Any thread. What the job refers
  // to outlives run().
  void after(std::chrono::milliseconds delay, Job job);
  void post(Job job) { after({}, std::move(job)); }
  void every(std::chrono::milliseconds interval, Job job);

  // For what a callback of the library runs: nothing may be thrown into the library, so a failure
  // ends the loop instead.
  template <class Work>
  void guarded(Work&& work) noexcept {
    try {
      work();
    } catch (const std::exception& error) {
      fail(error.what());
    }
  }

 private:
  struct LoopEnd {
    void operator()(GMainLoop* loop) const { g_main_loop_unref(loop); }
  };

  void finish(Ending ending);

  std::unique_ptr<GMainLoop, LoopEnd> loop_;
  Locked<std::unique_ptr<Ending>> ending_;
};

}  // namespace vlm::tools
