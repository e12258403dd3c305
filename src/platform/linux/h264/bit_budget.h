#pragma once

#include <deque>
#include <optional>

#include "platform/linux/h264/compression_settings.h"

namespace vlm::platform::h264 {

// How many bytes the next picture may take, so that the stream keeps to its average bit rate and to
// the limit on any window of time.
//
// What is spent flows into a bucket that drains at the average rate. A bucket that never runs over
// bounds every window by what drains in it plus the bucket's capacity. At low frame rates a bucket
// has to hold what one interval drains, or the average is never reached; the limit is then kept by
// adding up what the last window took.
class BitBudget {
 public:
  // With `lowLatency` the bucket holds two frame intervals of data.
  explicit BitBudget(bool lowLatency) : lowLatency_(lowLatency) {}

  // Goes on to the time of the next picture. New rates count from there: what was sent at a higher
  // rate weighs as much time as it took then.
  void advance(double seconds, const CompressionSettings& settings);
  // Nothing limits the stream.
  bool isUnlimited() const { return rate_ <= 0; }
  // Seconds between pictures, lately.
  double interval() const { return interval_; }

  // For a picture like those before, of which one comes every so many: keeps the bucket half full.
  double ordinary(double every) const;
  // For a picture that shows something new.
  double atOnce() const;
  // For a picture that only refines what is shown. It leaves room for what moves, and in the window
  // for something new that takes as much as `surprise`.
  double forRefining(bool movedLately, double surprise) const;

  // Whether so much can only go beyond the limit before some time has passed.
  bool isSpent(double bytes) const;

  void spend(double bytes);

 private:
  struct Sent {
    double seconds;
    double bytes;
  };

  void setRates(const CompressionSettings& settings);
  double free() const;

  const bool lowLatency_;
  double rate_ = 0;  // bytes a second
  double limitBytes_ = 0;
  double limitSeconds_ = 0;
  double capacity_ = 0;
  double level_ = 0;
  double interval_ = 0;    // between pictures, lately
  double lastPassed_ = 0;  // between the last two
  std::optional<double> now_;
  // In the last window of time.
  std::deque<Sent> sent_;
  double sentBytes_ = 0;
};

}  // namespace vlm::platform::h264
