// How fast pictures may go, learned from the acknowledgements alone.
#pragma once

#include <algorithm>
#include <deque>

#include "loop.h"
#include "protocol.h"

namespace remote {

class Pace {
 public:
  explicit Pace(int mostBitsPerSecond) : most_(mostBitsPerSecond) {}

  void sent(u32 number, std::size_t bytes, Clock::time_point now) {
    onTheWay_.push_back({number, bytes, now});
    bytesOnTheWay_ += bytes;
  }

  void acknowledged(u32 number, Clock::time_point now) {
    if (onTheWay_.empty() || onTheWay_.front().number != number) {
      throw Malformed("an acknowledgement of no picture");
    }
    const auto picture = onTheWay_.front();
    onTheWay_.pop_front();
    bytesOnTheWay_ -= picture.bytes;
    learn(picture, now);
    lastArrival_ = now;
  }

  // What the encoder may use.
  int bitRate() const {
    return static_cast<int>(std::clamp(kShare * carried_, kLeast, std::max<double>(most_, kLeast)));
  }

  // Whether another picture would still be fresh when it arrives.
  bool hasRoom() const {
    const double allowed = (shortest_ + kQueueAllowed).count() * bitRate() / 8;
    return onTheWay_.empty() || (onTheWay_.size() < kMostOnTheWay &&
                                 static_cast<double>(bytesOnTheWay_) < std::max(allowed, kFree));
  }

 private:
  using Seconds = std::chrono::duration<double>;
  struct Sent {
    u32 number;
    std::size_t bytes;
    Clock::time_point at;
  };

  static constexpr double kShare = 0.75;  // of what the line carries
  static constexpr double kLeast = 300'000;
  static constexpr Seconds kQueueAllowed{0.05};
  static constexpr double kFree = 16 * 1024;
  static constexpr std::size_t kMostOnTheWay = 30;
  static constexpr std::size_t kShowsRate = 4 * 1024;  // smaller ones show the delay alone
  static constexpr double kRemembered = 0.5;           // seconds of a busy line

  // A picture begins to pass the narrowest place when the one before it has passed, or when it gets
  // there itself. How long it takes from then on is its size divided by the rate.
  void learn(const Sent& picture, Clock::time_point now) {
    const Seconds underWay = now - picture.at;
    shortest_ = std::min(shortest_, underWay);
    if (picture.bytes < kShowsRate) return;
    const auto passing = std::min<Seconds>(now - lastArrival_, underWay - shortest_);
    busyBytes_ += static_cast<double>(picture.bytes);
    busySeconds_ += std::max(passing.count(), 1e-4);
    const double kept = std::min(1.0, kRemembered / busySeconds_);
    busyBytes_ *= kept;
    busySeconds_ *= kept;
    carried_ = 8 * busyBytes_ / busySeconds_;
  }

  const int most_;
  double carried_ = 4'000'000 / kShare;
  std::deque<Sent> onTheWay_;
  std::size_t bytesOnTheWay_ = 0;
  Clock::time_point lastArrival_{};
  Seconds shortest_{1};  // there and back, with nothing in front
  double busyBytes_ = 0, busySeconds_ = 0;
};

}  // namespace remote
