#include "platform/linux/glib/descriptor_source.h"

#include <glib-unix.h>

#include <utility>

#include "platform/linux/glib/main_loop_watch.h"

namespace vlm::platform::glib {
namespace {

void releaseSource(gpointer source) {
  CFRelease(source);
}

}  // namespace

gboolean DescriptorSource::dispatch(gint, GIOCondition condition, gpointer self) {
  MainLoopWatch::shared().served();
  g_source_set_ready_time(g_main_current_source(), -1);
  auto& source = *static_cast<DescriptorSource*>(self);
  {
    // What the adding thread made is handed over by a lock that can be seen, beside GLib's own.
    const MutexLock lock(source.mutex_);
    if (source.source_ == nullptr) return G_SOURCE_REMOVE;
  }
  if (source.ready_()) g_source_set_ready_time(g_main_current_source(), 0);
  // A descriptor that only ever reports its end would keep the loop busy.
  return (condition & (G_IO_HUP | G_IO_ERR)) == 0 ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

void DescriptorSource::add() {
  const MutexLock lock(mutex_);
  if (source_ != nullptr) return;
  source_ =
      g_unix_fd_source_new(descriptor_, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR));
  // Once at once: what has been read from the descriptor already is announced by nothing else.
  g_source_set_ready_time(source_, 0);
  MainLoopWatch::shared().expect();
  // The loop keeps the source while it is added: it may be in the middle of running it.
  retain();
  g_source_set_callback(source_, G_SOURCE_FUNC(dispatch), this, releaseSource);
  g_source_attach(source_, nullptr);
}

void DescriptorSource::remove() {
  GSource* source = nullptr;
  {
    const MutexLock lock(mutex_);
    source = std::exchange(source_, nullptr);
  }
  if (source == nullptr) return;
  g_source_destroy(source);
  g_source_unref(source);
}

}  // namespace vlm::platform::glib
