#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/linux/h264/compression_settings.h"

namespace vlm::platform::h264 {

// Chooses each picture's quantiser so that the stream keeps to its average bit rate and to the
// limit on any window of time, and never goes beyond the worst quantiser that is allowed, which
// wins over the rates.
//
// What is spent flows into a bucket that drains at the average rate; a bucket that never runs over
// bounds every window by the drain of the window plus its capacity. A picture may take a share of
// what is free. What it will cost is foretold from the number of changed blocks and from what
// such blocks cost lately, the size halving every so many steps of the quantiser.
class QuantiserControl {
 public:
  struct Picture {
    bool keyFrame;
    // One flag a block: 1 where the picture is as it was. Valid until spend().
    std::span<const std::uint8_t> constant;
    double seconds;  // presentation time
  };

  // With `lowLatency` no picture is larger than what two frame intervals may carry, instead of what
  // the limit's window has to spare.
  explicit QuantiserControl(bool lowLatency);

  int quantiserFor(const Picture& picture, const CompressionSettings& settings);
  // What the picture that was just asked about took.
  void spend(std::size_t bytes);

 private:
  static constexpr std::size_t kQuantisers = 52;

  void drain(double bytesPerSecond, double framesPerSecond);
  void survey();
  double foretell(int quantiser) const;
  bool isWorthwhile(int finer, int best) const;
  int affordable(double budget, int best, int worst) const;
  void learn(std::size_t bytes);

  const bool lowLatency_;
  double level_ = 0;  // bytes in the bucket
  std::optional<double> lastSeconds_;
  // What a block costs at quantiser 0, in bytes: one that shows something new, and one of those
  // that change from picture to picture, which is cheaper where things move or only flicker.
  double newBlock_;
  double changedBlock_;
  double usualChange_ = 0;  // blocks that change in a picture, lately

  // The quantiser that each block was coded with when it changed or was made finer.
  std::vector<std::uint8_t> coded_;

  // The picture in hand, how much of it changed, and what it costs to bring the rest of it to each
  // quantiser.
  Picture picture_{};
  double changed_ = 0;
  std::array<double, kQuantisers> refinement_{};
  int quantiser_ = 0;
  int quantiserBefore_ = 0;
};

}  // namespace vlm::platform::h264
