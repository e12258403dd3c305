#include "platform/linux/glib/session_bus.h"

#include "platform/portable/thread.h"

namespace vlm::platform::glib {

Object<GDBusConnection> safeSessionBus(GCancellable* cancellable, GError** error) {
  // GIO keeps the threads that it starts here for all later calls.
  const HostSignalsBlocked blocked;
  Object<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, cancellable, error));
  if (bus) g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
  return bus;
}

}  // namespace vlm::platform::glib
