#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "VelmoraMacNative.h"
#include "platform/portable/change_map.h"

namespace vlm::test {

// A copy of a captured frame.
struct Frame {
  int width = 0;
  int height = 0;
  std::int64_t ptsNs = 0;
  std::vector<std::uint8_t> luma;    // rows packed
  std::vector<std::uint8_t> chroma;  // rows packed, pairs
  std::shared_ptr<const platform::ChangeMap> changes;
};

// The frame as a PNG file, converted by ffmpeg.
void writePng(const Frame& frame, const std::string& path);
// How far two pictures are apart, by ImageMagick: the root of the mean square, 1 at most. The
// arguments are files or whatever else it takes as an image.
double distance(const std::string& image, const std::string& other);
// The captured frame against what `import` takes from the screen, cropped with `geometry`.
double distanceToScreen(const Frame& frame, const std::string& geometry = "");

// Collects the frames of one capture.
class FrameRecorder {
 public:
  // Keeps that many of the first frames' buffers until release().
  explicit FrameRecorder(std::size_t keep = 0) : keep_(keep) {}
  ~FrameRecorder();

  template <class Start, class... Target>
  bool start(Start function, Target... target) {
    capture_ = function(target..., &FrameRecorder::onFrame, nullptr, this);
    return capture_ != nullptr;
  }
  void* capture() const { return capture_; }
  void stop();

  std::size_t count();
  // Waits for the frame of this index, counted from 0; false when it does not come.
  bool waitFor(std::size_t index);
  // Waits until there is a frame and no other came for a while, and gives the last one.
  Frame last();
  // The latest frame once the condition holds for it, or when it does not within a time.
  Frame waitUntil(const std::function<bool(const Frame&)>& condition);
  Frame at(std::size_t index);
  // Gives back the oldest buffer that is kept.
  void release();

 private:
  static void onFrame(void* pixbuf, std::int32_t width, std::int32_t height, std::int64_t ptsNs,
                      void* user);

  void* capture_ = nullptr;
  const std::size_t keep_;
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::vector<Frame> frames_;
  std::vector<void*> kept_;
};

}  // namespace vlm::test
