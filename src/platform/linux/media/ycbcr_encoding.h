#pragma once

#include <libyuv/convert_argb.h>

#include "platform/portable/pixel_buffer.h"

namespace vlm::platform::media {

// What the samples of a picture in YCbCr mean.
struct YCbCrEncoding {
  YCbCrMatrix matrix = YCbCrMatrix::bt601;
  bool fullRange = false;
  friend bool operator==(const YCbCrEncoding&, const YCbCrEncoding&) = default;
};

inline YCbCrEncoding encodingOf(const CVPixelBuffer& buffer) {
  return {buffer.matrix(), buffer.format() == kCVPixelFormatType_420YpCbCr8BiPlanarFullRange};
}

inline const libyuv::YuvConstants& yuvConstants(const YCbCrEncoding& encoding) {
  switch (encoding.matrix) {
    case YCbCrMatrix::bt709:
      return encoding.fullRange ? libyuv::kYuvF709Constants : libyuv::kYuvH709Constants;
    case YCbCrMatrix::bt2020:
      return encoding.fullRange ? libyuv::kYuvV2020Constants : libyuv::kYuv2020Constants;
    default:
      return encoding.fullRange ? libyuv::kYuvJPEGConstants : libyuv::kYuvI601Constants;
  }
}

}  // namespace vlm::platform::media
