#pragma once

#include <array>
#include <chrono>
#include <cstdint>

namespace vlm::tools {

// Counts durations to a tenth of a millisecond, in the same memory however long a run lasts.
class Latency {
 public:
  void add(std::chrono::nanoseconds duration);

  std::uint64_t count() const { return count_; }
  // The duration in milliseconds that this share (0 to 1) of all durations does not exceed.
  double percentileMs(double share) const;
  double maxMs() const { return maxMs_; }

 private:
  static constexpr double kStepsPerMs = 10;

  // What takes longer than the last step counts there.
  std::array<std::uint32_t, 20'000> steps_{};
  std::uint64_t count_ = 0;
  double maxMs_ = 0;
};

}  // namespace vlm::tools
