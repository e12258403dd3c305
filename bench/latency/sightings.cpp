#include "bench/latency/sightings.h"

#include <algorithm>

#include "bench/support/bar_code.h"
#include "bench/support/clock.h"

namespace vlm::bench {

void Sightings::add(std::span<const std::uint8_t> luma, std::size_t bytesPerRow) {
  const auto now = monotonicNow();
  if (now < start_) return;
  const auto drawn = BarCode::read(luma, bytesPerRow, now);
  const platform::MutexLock lock(mutex_);
  if (!drawn) {
    ++unreadable_;
  } else if (*drawn > last_) {
    // A picture that shows the same clock again came of no change.
    last_ = *drawn;
    milliseconds_.push_back(static_cast<double>(now - *drawn) / 1e6);
  }
}

Latencies Sightings::summary() const {
  const platform::MutexLock lock(mutex_);
  auto sorted = milliseconds_;
  std::sort(sorted.begin(), sorted.end());
  if (sorted.empty()) return {0, 0, 0, unreadable_};
  return {sorted[sorted.size() / 2], sorted[sorted.size() * 95 / 100], sorted.size(), unreadable_};
}

}  // namespace vlm::bench
