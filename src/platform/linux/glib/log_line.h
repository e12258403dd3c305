#pragma once

#include <string_view>

namespace vlm::platform::glib {

// Passes a line to the function that the host has set as data "VelmoraMacNative.log" of GLib's
// default main context; writes it to standard error where there is none. Any thread; never throws.
void writeLogLine(std::string_view line) noexcept;

// The same, but only the first time in this process that it is called with this line.
void writeLogLineOnce(std::string_view line) noexcept;

}  // namespace vlm::platform::glib
