#include "platform/linux/h264/cost_model.h"

#include <algorithm>
#include <cmath>

namespace vlm::platform::h264 {
namespace {

// Until pictures have taught better: dense text.
constexpr double kFreshScale = 1;
constexpr double kRefinementScale = 1.6;
constexpr double kMotionBytes = 30;
constexpr int kMotionQuantiser = 32;

// As measured on text, noise and film: a difference spreads over more coefficients than detail
// does.
constexpr float kDetailThreshold = 0.1F;
constexpr float kDifferenceThreshold = 0.5F;

// Pictures of text and of motion halve in so many steps of the quantiser, more or less.
constexpr double kHalving = 8;
// For so many pictures what was seen at a quantiser is good.
constexpr std::uint32_t kMemory = 60;
// The same quantiser at so many times the cost is another scene.
constexpr double kOtherScene = 2;

// A picture that takes more than foretold teaches more than one that takes less.
constexpr double kLearnMore = 0.8;
constexpr double kLearnLess = 0.5;
constexpr double kWidest = 4;  // times the scale that a model begins with, and as many times less

// What moves is learnt from unless so much of a picture is refining.
constexpr double kMostRefining = 0.8;

// Too few bytes teach little: headers weigh in.
constexpr double kFewest = 300;

double adapted(double scale, double ratio, double first) {
  const double weight = ratio > 1 ? kLearnMore : kLearnLess;
  return std::clamp(scale * std::pow(ratio, weight), first / kWidest, first * kWidest);
}

}  // namespace

void DetailHistogram::add(const BlockEnergy& energy) {
  for (const float quarter : energy) {
    if (quarter <= 0) continue;
    const auto place = static_cast<int>(4 * (std::log2(quarter) + 4));
    ++counts_[static_cast<std::size_t>(std::clamp(place, 0, static_cast<int>(kClasses) - 1))];
  }
}

double DetailHistogram::bytes(int quantiser) const {
  double bits = 0;
  for (std::size_t place = 0; place < kClasses; ++place) {
    if (counts_[place] == 0) continue;
    const auto energy = static_cast<float>(std::exp2((static_cast<double>(place) + 0.5) / 4 - 4));
    bits += static_cast<double>(counts_[place]) *
            static_cast<double>(bitsOf(energy, quantiser, kDetailThreshold));
  }
  return bits / 8;
}

CostModel::CostModel() : freshScale_(kFreshScale), refinementScale_(kRefinementScale) {}

bool MotionCost::isKnown(int quantiser) const {
  const auto& seen = seen_[static_cast<std::size_t>(quantiser)];
  return seen.picture != 0 && pictures_ - seen.picture < kMemory;
}

double MotionCost::bytes(int quantiser) const {
  int finer = quantiser;
  int coarser = quantiser;
  while (finer >= 0 && !isKnown(finer)) --finer;
  while (coarser < 52 && !isKnown(coarser)) ++coarser;
  const auto at = [this](int known) { return seen_[static_cast<std::size_t>(known)].bytes; };
  if (finer < 0 && coarser > 51) {
    return kMotionBytes * std::exp2((kMotionQuantiser - quantiser) / kHalving);
  }
  if (finer < 0) return at(coarser) * std::exp2((coarser - quantiser) / kHalving);
  if (coarser > 51) return at(finer) * std::exp2((finer - quantiser) / kHalving);
  if (finer == coarser) return at(finer);
  const double way = static_cast<double>(quantiser - finer) / (coarser - finer);
  return at(finer) * std::pow(at(coarser) / at(finer), way);
}

void MotionCost::learn(double bytes, int quantiser) {
  ++pictures_;
  bytes = std::max(bytes, 0.01);
  auto& seen = seen_[static_cast<std::size_t>(quantiser)];
  if (isKnown(quantiser)) {
    const bool otherScene = bytes > kOtherScene * seen.bytes || bytes * kOtherScene < seen.bytes;
    if (otherScene) seen_.fill({});
    if (!otherScene && bytes < seen.bytes)
      bytes = seen.bytes * std::pow(bytes / seen.bytes, kLearnLess);
  }
  seen = {bytes, pictures_};
  // A finer one never costs less.
  for (int other = 0; other < 52; ++other) {
    auto& known = seen_[static_cast<std::size_t>(other)];
    if (other < quantiser ? known.bytes < bytes : other > quantiser && known.bytes > bytes) {
      known = {};
    }
  }
}

double CostModel::refinement(const BlockEnergy& energy, int quantiser) const {
  float bits = 0;
  for (const float quarter : energy) bits += bitsOf(quarter, quantiser, kDifferenceThreshold);
  return refinementScale_ * static_cast<double>(bits) / 8;
}

void CostModel::learn(const Forecast& forecast, std::size_t changed, int quantiser,
                      std::size_t bytes) {
  const auto took = static_cast<double>(bytes);
  const double expected = forecast.fresh + forecast.motion + forecast.refinement;
  if (expected <= 0 || std::max(took, expected) < kFewest) return;
  const double ratio = took / expected;
  if (forecast.fresh > 0) freshScale_ = adapted(freshScale_, ratio, kFreshScale);
  if (forecast.refinement > expected / 2) {
    refinementScale_ = adapted(refinementScale_, ratio, kRefinementScale);
  }
  if (changed > 0 && forecast.refinement < kMostRefining * expected) {
    const double changes = forecast.fresh + forecast.motion;
    motion_.learn(took * changes / expected / static_cast<double>(changed), quantiser);
  }
}

}  // namespace vlm::platform::h264
