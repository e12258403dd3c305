#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/mutex.h"

namespace vlm::bench {

// How long after it was drawn each clock came out at the other end.
struct Latencies {
  double medianMs = 0;
  double p95Ms = 0;
  std::size_t frames = 0;      // that showed a clock not seen before
  std::size_t unreadable = 0;  // frames whose bar code was damaged
};

// Reads the bar codes of decoded pictures as they come, on any thread.
class Sightings {
 public:
  // What comes before the moment `start` is warm-up.
  explicit Sightings(std::int64_t start) : start_(start) {}

  // A decoded picture has come now.
  void add(std::span<const std::uint8_t> luma, std::size_t bytesPerRow) VLM_EXCLUDES(mutex_);

  Latencies summary() const VLM_EXCLUDES(mutex_);

 private:
  const std::int64_t start_;
  mutable platform::Mutex mutex_;
  std::int64_t last_ VLM_GUARDED_BY(mutex_) = 0;
  std::size_t unreadable_ VLM_GUARDED_BY(mutex_) = 0;
  std::vector<double> milliseconds_ VLM_GUARDED_BY(mutex_);
};

}  // namespace vlm::bench
