#pragma once

#include <cstdint>
#include <string>

namespace vlm::tools {

// The process that a person named by its id or by the beginning of its application's name; the
// frontmost application for an empty text.
std::int32_t processNamed(const std::string& pidOrPrefix);

// Fails where programs may not watch the desktop and its keys.
void requireDesktop();

// Fails where they may not drive it. A desktop that wants to ask somebody does.
void requireInput();

}  // namespace vlm::tools
