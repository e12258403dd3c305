#include "latency.h"

#include <algorithm>
#include <cmath>

namespace vlm::tools {

void Latency::add(std::chrono::nanoseconds duration) {
  const double ms = std::max(0.0, std::chrono::duration<double, std::milli>(duration).count());
  const auto step = static_cast<std::size_t>(ms * kStepsPerMs);
  ++steps_[std::min(step, steps_.size() - 1)];
  ++count_;
  maxMs_ = std::max(maxMs_, ms);
}

double Latency::percentileMs(double share) const {
  const auto wanted = static_cast<std::uint64_t>(std::ceil(share * static_cast<double>(count_)));
  std::uint64_t seen = 0;
  for (std::size_t step = 0; step < steps_.size(); ++step) {
    seen += steps_[step];
    // The middle of the step, but never more than was measured.
    if (seen >= wanted && seen > 0) {
      return std::min((static_cast<double>(step) + 0.5) / kStepsPerMs, maxMs_);
    }
  }
  return maxMs_;
}

}  // namespace vlm::tools
