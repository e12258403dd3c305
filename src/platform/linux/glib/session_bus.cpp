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

OwnSessionBus::OwnSessionBus(GCancellable* cancellable, GError** error)
    : cancellable_(G_CANCELLABLE(g_object_ref(cancellable))) {
  const HostSignalsBlocked blocked;
  const std::unique_ptr<char, decltype(&g_free)> address(
      g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, cancellable, error), g_free);
  if (!address) return;
  bus_.reset(g_dbus_connection_new_for_address_sync(
      address.get(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, cancellable, error));
}

OwnSessionBus::~OwnSessionBus() {
  if (bus_) g_dbus_connection_close_sync(bus_.get(), cancellable_.get(), nullptr);
}

}  // namespace vlm::platform::glib
