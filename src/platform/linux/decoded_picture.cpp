#include "platform/linux/decoded_picture.h"

#include <libyuv.h>

#include <algorithm>

namespace vlm::platform {
namespace {

constexpr std::size_t kMostPooled = 8;

bool isFullRange(const AVFrame& picture) {
  return picture.color_range == AVCOL_RANGE_JPEG || picture.format == AV_PIX_FMT_YUVJ420P;
}

const libyuv::YuvConstants& constantsFor(const AVFrame& picture) {
  const bool full = isFullRange(picture);
  switch (picture.colorspace) {
    case AVCOL_SPC_BT709:
      return full ? libyuv::kYuvF709Constants : libyuv::kYuvH709Constants;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
      return full ? libyuv::kYuvV2020Constants : libyuv::kYuv2020Constants;
    default:
      return full ? libyuv::kYuvJPEGConstants : libyuv::kYuvI601Constants;
  }
}

void compress(const PixelPlane& plane, std::size_t rowBytes, unsigned range) {
  const unsigned factor = (range << 16) / 255;
  for (std::size_t row = 0; row < plane.height; ++row) {
    auto* pixels = plane.base + row * plane.bytesPerRow;
    for (std::size_t x = 0; x < rowBytes; ++x) {
      pixels[x] = static_cast<std::uint8_t>(16 + ((pixels[x] * factor + (1U << 15)) >> 16));
    }
  }
}

// From 0..255 to 16..235 and 16..240, in place.
void compressRange(const CVPixelBuffer& image) {
  compress(image.plane(0), image.plane(0).width, 235 - 16);
  compress(image.plane(1), image.plane(1).width * 2, 240 - 16);
}

bool toBiPlanar(const AVFrame& from, const CVPixelBuffer& to) {
  const auto& luma = to.plane(0);
  const auto& chroma = to.plane(1);
  const int failed = libyuv::I420ToNV12(
      from.data[0], from.linesize[0], from.data[1], from.linesize[1], from.data[2],
      from.linesize[2], luma.base, static_cast<int>(luma.bytesPerRow), chroma.base,
      static_cast<int>(chroma.bytesPerRow), from.width, from.height);
  if (failed != 0) return false;
  if (isFullRange(from)) compressRange(to);
  return true;
}

bool toBgra(const AVFrame& from, const CVPixelBuffer& to) {
  const auto& plane = to.plane(0);
  return libyuv::I420ToARGBMatrix(from.data[0], from.linesize[0], from.data[1], from.linesize[1],
                                  from.data[2], from.linesize[2], plane.base,
                                  static_cast<int>(plane.bytesPerRow), &constantsFor(from),
                                  from.width, from.height) == 0;
}

}  // namespace

Ref<CVPixelBuffer> PixelBufferPool::take(std::size_t width, std::size_t height, OSType format) {
  std::erase_if(buffers_, [&](const auto& buffer) {
    return buffer->width() != width || buffer->height() != height || buffer->format() != format;
  });
  const auto free = std::ranges::find_if(
      buffers_, [](const auto& buffer) { return buffer->uniquelyReferenced(); });
  if (free != buffers_.end()) return *free;
  auto buffer = CVPixelBuffer::make(width, height, format);
  if (buffer && buffers_.size() < kMostPooled) buffers_.push_back(buffer);
  return buffer;
}

Ref<CVPixelBuffer> PictureConverter::convert(const AVFrame& picture) {
  if (picture.format != AV_PIX_FMT_YUV420P && picture.format != AV_PIX_FMT_YUVJ420P) return nullptr;
  auto image = pool_.take(static_cast<std::size_t>(picture.width),
                          static_cast<std::size_t>(picture.height), format_);
  if (!image) return nullptr;
  const bool converted =
      format_ == kCVPixelFormatType_32BGRA ? toBgra(picture, *image) : toBiPlanar(picture, *image);
  return converted ? image : nullptr;
}

}  // namespace vlm::platform
