#pragma once

#include <optional>
#include <string>

namespace vlm::frame {

// Copies a text argument of the boundary; nothing for a null one.
inline std::optional<std::string> textIn(const char* text) {
  if (text == nullptr) return std::nullopt;
  return std::string(text);
}

}  // namespace vlm::frame
