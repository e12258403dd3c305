#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "e2e/frame_recorder.h"

// Colours at single places of captured frames.
namespace vlm::test {

inline std::uint8_t lumaAt(const Frame& frame, int x, int y) {
  return frame.pixels.at(static_cast<std::size_t>(y) * frame.width + x);
}

// The luma that a colour of the canvas comes out with.
inline int lumaOf(std::uint32_t color) {
  const double red = (color >> 16) & 0xFF, green = (color >> 8) & 0xFF, blue = color & 0xFF;
  return static_cast<int>(16.5 + (65.738 * red + 129.057 * green + 25.064 * blue) / 256);
}

struct Spot {
  int x;
  int y;
  std::uint32_t color;
};

// Waits until the latest frame shows every spot in its colour, and says which one it does not.
inline void expectShown(FrameRecorder& recorder, const char* what, const std::vector<Spot>& spots) {
  const auto isShown = [](const Frame& frame, const Spot& spot) {
    return std::abs(lumaAt(frame, spot.x, spot.y) - lumaOf(spot.color)) <= 2;
  };
  const Frame frame = recorder.waitUntil([&](const Frame& latest) {
    return std::ranges::all_of(spots, [&](const Spot& each) { return isShown(latest, each); });
  });
  ASSERT_GT(frame.width, 0) << what;
  for (const auto& spot : spots) {
    EXPECT_TRUE(isShown(frame, spot)) << what << " at " << spot.x << "," << spot.y;
  }
}

}  // namespace vlm::test
