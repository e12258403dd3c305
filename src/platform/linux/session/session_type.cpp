#include "platform/linux/session/session_type.h"

#include <cstdlib>
#include <string_view>

namespace vlm::platform::session {
namespace {

std::string_view variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::string_view forcedType() {
  return variable("VLM_SESSION_TYPE");
}

}  // namespace

bool isWayland() {
  if (forcedType() == "wayland") return true;
  return !isForcedX11() && !variable("WAYLAND_DISPLAY").empty();
}

bool isForcedX11() {
  return forcedType() == "x11";
}

}  // namespace vlm::platform::session
