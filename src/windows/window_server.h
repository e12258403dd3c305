#pragma once

#include <cstdint>
#include <optional>

#include "platform/cf_value.h"
#include "platform/core_graphics.h"

// How this family reads the dictionaries of the window server.
namespace vlm::windows {

// The bounds of a window: a dictionary of numbers in which a missing one counts as 0. Nothing when
// there is no such dictionary.
std::optional<platform::CGRect> windowBounds(const platform::CFValue& window);

// The integer under `key` when it is one and fits, else nothing.
template <class Integer>
std::optional<Integer> integerEntry(const platform::CFValue& window, std::string_view key) {
  const auto* entry = window.find(key);
  const auto* number = entry ? entry->as<std::int64_t>() : nullptr;
  if (number == nullptr || static_cast<std::int64_t>(static_cast<Integer>(*number)) != *number) {
    return std::nullopt;
  }
  return static_cast<Integer>(*number);
}

}  // namespace vlm::windows
