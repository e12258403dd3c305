#pragma once

#include <cmath>
#include <concepts>
#include <limits>

namespace vlm::platform {

// The whole part of a number; the nearest integer where it does not fit, 0 where it is none.
template <std::integral Integer>
Integer truncated(double value) noexcept {
  using Limits = std::numeric_limits<Integer>;
  if (std::isnan(value)) return 0;
  // The largest integer of 64 bits is no double: as a double it is the first that does not fit.
  if (value >= static_cast<double>(Limits::max())) return Limits::max();
  if (value <= static_cast<double>(Limits::min())) return Limits::min();
  return static_cast<Integer>(value);
}

}  // namespace vlm::platform
