#include "main_loop.h"

#include <glib-unix.h>

#include <csignal>
#include <utility>

namespace vlm::tools {
namespace {

struct TimedJob {
  MainLoop& loop;
  MainLoop::Job run;
  bool repeats;
};

gboolean runJob(gpointer data) {
  auto& job = *static_cast<TimedJob*>(data);
  job.loop.guarded(job.run);
  return job.repeats ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

void freeJob(gpointer data) {
  delete static_cast<TimedJob*>(data);
}

void schedule(std::chrono::milliseconds delay, TimedJob job) {
  GSource* source = delay.count() > 0 ? g_timeout_source_new(static_cast<guint>(delay.count()))
                                      : g_idle_source_new();
  g_source_set_priority(source, G_PRIORITY_DEFAULT);
  g_source_set_callback(source, runJob, new TimedJob(std::move(job)), freeJob);
  g_source_attach(source, nullptr);
  g_source_unref(source);
}

gboolean endBySignal(gpointer loop) {
  static_cast<MainLoop*>(loop)->end("interrupted");
  return G_SOURCE_CONTINUE;
}

Source onSignal(int signal, MainLoop& loop) {
  Source source(g_unix_signal_source_new(signal));
  g_source_set_callback(source.get(), endBySignal, &loop, nullptr);
  g_source_attach(source.get(), nullptr);
  return source;
}

}  // namespace

MainLoop::MainLoop() : loop_(g_main_loop_new(nullptr, FALSE)) {}

Ending MainLoop::run() {
  {
    // Before and after, while something is begun or ended, a signal ends the process at once.
    const auto interrupt = onSignal(SIGINT, *this);
    const auto terminate = onSignal(SIGTERM, *this);
    g_main_loop_run(loop_.get());
  }
  return ending_.with([](auto& ending) { return *ending; });
}

void MainLoop::finish(Ending ending) {
  const bool first = ending_.with([&](auto& kept) {
    if (kept) return false;
    kept = std::make_unique<Ending>(std::move(ending));
    return true;
  });
  // A job ends it, since a loop that does not run yet can't be quit.
  if (first) post([this] { g_main_loop_quit(loop_.get()); });
}

void MainLoop::after(std::chrono::milliseconds delay, Job job) {
  schedule(delay, {*this, std::move(job), false});
}

void MainLoop::every(std::chrono::milliseconds interval, Job job) {
  schedule(interval, {*this, std::move(job), true});
}

}  // namespace vlm::tools
