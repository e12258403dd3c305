#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/linux/h264/bit_budget.h"
#include "platform/linux/h264/block_energy.h"
#include "platform/linux/h264/compression_settings.h"
#include "platform/linux/h264/cost_model.h"

namespace vlm::platform::h264 {

// Chooses each picture's quantiser, and which of the blocks that did not change are refined to it,
// so that the stream keeps to its bit budget and never goes beyond the worst quantiser that is
// allowed, which wins over the rates.
//
// What moves is coded as well as the budget allows. What stays is refined in stages, in as many
// pictures as its bytes need: the part that changed last comes first. A block is left alone when
// its error can't be seen any more.
class QuantiserControl {
 public:
  struct Picture {
    bool keyFrame;
    double seconds;  // presentation time
    YCbCrPicture source;
    // What decoders show before this picture; null when that is nothing.
    const YCbCrPicture* shown;
    // One flag a block: 1 where the picture is as it was. Valid until spend().
    std::span<std::uint8_t> constant;
  };

  // With `lowLatency` no picture is larger than what two frame intervals may carry.
  explicit QuantiserControl(bool lowLatency) : lowLatency_(lowLatency), budget_(lowLatency) {}

  // Clears the flags of the blocks that are refined.
  int quantiserFor(const Picture& picture, const CompressionSettings& settings);
  // Whether there are constant blocks that the encoder has to be shown as decoders show them: those
  // that wait for a later picture, or those that a finer quantiser is not meant for, since it looks
  // at them again.
  bool holdsBack() const;
  // What the picture that was just asked about took.
  void spend(std::size_t bytes);

 private:
  void survey();
  int coarsestStill() const;
  int stage() const;
  bool isSurprise() const;
  bool isCalm() const;
  bool mostMoves() const;
  bool isBusy() const;
  bool isWorthwhile(int finer) const;
  bool mayRefineMeanwhile() const;
  int forNewContent(double budget) const;
  int forMotion(double budget) const;
  int widestStep(double budget) const;
  bool mustWait() const;
  int hold();
  int choose(int stage);
  void refine(double budget);
  void orderCandidates(int above);

  const bool lowLatency_;
  BitBudget budget_;
  CostModel costs_;

  // The quantiser that each block was coded with when it changed or was made finer, 0 when it is as
  // good as can be seen; and the picture in which it changed.
  std::vector<std::uint8_t> coded_;
  std::vector<std::uint32_t> changedIn_;
  std::vector<std::uint8_t> owed_;  // 1 for a block whose change was not shown yet
  bool holds_ = false;              // what changed waits for a later picture
  std::uint32_t pictures_ = 0;
  std::uint32_t lastMotion_ = 0;  // the picture in which anything last changed
  int motionQuantiser_ = 51;      // and its quantiser
  double lastFiner_ = 0;          // when the quantiser last became finer
  double surpriseBytes_ = 0;      // what to keep for something new on the screen
  double usualChange_ = 0;        // blocks that change in a picture where any do, lately

  // The picture in hand.
  Picture picture_{};
  int best_ = 1;
  int worst_ = 51;
  std::size_t changed_ = 0;
  // Blocks that did not change, by what they are coded with.
  std::array<std::size_t, 52> still_{};
  int quantiser_ = 0;
  int quantiserBefore_ = 0;
  DetailHistogram detail_;
  CostModel::Forecast forecast_{};
  std::vector<std::uint32_t> candidates_;
};

}  // namespace vlm::platform::h264
