#include "platform/linux/h264/decoded_picture.h"

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

// The usual pictures: 4:2:0 with 8 bits.
bool toBiPlanar(const AVFrame& from, const CVPixelBuffer& to) {
  const auto& luma = to.plane(0);
  const auto& chroma = to.plane(1);
  return libyuv::I420ToNV12(from.data[0], from.linesize[0], from.data[1], from.linesize[1],
                            from.data[2], from.linesize[2], luma.base,
                            static_cast<int>(luma.bytesPerRow), chroma.base,
                            static_cast<int>(chroma.bytesPerRow), from.width, from.height) == 0;
}

bool toBgra(const AVFrame& from, const CVPixelBuffer& to) {
  const auto& plane = to.plane(0);
  return libyuv::I420ToARGBMatrix(from.data[0], from.linesize[0], from.data[1], from.linesize[1],
                                  from.data[2], from.linesize[2], plane.base,
                                  static_cast<int>(plane.bytesPerRow), &constantsFor(from),
                                  from.width, from.height) == 0;
}

// Every other chroma format, depth and range, at leisure.
bool scale(SwsContext* scaler, const AVFrame& from, const CVPixelBuffer& to) {
  const int* matrix = sws_getCoefficients(
      from.colorspace == AVCOL_SPC_UNSPECIFIED ? SWS_CS_ITU601 : from.colorspace);
  sws_setColorspaceDetails(scaler, matrix, isFullRange(from) ? 1 : 0, matrix, 0, 0, 1 << 16,
                           1 << 16);
  std::uint8_t* const planes[] = {to.plane(0).base, to.plane(1).base, nullptr, nullptr};
  const int strides[] = {static_cast<int>(to.plane(0).bytesPerRow),
                         static_cast<int>(to.plane(1).bytesPerRow), 0, 0};
  return sws_scale(scaler, from.data, from.linesize, 0, from.height, planes, strides) ==
         from.height;
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
  auto image = pool_.take(static_cast<std::size_t>(picture.width),
                          static_cast<std::size_t>(picture.height), format_);
  return image && write(picture, *image) ? image : nullptr;
}

bool PictureConverter::write(const AVFrame& picture, const CVPixelBuffer& image) {
  const bool bgra = format_ == kCVPixelFormatType_32BGRA;
  const bool usual = picture.format == AV_PIX_FMT_YUV420P || picture.format == AV_PIX_FMT_YUVJ420P;
  if (usual && bgra) return toBgra(picture, image);
  if (usual && !isFullRange(picture)) return toBiPlanar(picture, image);
  const auto format = static_cast<AVPixelFormat>(picture.format);
  if (sws_isSupportedInput(format) == 0) return false;
  scaler_.reset(sws_getCachedContext(
      scaler_.release(), picture.width, picture.height, format, picture.width, picture.height,
      bgra ? AV_PIX_FMT_BGRA : AV_PIX_FMT_NV12, SWS_BILINEAR, nullptr, nullptr, nullptr));
  return scaler_ && scale(scaler_.get(), picture, image);
}

}  // namespace vlm::platform
