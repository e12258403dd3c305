#include "platform/linux/h264/quantiser_control.h"

#include <algorithm>
#include <cmath>

namespace vlm::platform::h264 {
namespace {

// Nobody sees a finer one, on text either.
constexpr int kFinestUseful = 20;
// So many steps of the quantiser halve a picture of a desktop. Film halves in 6, text in 12.
constexpr double kHalving = 8;
// Dense text, until pictures have told better.
constexpr double kFirstGuess = 500;

// A picture's share of what is free in the bucket. Half leaves room for a forecast that is wrong by
// a factor of two, and settles two frames' worth below the brim. Key frames come alone.
constexpr double kShare = 0.5;
constexpr double kKeyFrameShare = 0.75;
constexpr double kLowLatencyFrames = 2;
// Of a second, where no limit says how much may come at once.
constexpr double kDefaultCapacity = 0.25;

// A finer quantiser makes the encoder look at every block again. That has to be worth it while much
// of the picture moves; a calm one may creep to its best.
constexpr int kWorthwhileStep = 3;
constexpr double kCalm = 0.05;  // of all blocks
// More than so many times the usual change is something new on the screen.
constexpr double kSurprise = 4;
constexpr double kForgetting = 0.3;

double scale(int quantiser) {
  return std::exp2(-quantiser / kHalving);
}

struct Bucket {
  double drain;  // bytes a second
  double capacity;
};

// No drain means that nothing limits the stream.
Bucket bucketFor(const CompressionSettings& settings, bool lowLatency) {
  Bucket bucket{settings.bitsPerSecond / 8, settings.bitsPerSecond / 8 * kDefaultCapacity};
  if (settings.limitSeconds > 0) {
    const double ceiling = settings.limitBytes / settings.limitSeconds;
    // A limit below the average leaves room for a burst, too.
    const double atMost = ceiling * (1 - kDefaultCapacity);
    bucket.drain =
        bucket.drain > 0 ? std::min(bucket.drain, std::max(atMost, 0.8 * ceiling)) : 0.8 * ceiling;
    bucket.capacity = settings.limitBytes - bucket.drain * settings.limitSeconds;
  }
  if (lowLatency) {
    bucket.capacity =
        std::min(bucket.capacity, kLowLatencyFrames * bucket.drain / settings.framesPerSecond);
  }
  return bucket;
}

}  // namespace

QuantiserControl::QuantiserControl(bool lowLatency)
    : lowLatency_(lowLatency), newBlock_(kFirstGuess), changedBlock_(kFirstGuess) {}

int QuantiserControl::quantiserFor(const Picture& picture, const CompressionSettings& settings) {
  picture_ = picture;
  quantiserBefore_ = quantiser_;
  survey();
  const int worst = settings.worstQuantiser;
  const int best = std::min(kFinestUseful, worst);
  const auto bucket = bucketFor(settings, lowLatency_);
  if (bucket.drain <= 0) return quantiser_ = best;
  drain(bucket.drain, settings.framesPerSecond);
  const double free = std::max(bucket.capacity - level_, 0.0);
  const int quantiser =
      affordable(free * (picture.keyFrame ? kKeyFrameShare : kShare), best, worst);
  const bool finer = quantiser < quantiserBefore_ && !picture.keyFrame;
  if (finer && !isWorthwhile(quantiser, best))
    return quantiser_ = std::min(quantiserBefore_, worst);
  return quantiser_ = quantiser;
}

bool QuantiserControl::isWorthwhile(int finer, int best) const {
  return finer == best || quantiserBefore_ - finer >= kWorthwhileStep ||
         changed_ < kCalm * static_cast<double>(picture_.constant.size());
}

void QuantiserControl::survey() {
  coded_.resize(picture_.constant.size());
  std::array<std::size_t, kQuantisers> still{};
  changed_ = 0;
  for (std::size_t block = 0; block < coded_.size(); ++block) {
    if (picture_.constant[block] != 0) {
      ++still[coded_[block]];
    } else {
      ++changed_;
    }
  }
  double coarser = 0;
  double theirCost = 0;
  for (std::size_t quantiser = kQuantisers; quantiser-- > 0;) {
    const double cost = scale(static_cast<int>(quantiser));
    refinement_[quantiser] = newBlock_ * (coarser * cost - theirCost);
    coarser += static_cast<double>(still[quantiser]);
    theirCost += static_cast<double>(still[quantiser]) * cost;
  }
}

void QuantiserControl::drain(double bytesPerSecond, double framesPerSecond) {
  // Times that stand still or go back tell nothing; frames come at the expected rate then.
  double passed = picture_.seconds - lastSeconds_.value_or(picture_.seconds);
  if (!(passed > 0)) passed = 1 / framesPerSecond;
  level_ = std::max(level_ - passed * bytesPerSecond, 0.0);
  lastSeconds_ = picture_.seconds;
}

double QuantiserControl::foretell(int quantiser) const {
  if (picture_.keyFrame) {
    return newBlock_ * static_cast<double>(picture_.constant.size()) * scale(quantiser);
  }
  const bool surprise = changed_ > kSurprise * usualChange_;
  const double block = surprise ? std::max(newBlock_, changedBlock_) : changedBlock_;
  const double bytes = block * changed_ * scale(quantiser);
  // A quantiser that is no finer than the last one leaves the other blocks alone.
  const bool refines = quantiser < quantiserBefore_;
  return refines ? bytes + refinement_[static_cast<std::size_t>(quantiser)] : bytes;
}

int QuantiserControl::affordable(double budget, int best, int worst) const {
  int quantiser = best;
  while (quantiser < worst && foretell(quantiser) > budget) ++quantiser;
  return quantiser;
}

void QuantiserControl::spend(std::size_t bytes) {
  level_ += static_cast<double>(bytes);
  const auto quantiser = static_cast<std::uint8_t>(quantiser_);
  const bool refines = quantiser_ < quantiserBefore_;
  for (std::size_t block = 0; block < coded_.size(); ++block) {
    const bool anew = picture_.keyFrame || picture_.constant[block] == 0;
    if (anew || (refines && quantiser < coded_[block])) coded_[block] = quantiser;
  }
  learn(bytes);
}

void QuantiserControl::learn(std::size_t bytes) {
  const auto cost = static_cast<double>(bytes) / scale(quantiser_);
  const auto blocks = static_cast<double>(picture_.constant.size());
  if (picture_.keyFrame) {
    newBlock_ = cost / blocks;
    return;
  }
  usualChange_ += kForgetting * (changed_ - usualChange_);
  // Too few blocks tell little, and a finer quantiser mixes two costs.
  if (changed_ < blocks / 100 || quantiser_ < quantiserBefore_) return;
  const double seen = cost / changed_;
  changedBlock_ =
      seen > changedBlock_ ? seen : changedBlock_ + kForgetting * (seen - changedBlock_);
}

}  // namespace vlm::platform::h264
