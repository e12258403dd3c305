#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vlm::bench {

struct WanderSettings {
  std::size_t width = 0;
  std::size_t height = 0;
  int minutes = 20;
  bool lowLatency = false;
  std::uint32_t seed = 1;
  std::string stream{};  // a file for what was encoded; empty for none
};

// A long run of ours on contents that change and stand still, with the bit rate changed at random
// every few seconds. Prints what was found; false when a window of one second went beyond the limit
// or a picture was still not sharp ten seconds after it stood still.
bool wander(const WanderSettings& settings);

}  // namespace vlm::bench
