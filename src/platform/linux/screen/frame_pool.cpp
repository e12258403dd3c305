#include "platform/linux/screen/frame_pool.h"

#include <algorithm>

namespace vlm::platform::screen {

FramePool::FramePool(x11::Size picture, std::size_t depth)
    : picture_(picture), depth_(std::max<std::size_t>(depth, 1)) {
  frames_.reserve(depth_);  // frames are referred to by address
}

FramePool::Frame* FramePool::acquire() {
  Frame* best = nullptr;
  for (auto& frame : frames_) {
    if (!frame.buffer->uniquelyReferenced()) continue;
    if (best == nullptr || frame.picture > best->picture) best = &frame;
  }
  if (best != nullptr || frames_.size() >= depth_) return best;
  auto buffer = CVPixelBuffer::make(static_cast<std::size_t>(picture_.width),
                                    static_cast<std::size_t>(picture_.height),
                                    kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange);
  if (!buffer) return nullptr;
  frames_.push_back({std::move(buffer), 0});
  return &frames_.back();
}

const FramePool::Frame* FramePool::latest() const {
  const auto latest = std::ranges::max_element(frames_, {}, &Frame::picture);
  return latest == frames_.end() || latest->picture == 0 ? nullptr : &*latest;
}

void FramePool::forgetPictures() {
  for (auto& frame : frames_) frame.picture = 0;
}

}  // namespace vlm::platform::screen
