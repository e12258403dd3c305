#include "platform/portable/mix_input.h"

#include <algorithm>

namespace vlm::platform {
namespace {

// Who is silent for longer has paused; for less, the pieces come further apart than was thought.
constexpr int kLateBlocks = 10;
constexpr std::size_t kCushionStep = 480;
constexpr std::size_t kMostCushion = 9600;
// How far the level may go from what it was at first, in frames, and over how many blocks it is
// averaged: pieces that come unevenly are no drift.
constexpr double kTolerance = 480;
constexpr int kAveragedBlocks = 100;
// Beyond this no single frames help.
constexpr std::size_t kMostFrames = 24000;

}  // namespace

void MixInput::push(std::span<const float> samples) {
  samples_.insert(samples_.end(), samples.begin(), samples.end());
  limit();
}

void MixInput::pushSilence(std::size_t samples) {
  samples_.insert(samples_.end(), samples, 0.0F);
  limit();
}

// Samples that are not read are not kept forever.
void MixInput::limit() {
  if (frames() <= kMostFrames) return;
  const auto surplus = (frames() - cushion_) * kChannels;
  samples_.erase(samples_.begin(), samples_.begin() + static_cast<std::ptrdiff_t>(surplus));
  primedBlocks_ = 0;
}

void MixInput::addTo(std::span<float> block) {
  if (!isPrimed()) return;
  followDrift();
  const auto count = std::min(block.size(), samples_.size());
  for (std::size_t i = 0; i < count; ++i) block[i] += samples_[i];
  samples_.erase(samples_.begin(), samples_.begin() + static_cast<std::ptrdiff_t>(count));
  if (count < block.size()) {
    primed_ = false;
    isCushionChosen_ = false;
    dryBlocks_ = 0;
  }
}

bool MixInput::isPrimed() {
  if (primed_) return true;
  ++dryBlocks_;
  if (samples_.empty()) return false;
  if (!isCushionChosen_) {
    const bool hasPaused = dryBlocks_ > kLateBlocks;
    cushion_ = hasPaused ? kLeastCushion : std::min(cushion_ + kCushionStep, kMostCushion);
    isCushionChosen_ = true;
  }
  primed_ = frames() >= cushion_;
  primedBlocks_ = 0;
  return primed_;
}

void MixInput::followDrift() {
  const auto level = static_cast<double>(frames());
  if (primedBlocks_ < kAveragedBlocks) {
    ++primedBlocks_;
    usualLevel_ += (level - usualLevel_) / primedBlocks_;
    meanLevel_ = usualLevel_;
    return;
  }
  meanLevel_ += (level - meanLevel_) / kAveragedBlocks;
  if (samples_.empty()) return;
  if (meanLevel_ - usualLevel_ > kTolerance) {
    samples_.erase(samples_.begin(), samples_.begin() + kChannels);
  } else if (usualLevel_ - meanLevel_ > kTolerance) {
    samples_.insert(samples_.begin(), {samples_[0], samples_[1]});
  }
}

}  // namespace vlm::platform
