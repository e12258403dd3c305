#include "desktop_target.h"

#include <cstdio>
#include <cstdlib>

#include "VelmoraMacNative.h"
#include "failure.h"
#include "whole_number.h"

namespace vlm::tools {
namespace {

constexpr const char* kNoDesktop = "there is no desktop that can be controlled";

}  // namespace

std::int32_t processNamed(const std::string& pidOrPrefix) {
  if (const auto number = wholeNumber<std::int32_t>(pidOrPrefix)) return *number;
  std::int32_t pid = 0;
  if (pidOrPrefix.empty()) {
    pid = vlm_frontmost_pid();
    if (pid == 0) throw Failure("no application is in front");
    return pid;
  }
  pid = vlm_window_find_pid(pidOrPrefix.c_str());
  if (pid == 0) throw Failure("no running application's name begins with " + pidOrPrefix);
  return pid;
}

void requireDesktop() {
  const char* wayland = std::getenv("WAYLAND_DISPLAY");
  if (wayland != nullptr && *wayland != '\0') {
    std::fputs("vlm: in a Wayland session this reaches X11 clients only\n", stderr);
  } else if (!vlm_perm_accessibility(false)) {
    throw Failure(kNoDesktop);
  }
}

void requireInput() {
  if (!vlm_perm_accessibility(true)) throw Failure(kNoDesktop);
}

}  // namespace vlm::tools
