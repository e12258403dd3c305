#pragma once

#include "platform/linux/glib/handles.h"

namespace vlm::platform::glib {

// The process's connection to the session bus; null and an error when there is none. A bus that
// goes away must not take the host with it, which is what this connection does unless it is told
// otherwise: so whoever uses the bus, GLib on our behalf included, asks for it here first and keeps
// it meanwhile.
Object<GDBusConnection> safeSessionBus(GCancellable* cancellable, GError** error);

}  // namespace vlm::platform::glib
