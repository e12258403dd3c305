#include "platform/linux/h264/quantiser_control.h"

#include <algorithm>
#include <cmath>

namespace vlm::platform {
namespace {

// Nobody sees a finer one, on text either.
constexpr int kBestQuantiser = 20;
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

// A finer quantiser makes the encoder look at every block again, so it has to be worth it.
constexpr int kWorthwhileStep = 3;
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
  const int worst = settings.worstQuantiser;
  const int best = std::min(kBestQuantiser, worst);
  const auto bucket = bucketFor(settings, lowLatency_);
  if (bucket.drain <= 0) return quantiser_ = best;
  drain(bucket.drain, settings.framesPerSecond);
  const double free = std::max(bucket.capacity - level_, 0.0);
  const int quantiser =
      affordable(free * (picture.keyFrame ? kKeyFrameShare : kShare), best, worst);
  const bool finer = quantiser < quantiserBefore_ && !picture.keyFrame;
  const bool worthwhile = quantiser == best || quantiserBefore_ - quantiser >= kWorthwhileStep;
  return quantiser_ = finer && !worthwhile ? std::min(quantiserBefore_, worst) : quantiser;
}

void QuantiserControl::drain(double bytesPerSecond, double framesPerSecond) {
  // Times that stand still or go back tell nothing; frames come at the expected rate then.
  double passed = picture_.seconds - lastSeconds_.value_or(picture_.seconds);
  if (!(passed > 0)) passed = 1 / framesPerSecond;
  level_ = std::max(level_ - passed * bytesPerSecond, 0.0);
  lastSeconds_ = picture_.seconds;
}

double QuantiserControl::foretell(int quantiser) const {
  const auto blocks = static_cast<double>(picture_.blocks);
  if (picture_.keyFrame) return newBlock_ * blocks * scale(quantiser);
  const auto changed = static_cast<double>(picture_.changedBlocks);
  const bool surprise = changed > kSurprise * usualChange_;
  const double block = surprise ? std::max(newBlock_, changedBlock_) : changedBlock_;
  double bytes = block * changed * scale(quantiser);
  if (quantiser < quantiserBefore_) {
    // All other blocks are brought to the finer quantiser as well.
    bytes += newBlock_ * (blocks - changed) * (scale(quantiser) - scale(quantiserBefore_));
  }
  return bytes;
}

int QuantiserControl::affordable(double budget, int best, int worst) const {
  int quantiser = best;
  while (quantiser < worst && foretell(quantiser) > budget) ++quantiser;
  return quantiser;
}

void QuantiserControl::spend(std::size_t bytes) {
  level_ += static_cast<double>(bytes);
  learn(bytes);
}

void QuantiserControl::learn(std::size_t bytes) {
  const auto cost = static_cast<double>(bytes) / scale(quantiser_);
  const auto changed = static_cast<double>(picture_.changedBlocks);
  const auto blocks = static_cast<double>(picture_.blocks);
  if (picture_.keyFrame) {
    newBlock_ = cost / blocks;
    return;
  }
  usualChange_ += kForgetting * (changed - usualChange_);
  // Too few blocks tell little, and a finer quantiser mixes two costs.
  if (changed < blocks / 100 || quantiser_ < quantiserBefore_) return;
  const double seen = cost / changed;
  changedBlock_ =
      seen > changedBlock_ ? seen : changedBlock_ + kForgetting * (seen - changedBlock_);
}

}  // namespace vlm::platform
