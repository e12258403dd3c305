#pragma once

#include "platform/linux/glib/handles.h"

namespace vlm::platform::glib {

// The process's connection to the session bus; null and an error when there is none. By default
// this connection ends the process when the bus goes away; here that is switched off. So it is
// taken from here and kept before anything uses the bus, GLib on our behalf included.
Object<GDBusConnection> safeSessionBus(GCancellable* cancellable, GError** error);

// A connection to the session bus that nothing else in the process uses, so that services take its
// owner for a client of its own. It is closed when this goes, if the bus takes that before
// `cancellable` is cancelled.
class OwnSessionBus {
 public:
  // Null and an error when there is no bus.
  OwnSessionBus(GCancellable* cancellable, GError** error);
  ~OwnSessionBus();
  OwnSessionBus(const OwnSessionBus&) = delete;
  OwnSessionBus& operator=(const OwnSessionBus&) = delete;

  GDBusConnection* get() const { return bus_.get(); }
  explicit operator bool() const { return bus_ != nullptr; }

 private:
  const Object<GCancellable> cancellable_;
  Object<GDBusConnection> bus_;
};

}  // namespace vlm::platform::glib
