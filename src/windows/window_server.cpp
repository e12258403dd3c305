#include "windows/window_server.h"

#include <algorithm>
#include <string_view>

#include "platform/cg_window.h"

namespace vlm::windows {
namespace {

using platform::CFDictionary;
using platform::CFValue;

bool isNumber(const CFValue& value) {
  return value.as<double>() != nullptr || value.as<std::int64_t>() != nullptr;
}

double number(const CFValue& bounds, std::string_view key) {
  const auto* value = bounds.find(key);
  if (value == nullptr) return 0;
  if (const auto* floating = value->as<double>()) return *floating;
  return static_cast<double>(*value->as<std::int64_t>());
}

}  // namespace

std::optional<platform::CGRect> windowBounds(const CFValue& window) {
  const auto* bounds = window.find(platform::kCGWindowBounds);
  const auto* entries = bounds ? bounds->as<CFDictionary>() : nullptr;
  if (entries == nullptr) return std::nullopt;
  if (!std::ranges::all_of(*entries, [](const auto& entry) { return isNumber(entry.second); })) {
    return std::nullopt;
  }
  return platform::CGRect{{number(*bounds, "X"), number(*bounds, "Y")},
                          {number(*bounds, "Width"), number(*bounds, "Height")}};
}

}  // namespace vlm::windows
