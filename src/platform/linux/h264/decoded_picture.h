#pragma once

#include <cstddef>
#include <vector>

#include "platform/linux/media/libav.h"
#include "platform/portable/pixel_buffer.h"

namespace vlm::platform::h264 {

// Pixel buffers that are used again when no caller holds them any more. What callers keep is
// theirs; the pool holds no more than a few.
class PixelBufferPool {
 public:
  // Undefined contents; null when memory is short.
  Ref<CVPixelBuffer> take(std::size_t width, std::size_t height, OSType format);

 private:
  std::vector<Ref<CVPixelBuffer>> buffers_;
};

// Turns decoded pictures into pixel buffers of one format, '420v' or 'BGRA': by the stream's matrix
// and range where it states them, else by BT.601 in video range. '420v' keeps the stream's matrix.
class PictureConverter {
 public:
  explicit PictureConverter(OSType format) : format_(format) {}

  // Null when memory is short or the picture can't be converted.
  Ref<CVPixelBuffer> convert(const AVFrame& picture);

 private:
  bool write(const AVFrame& picture, const CVPixelBuffer& image);

  const OSType format_;
  PixelBufferPool pool_;
  // What the scaler was made for.
  struct ScalerInput {
    int width = 0;
    int height = 0;
    AVPixelFormat format = AV_PIX_FMT_NONE;
    bool fullRange = false;
    bool operator==(const ScalerInput&) const = default;
  };
  ScalerInput scalerInput_;
  media::SwsContextPtr scaler_;
};

}  // namespace vlm::platform::h264
