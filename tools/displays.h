#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "geometry.h"

namespace vlm::tools {

struct Display {
  std::uint32_t id;
  std::string name;
  Rectangle frame;
};

// The displays that the library captures, the first one first. Fails where there is no X server.
std::vector<Display> listDisplays();

// Fails when there is no such display.
Display displayWithId(std::uint32_t id);

}  // namespace vlm::tools
