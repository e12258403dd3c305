#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string_view>

#include "platform/dispatch.h"
#include "platform/linux/h264/frame_encoder.h"
#include "platform/mutex.h"
#include "platform/video_toolbox.h"

namespace vlm::platform::h264 {

// Frames that may wait while one is encoded. More would only add delay.
constexpr std::size_t kMostImages = 3;

// What the session and its codec thread share. Lives until both are done with it.
class EncodingLine {
 public:
  EncodingLine(std::size_t width, std::size_t height, bool lowLatency)
      : encoder_(width, height, lowLatency) {}

  OSStatus setProperty(std::string_view key, const CFValue& value) {
    MutexLock lock(mutex_);
    return applyProperty(settings_, key, value);
  }

  // A place in line stays for a frame that is dropped, so that its handler runs in turn; its
  // image goes at once. The oldest goes, since only the newest is sure to be what the screen shows
  // when it falls still.
  void submit(FrameEncoder::Frame frame, VTCompressionOutputHandler handler) {
    MutexLock lock(mutex_);
    waiting_.push_back({std::move(frame), std::move(handler)});
    if (++images_ <= kMostImages) return;
    auto oldest = waiting_.begin();
    while (!oldest->frame.image) ++oldest;
    oldest->frame.image = nullptr;
    --images_;
    auto next = oldest + 1;
    if (oldest->frame.forceKeyFrame) next->frame.forceKeyFrame = true;
  }

  void prepare() { encoder_.prepare(settings()); }
  // On the codec thread, once for every frame that was submitted.
  void encodeNext();
  // Frames that still wait are dropped.
  void end() {
    MutexLock lock(mutex_);
    images_ = 0;
    for (auto& place : waiting_) place.frame.image = nullptr;
  }

 private:
  struct Place {
    FrameEncoder::Frame frame;
    VTCompressionOutputHandler handler;
  };

  Place next() {
    MutexLock lock(mutex_);
    Place place = std::move(waiting_.front());
    waiting_.pop_front();
    if (place.frame.image) --images_;
    return place;
  }
  CompressionSettings settings() {
    MutexLock lock(mutex_);
    return settings_;
  }

  FrameEncoder encoder_;  // the codec thread's alone

  Mutex mutex_;
  CompressionSettings settings_ VLM_GUARDED_BY(mutex_);
  std::deque<Place> waiting_ VLM_GUARDED_BY(mutex_);
  std::size_t images_ VLM_GUARDED_BY(mutex_) = 0;
};

}  // namespace vlm::platform::h264
