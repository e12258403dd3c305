#pragma once

#include <cstddef>
#include <deque>
#include <span>

namespace vlm::platform {

// One of the sounds that are mixed: stereo, written at its own pace, and read in blocks at the
// mixer's. A cushion takes up the differences; where the two clocks drift apart, single frames are
// left out or repeated before the cushion runs out or over.
class MixInput {
 public:
  static constexpr std::size_t kChannels = 2;

  void push(std::span<const float> samples);
  // Null samples: so much silence.
  void pushSilence(std::size_t samples);

  // Adds the next block. What there is not is silence, and then the cushion builds up anew.
  void addTo(std::span<float> block);

 private:
  std::size_t frames() const { return samples_.size() / kChannels; }
  bool isPrimed();
  void followDrift();
  void limit();

  static constexpr std::size_t kLeastCushion = 1920;  // 40 ms at 48 kHz

  std::deque<float> samples_;
  std::size_t cushion_ = kLeastCushion;
  bool primed_ = false;
  bool isCushionChosen_ = false;  // for what comes after it ran dry
  int dryBlocks_ = 1000;          // since it ran dry; at first, long ago
  int primedBlocks_ = 0;          // since it was primed
  double meanLevel_ = 0;
  double usualLevel_ = 0;
};

}  // namespace vlm::platform
