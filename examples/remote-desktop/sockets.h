// TCP through GIO, which reads addresses and names. All throw std::runtime_error.
#pragma once

#include <gio/gio.h>

#include <stdexcept>
#include <string>

#include "owner.h"

namespace remote {

template <class Type>
using Object = Owner<Type, g_object_unref>;
using Socket = Object<GSocket>;

inline void raise(GError* error) {
  if (error == nullptr) return;
  const std::string text = error->message;
  g_error_free(error);
  throw std::runtime_error(text);
}

// The first address of "HOST:PORT"; IPv6 numbers are in brackets.
inline Object<GSocketAddress> lookUp(const std::string& address) {
  GError* error = nullptr;
  const Object<GSocketConnectable> named(g_network_address_parse(address.c_str(), 0, &error));
  raise(error);
  const Object<GSocketAddressEnumerator> all(g_socket_connectable_enumerate(named.get()));
  Object<GSocketAddress> found(g_socket_address_enumerator_next(all.get(), nullptr, &error));
  raise(error);
  if (!found) throw std::runtime_error("no such host: " + address);
  return found;
}

inline std::string nameOf(GSocketAddress* address) {
  const Owner<char, g_free> text(g_socket_connectable_to_string(G_SOCKET_CONNECTABLE(address)));
  return text.get();
}

inline Socket socketFor(GSocketAddress* address) {
  GError* error = nullptr;
  Socket made(g_socket_new(g_socket_address_get_family(address), G_SOCKET_TYPE_STREAM,
                           G_SOCKET_PROTOCOL_TCP, &error));
  raise(error);
  g_socket_set_blocking(made.get(), FALSE);
  return made;
}

inline Socket listenAt(const std::string& address) {
  const auto place = lookUp(address);
  auto made = socketFor(place.get());
  GError* error = nullptr;
  g_socket_bind(made.get(), place.get(), TRUE, &error);
  raise(error);
  g_socket_listen(made.get(), &error);
  raise(error);
  return made;
}

// A socket that is connecting; whether it could shows when it is used.
inline Socket connectTo(const std::string& address) {
  const auto place = lookUp(address);
  auto made = socketFor(place.get());
  g_socket_connect(made.get(), place.get(), nullptr, nullptr);
  return made;
}

}  // namespace remote
