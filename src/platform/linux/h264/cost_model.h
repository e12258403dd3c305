#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/linux/h264/block_energy.h"

namespace vlm::platform::h264 {

// How much detail the blocks of a picture have, which is known before the first of them is coded.
class DetailHistogram {
 public:
  void clear() { counts_.fill(0); }
  void add(const BlockEnergy& energy);
  // Bytes at a quantiser, to be scaled by what a stream shows.
  double bytes(int quantiser) const;

 private:
  // Four classes for each doubling of the energy.
  static constexpr std::size_t kClasses = 72;
  std::array<std::size_t, kClasses> counts_{};
};

// What a block costs that changes from picture to picture, at each quantiser. Grain shows up all at
// once from one quantiser to the next, so that what was seen at each of them is kept for a while.
class MotionCost {
 public:
  // Bytes of a block.
  double bytes(int quantiser) const;
  void learn(double bytes, int quantiser);
  // Whether it was seen lately.
  bool isKnown(int quantiser) const;

 private:
  struct Seen {
    double bytes = 0;
    std::uint32_t picture = 0;  // 0 for never
  };

  std::array<Seen, 52> seen_{};
  std::uint32_t pictures_ = 0;
};

// What pictures will cost, as learnt from what others cost: blocks that show something new, blocks
// that change from picture to picture, and blocks that are refined. They differ by much and are
// learnt apart.
class CostModel {
 public:
  struct Forecast {
    double fresh = 0;  // bytes of each kind
    double motion = 0;
    double refinement = 0;
  };

  double fresh(const DetailHistogram& detail, int quantiser) const {
    return freshScale_ * detail.bytes(quantiser);
  }
  double motion(std::size_t blocks, int quantiser) const {
    return static_cast<double>(blocks) * motion_.bytes(quantiser);
  }
  bool knowsMotionAt(int quantiser) const { return motion_.isKnown(quantiser); }
  double refinement(const BlockEnergy& energy, int quantiser) const;

  // What a picture took that was foretold so. `changed` blocks were new or moved.
  void learn(const Forecast& forecast, std::size_t changed, int quantiser, std::size_t bytes);

 private:
  double freshScale_;
  double refinementScale_;
  MotionCost motion_;

 public:
  CostModel();
};

}  // namespace vlm::platform::h264
