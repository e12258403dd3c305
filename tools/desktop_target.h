#pragma once

#include <cstdint>
#include <string>

namespace vlm::tools {

// The process that a person named by its id or by the beginning of its application's name; the
// frontmost application for an empty text.
std::int32_t processNamed(const std::string& pidOrPrefix);

// Fails where programs may not drive the desktop or watch its keys.
void requireDesktop();

}  // namespace vlm::tools
