#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/linux/media/ycbcr_encoding.h"
#include "platform/portable/pixel_buffer.h"

namespace vlm::platform::h264 {

// 4:2:0 with interleaved chroma, of even size.
struct YCbCrPicture : PlanesView {
  std::size_t width;
  std::size_t height;
  media::YCbCrEncoding encoding;
};

// Makes pixel buffers into what an encoder takes: in place where possible, else in memory of its
// own: 'BGRA' converted by the BT.601 matrix into video range, and odd sizes, which 4:2:0 does not
// have, extended by repeating the last column and row.
class EncoderInput {
 public:
  struct Source {
    YCbCrPicture picture;
    // The picture of the call before, when both were made in memory of its own and are alike in
    // shape, and can so be compared.
    std::optional<YCbCrPicture> previous;
  };

  // Whether buffers of this format can be read.
  static bool accepts(OSType format) noexcept;

  // `buffer` is in such a format and locked, and stays so while the source is used, which is until
  // the next call. Nothing when memory is short.
  std::optional<Source> read(const CVPixelBuffer& buffer);

 private:
  Ref<CVPixelBuffer>& nextCopy(std::size_t width, std::size_t height, OSType format);

  // Used in turn, so that the last picture can be compared with the one before.
  std::array<Ref<CVPixelBuffer>, 2> copies_;
  std::size_t current_ = 0;
  bool lastWasCopy_ = false;
};

}  // namespace vlm::platform::h264
