#include "platform/linux/h264/bit_budget.h"

#include <algorithm>

namespace vlm::platform::h264 {
namespace {

constexpr double kCapacity = 0.25;  // of a second
constexpr double kLowLatencyFrames = 2;
constexpr double kLongestInterval = 1;  // in seconds; longer ones are pauses
// Of the distance from half full that one picture makes up for.
constexpr double kCorrection = 0.25;
// Shares of what is free. Forecasts err, that of something new the most.
constexpr double kMargin = 0.9;
constexpr double kNewShare = 0.7;
constexpr double kRefiningShare = 0.85;
// Of the bucket.
constexpr double kKept = 0.5;
constexpr double kKeptOfTwoFrames = 0.25;
// Of the limit. What does not fit into a window that holds no more would never fit.
constexpr double kAlmostNothing = 0.1;
constexpr double kLargestReserve = 0.35;
// Pictures come a little early at times. Without this, one a second would share a window with the
// one before every now and then.
constexpr double kJitter = 0.1;  // of an interval

double drainOf(const CompressionSettings& settings) {
  const double average = settings.bitsPerSecond / 8;
  if (settings.limitSeconds <= 0) return average;
  const double ceiling = settings.limitBytes / settings.limitSeconds;
  // A limit below the average leaves room for a burst, too.
  const double atMost = 0.8 * ceiling;
  return average > 0 ? std::min(average, atMost) : atMost;
}

}  // namespace

void BitBudget::setRates(const CompressionSettings& settings) {
  const double rate = drainOf(settings);
  if (rate < rate_) {
    const double ratio = rate / rate_;
    level_ *= ratio;
    sentBytes_ *= ratio;
    for (auto& sent : sent_) sent.bytes *= ratio;
  }
  rate_ = rate;
  limitBytes_ = settings.limitBytes;
  limitSeconds_ = settings.limitSeconds;
}

void BitBudget::advance(double seconds, const CompressionSettings& settings) {
  const double frame = 1 / settings.framesPerSecond;
  // Times that stay or go back say nothing; frames come at the expected rate then.
  double passed = seconds - now_.value_or(seconds - frame);
  if (!(passed > 0)) passed = frame;
  level_ = std::max(level_ - passed * rate_, 0.0);
  setRates(settings);
  // A single pause is no low frame rate.
  interval_ = std::min({passed, now_ ? lastPassed_ : frame, kLongestInterval});
  lastPassed_ = passed;
  now_ = seconds;
  capacity_ = rate_ * (lowLatency_ ? kLowLatencyFrames * frame : std::max(kCapacity, interval_));
  while (!sent_.empty() &&
         (sent_.front().seconds > seconds ||
          seconds - sent_.front().seconds >= limitSeconds_ - kJitter * interval_)) {
    sentBytes_ -= sent_.front().bytes;
    sent_.pop_front();
  }
}

double BitBudget::free() const {
  const double inBucket = capacity_ - level_;
  if (limitSeconds_ <= 0) return std::max(inBucket, 0.0);
  return std::max(std::min(inBucket, limitBytes_ - sentBytes_), 0.0);
}

double BitBudget::ordinary(double every) const {
  const double even = rate_ * interval_ * every + kCorrection * (capacity_ / 2 - level_);
  return std::clamp(even, 0.0, kMargin * free());
}

double BitBudget::atOnce() const {
  return kNewShare * free();
}

double BitBudget::forRefining(bool movedLately, double surprise) const {
  const double kept = movedLately ? (lowLatency_ ? kKeptOfTwoFrames : kKept) * capacity_ : 0;
  const double inBucket = kRefiningShare * (capacity_ - kept - level_);
  double room = kMargin * free();
  if (limitSeconds_ > 0 && surprise < kLargestReserve * limitBytes_) {
    room = std::min(room, limitBytes_ - sentBytes_ - surprise);
  }
  return std::max(std::min(inBucket, room), 0.0);
}

bool BitBudget::isSpent(double bytes) const {
  if (limitSeconds_ <= 0) return false;
  const auto leavesNoRoom = [=, this](double spent) {
    return spent > kAlmostNothing * limitBytes_ && spent + bytes > limitBytes_;
  };
  return leavesNoRoom(sentBytes_) || leavesNoRoom(level_);
}

void BitBudget::spend(double bytes) {
  level_ += bytes;
  if (limitSeconds_ <= 0) return;
  sent_.push_back({*now_, bytes});
  sentBytes_ += bytes;
}

}  // namespace vlm::platform::h264
