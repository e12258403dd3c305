#include "desktop_target.h"

#include <cstdio>

#include "VelmoraMacNative.h"
#include "failure.h"
#include "whole_number.h"

namespace vlm::tools {

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
  if (vlm_perm_accessibility(false)) return;
  if (!vlm_input_cursor_pos(nullptr, nullptr)) {
    throw Failure("there is no desktop that can be controlled");
  }
  std::fputs("vlm: in a Wayland session this reaches X11 clients only\n", stderr);
}

}  // namespace vlm::tools
