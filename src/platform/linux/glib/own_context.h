#pragma once

#include <glib.h>

namespace vlm::platform::glib {

// While this lives, what GLib wants to run for the calling thread goes into a context of its own
// and not into the host's. What is left of it is run at the end: in a host that never iterates a
// context it would pile up. Made and ended on one thread.
class OwnContext {
 public:
  OwnContext() : context_(g_main_context_new()) { g_main_context_push_thread_default(context_); }
  ~OwnContext() {
    while (g_main_context_iteration(context_, FALSE) != FALSE) {
    }
    g_main_context_pop_thread_default(context_);
    g_main_context_unref(context_);
  }
  OwnContext(const OwnContext&) = delete;
  OwnContext& operator=(const OwnContext&) = delete;

 private:
  GMainContext* const context_;
};

}  // namespace vlm::platform::glib
