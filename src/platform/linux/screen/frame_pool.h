#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/linux/x11/rectangle.h"
#include "platform/portable/pixel_buffer.h"

namespace vlm::platform::screen {

// The buffers of one stream. There are never more than the depth: a receiver that keeps them all
// gets no new picture until it gives one back.
class FramePool {
 public:
  struct Frame {
    Ref<CVPixelBuffer> buffer;
    std::uint64_t picture = 0;  // the number of the picture in it; 0 for none
  };

  FramePool(x11::Size picture, std::size_t depth);

  // A frame that no receiver holds, best the one with the latest picture in it; null when the
  // receiver holds them all or there is no memory for another.
  Frame* acquire();
  // The frame with the latest picture, held or not; null before the first one.
  const Frame* latest() const;
  // Makes as if no picture had been made yet.
  void forgetPictures();

 private:
  const x11::Size picture_;
  const std::size_t depth_;
  std::vector<Frame> frames_;
};

}  // namespace vlm::platform::screen
