#pragma once

#include <functional>
#include <memory>
#include <string>

#include "e2e/codec_streams.h"
#include "platform/portable/pixel_buffer.h"
#include "support/child_process.h"

namespace vlm::test {

// A captured frame, copied.
struct Frame : Picture {
  std::shared_ptr<const platform::ChangeMap> changes;
};

// Collects the frames of one capture.
class FrameRecorder {
 public:
  // Keeps that many of the first frames' buffers until release().
  explicit FrameRecorder(std::size_t keep = 0) : keep_(keep) {}
  ~FrameRecorder() {
    stop();
    while (!kept_.empty()) release();
  }

  template <class Start, class... Target>
  bool start(Start function, Target... target) {
    capture_ = function(target..., &FrameRecorder::onFrame, nullptr, this);
    return capture_ != nullptr;
  }
  void* capture() const { return capture_; }
  void stop() { vlm_capture_stop(std::exchange(capture_, nullptr)); }

  std::size_t count() {
    const std::lock_guard lock(mutex_);
    return frames_.size();
  }
  Frame at(std::size_t index) {
    const std::lock_guard lock(mutex_);
    return frames_.at(index);
  }
  // Waits until there is a frame and no other came for a while, and gives the last one.
  Frame last() {
    using namespace std::chrono_literals;
    std::unique_lock lock(mutex_);
    arrived_.wait_for(lock, 10s, [&] { return !frames_.empty(); });
    std::size_t seen = 0;
    do {
      seen = frames_.size();
    } while (arrived_.wait_for(lock, 400ms, [&] { return frames_.size() > seen; }));
    return frames_.empty() ? Frame{} : frames_.back();
  }
  // The latest frame once the condition holds for it, or when it does not within a time.
  Frame waitUntil(const std::function<bool(const Frame&)>& condition) {
    std::unique_lock lock(mutex_);
    arrived_.wait_for(lock, std::chrono::seconds(10),
                      [&] { return !frames_.empty() && condition(frames_.back()); });
    return frames_.empty() ? Frame{} : frames_.back();
  }
  // Gives back the oldest buffer that is kept.
  void release() {
    const std::lock_guard lock(mutex_);
    if (kept_.empty()) return;
    vlm_pixbuf_release(kept_.front());
    kept_.erase(kept_.begin());
  }

 private:
  static void onFrame(void* pixbuf, std::int32_t width, std::int32_t height, std::int64_t ptsNs,
                      void* user) {
    auto& self = *static_cast<FrameRecorder*>(user);
    const auto& buffer = *static_cast<const platform::CVPixelBuffer*>(pixbuf);
    Frame frame{{width, height, ptsNs, packedPlanes(pixbuf, width, height)}, buffer.changes()};
    const std::lock_guard lock(self.mutex_);
    if (self.frames_.size() < self.keep_) {
      vlm_pixbuf_retain(pixbuf);
      self.kept_.push_back(pixbuf);
    }
    self.frames_.push_back(std::move(frame));
    self.arrived_.notify_all();
  }

  void* capture_ = nullptr;
  const std::size_t keep_;
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::vector<Frame> frames_;
  std::vector<void*> kept_;
};

}  // namespace vlm::test
