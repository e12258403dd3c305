#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/rectangle.h"

namespace vlm::platform::x11 {

struct Monitor {
  std::uint32_t id = 0;  // never 0; the same for the same monitor while the server runs
  Rectangle frame;       // relative to the root
};

// The monitors in use, the primary one first. A server that knows of none has the whole root
// window as one. Empty when the server is lost.
std::vector<Monitor> listMonitors(const Connection& connection);

// What the server calls its outputs, those without a monitor included.
std::vector<std::string> namesOfOutputs(const Connection& connection);

}  // namespace vlm::platform::x11
