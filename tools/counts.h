#pragma once

#include <cstdint>

#include "geometry.h"
#include "latency.h"
#include "locked.h"

namespace vlm::tools {

// What happened to frames and bytes so far.
struct Counts {
  std::uint64_t captured = 0;
  std::uint64_t repeated = 0;  // submitted again while the screen was still
  std::uint64_t refused = 0;   // not accepted by the encoder
  std::uint64_t encoded = 0;
  std::uint64_t keyframes = 0;
  std::uint64_t bytes = 0;
  std::uint64_t undecodable = 0;  // access units that the decoder refused
  std::uint64_t decoded = 0;
  std::uint64_t shown = 0;
  std::uint64_t dropped = 0;  // decoded, but replaced by a newer frame while the view was busy
  Size size;                  // of the last frame
  Latency latency;            // from grab (or reading) to shown
  // When the last captured frame was first submitted again, 0 when it was not: repetitions have no
  // grab that a latency could count from.
  std::int64_t repeatedPts = 0;
};

// The library may take one nanosecond off a time stamp on its way.
inline bool isSameTime(std::int64_t one, std::int64_t other) {
  return one - other <= 1 && other - one <= 1;
}

// Counted on the threads of the library, read on the main thread.
class SharedCounts {
 public:
  template <class Change>
  void change(Change&& change) {
    counts_.with([&](Counts& counts) { change(counts); });
  }
  Counts now() {
    return counts_.with([](const Counts& counts) { return counts; });
  }

 private:
  Locked<Counts> counts_;
};

}  // namespace vlm::tools
