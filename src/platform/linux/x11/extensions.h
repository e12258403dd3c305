#pragma once

#include <xcb/xcb.h>

#include <cstdint>

#include "platform/linux/x11/connection.h"

namespace vlm::platform::x11 {

// The extensions that the platform uses, each with the oldest version that will do.
enum class Extension {
  composite,  // 0.2: windows named as pixmaps
  damage,     // 1.1
  fixes,      // 2.0: regions
  input,      // 2.0: devices
  keyboard,   // 1.0: names of keys
  memory,     // 1.2: memory passed as a file
  randr,      // 1.5: monitors
  record,     // 1.13
  resources,  // 1.2: processes of clients
  shape,      // 1.1
  test,       // 2.2
};

// True when the server has the extension, new enough. It asks the server for the version, which an
// extension wants to be done before it is used at all.
bool supports(xcb_connection_t* connection, Extension extension);
inline bool supports(const Connection& connection, Extension extension) {
  return supports(connection.get(), extension);
}

// The number of the extension's first event; only for one that is supported.
std::uint8_t firstEventOf(xcb_connection_t* connection, Extension extension);
inline std::uint8_t firstEventOf(const Connection& connection, Extension extension) {
  return firstEventOf(connection.get(), extension);
}

}  // namespace vlm::platform::x11
