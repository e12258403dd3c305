// The shared side's pictures: captured, encoded as fast as the connection takes them, and sent.
// Only the newest one waits: what it replaces is never encoded. A screen that falls still is
// submitted again until it is sharp.
#pragma once

#include <mutex>

#include "channel.h"
#include "pace.h"
#include "sound.h"
#include "target.h"

namespace remote {

class Pictures {
 public:
  struct Options {
    int fps = 30;
    int mostMegabits = 20;  // a second
    bool sound = true;
  };

  Pictures(Target& target, Channel& channel, const Options& options)
      : channel_(channel), options_(options), pace_(1'000'000 * options.mostMegabits) {
    if (options.sound) sound_ = std::make_unique<SoundSender>(mailbox_, channel);
    capture_ = target.capture(options.fps, onFrame, options.sound ? onSound : nullptr, this);
    clock_ = Source::every(Milliseconds(10), [this] { submit(); });
  }
  ~Pictures() {
    capture_.reset();
    encoder_.reset();
  }
  Pictures(const Pictures&) = delete;
  Pictures& operator=(const Pictures&) = delete;

  void acknowledged(u32 number) {
    pace_.acknowledged(number, Clock::now());
    submit();
  }

  // The viewer shows fewer than it gets: more would only cost both sides time.
  void reported(const Report& report) {
    const auto [visible, shown, passedOver] = report;
    wanted_ = visible != 0;
    // One now and then only came too soon after another.
    if (passedOver > 1 + shown / 4) {
      fps_ = std::max(fps_ * shown / (shown + passedOver), kLeastFps);
    } else {
      fps_ = std::min(fps_ + 1 + fps_ / 4, options_.fps);
    }
  }

  void wantKeyframe() {
    keyframe_ = true;
    repeats_ = 0;
  }

 private:
  static constexpr int kLeastFps = 5;
  static constexpr auto kRepeatAfter = std::chrono::milliseconds(100);
  static constexpr auto kLost = std::chrono::milliseconds(500);
  static constexpr int kMostRepeats = 200;
  static constexpr std::size_t kNothingNew = 500;  // bytes of a picture that changes nothing
  // Two seconds of those: what is new may wait so long for its turn.
  static constexpr int kQuietRepeats = 20;

  static void onFrame(void* pixbuf, std::int32_t width, std::int32_t height, std::int64_t,
                      void* self) {
    auto& pictures = *static_cast<Pictures*>(self);
    const std::lock_guard lock(pictures.mutex_);
    if (!pictures.newest_) pictures.mailbox_.post([&pictures] { pictures.submit(); });
    pictures.newest_ = retained(pixbuf);
    pictures.size_ = {width, height};
  }

  static void onSound(const float* samples, std::int32_t frames, std::int32_t channels,
                      std::int32_t, void* self) {
    static_cast<Pictures*>(self)->sound_->encode(samples, frames, channels);
  }

  static void onEncoded(const u8* data, std::int32_t size, bool keyframe, std::int64_t,
                        void* self) {
    auto& pictures = *static_cast<Pictures*>(self);
    pictures.mailbox_.post(
        [&pictures, keyframe, unit = Bytes(data, data + size)] { pictures.send(unit, keyframe); });
  }

  // Whether a picture may be encoded now. One at a time: the encoder keeps none waiting.
  bool isTime(Clock::time_point now) const {
    const bool isBusy = encoding_ && now - submittedAt_ < kLost;
    // Two milliseconds early, since the capture's own pace is the same.
    const auto interval = std::chrono::milliseconds(1000 / fps_ - 2);
    return wanted_ && !isBusy && pace_.hasRoom() && now - newAt_ >= interval;
  }

  void submit() {
    const auto now = Clock::now();
    if (!isTime(now)) return;
    {
      const std::lock_guard lock(mutex_);
      if (newest_) {
        newAt_ = now;
        last_ = std::move(newest_);
        lastSize_ = size_;
        repeats_ = 0;
        isSharp_ = false;
      } else if (!last_ || !isRepeatDue(now)) {
        return;
      } else {
        ++repeats_;
      }
    }
    if (!encoder_ && !makeEncoder()) return channel_.end("there is no H.264 encoder");
    if (pace_.bitRate() != bitRate_)
      vlm_enc_set_bitrate(encoder_.get(), bitRate_ = pace_.bitRate());
    const auto pts = std::chrono::nanoseconds(now.time_since_epoch()).count();
    submittedAt_ = now;
    encoding_ = vlm_enc_encode(encoder_.get(), last_.get(), pts, keyframe_);
  }

  bool isRepeatDue(Clock::time_point now) const {
    const bool isLost = encoding_ && now - submittedAt_ >= kLost;
    return keyframe_ || isLost ||
           (!isSharp_ && repeats_ < kMostRepeats && now - submittedAt_ >= kRepeatAfter);
  }

  bool makeEncoder() {
    bitRate_ = pace_.bitRate();
    encoder_.reset(vlm_enc_create(lastSize_.first, lastSize_.second, options_.fps, bitRate_, true,
                                  onEncoded, this));
    return encoder_ != nullptr;
  }

  void send(const Bytes& unit, bool keyframe) {
    encoding_ = false;
    if (keyframe) keyframe_ = false;
    quiet_ = repeats_ > 0 && unit.size() <= kNothingNew ? quiet_ + 1 : 0;
    isSharp_ = quiet_ >= kQuietRepeats;
    pace_.sent(++number_, unit.size(), Clock::now());
    channel_.send(Picture{number_, unit});
    submit();
  }

  Channel& channel_;
  const Options options_;
  Pace pace_;
  int fps_ = options_.fps;
  bool wanted_ = true;
  bool keyframe_ = false;  // asked for and not yet made
  bool encoding_ = false;  // one is in the encoder
  bool isSharp_ = false;
  int repeats_ = 0;
  int quiet_ = 0;  // repeats on end that brought nothing new
  int bitRate_ = 0;
  u32 number_ = 0;
  Clock::time_point submittedAt_{}, newAt_{};  // the last picture, and the last that was new
  PixelBuffer last_;
  std::pair<int, int> lastSize_;

  std::mutex mutex_;
  PixelBuffer newest_;        // under mutex_
  std::pair<int, int> size_;  // under mutex_

  Source clock_;
  Mailbox mailbox_;
  std::unique_ptr<SoundSender> sound_;
  EncoderHandle encoder_;
  CaptureHandle capture_;
};

}  // namespace remote
