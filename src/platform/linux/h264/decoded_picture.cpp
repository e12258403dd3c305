#include "platform/linux/h264/decoded_picture.h"

#include <libyuv.h>

#include <algorithm>
#include <utility>

extern "C" {
#include <libavutil/opt.h>
}

#include "platform/linux/media/ycbcr_encoding.h"

namespace vlm::platform::h264 {
namespace {

constexpr std::size_t kMostPooled = 8;

// libav's former names for full range, which its scaler complains about.
AVPixelFormat formatWithoutRange(const AVFrame& picture) {
  switch (picture.format) {
    case AV_PIX_FMT_YUVJ420P:
      return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P:
      return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P:
      return AV_PIX_FMT_YUV444P;
    default:
      return static_cast<AVPixelFormat>(picture.format);
  }
}

bool isFullRange(const AVFrame& picture) {
  return picture.color_range == AVCOL_RANGE_JPEG || formatWithoutRange(picture) != picture.format;
}

YCbCrMatrix matrixOf(const AVFrame& picture) {
  switch (picture.colorspace) {
    case AVCOL_SPC_BT709:
      return YCbCrMatrix::bt709;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
      return YCbCrMatrix::bt2020;
    default:
      return YCbCrMatrix::bt601;
  }
}

// The usual pictures: 4:2:0 with 8 bits.
bool toBiPlanar(const AVFrame& from, const CVPixelBuffer& to) {
  const auto [luma, chroma] = to.planes();
  return libyuv::I420ToNV12(from.data[0], from.linesize[0], from.data[1], from.linesize[1],
                            from.data[2], from.linesize[2], luma.pixels, luma.rowBytes(),
                            chroma.pixels, chroma.rowBytes(), from.width, from.height) == 0;
}

bool toBgra(const AVFrame& from, const CVPixelBuffer& to) {
  const auto& plane = to.plane(0);
  const auto& constants = media::yuvConstants({matrixOf(from), isFullRange(from)});
  return libyuv::I420ToARGBMatrix(from.data[0], from.linesize[0], from.data[1], from.linesize[1],
                                  from.data[2], from.linesize[2], plane.pixels, plane.rowBytes(),
                                  &constants, from.width, from.height) == 0;
}

// A scaler's own quick ways are chosen when it is made, and look at the ranges.
media::SwsContextPtr makeScaler(const AVFrame& from, AVPixelFormat format, AVPixelFormat to) {
  media::SwsContextPtr scaler(sws_alloc_context());
  if (!scaler) return nullptr;
  const std::pair<const char*, std::int64_t> options[] = {
      {"srcw", from.width},
      {"srch", from.height},
      {"src_format", format},
      {"dstw", from.width},
      {"dsth", from.height},
      {"dst_format", to},
      {"src_range", isFullRange(from)},
      {"dst_range", 0},
      {"sws_flags", SWS_BILINEAR},
  };
  for (const auto& [name, value] : options) av_opt_set_int(scaler.get(), name, value, 0);
  return sws_init_context(scaler.get(), nullptr, nullptr) >= 0 ? std::move(scaler) : nullptr;
}

// Every other chroma format, depth and range, at leisure.
bool scale(SwsContext* scaler, const AVFrame& from, const CVPixelBuffer& to) {
  const int* matrix = sws_getCoefficients(
      from.colorspace == AVCOL_SPC_UNSPECIFIED ? SWS_CS_ITU601 : from.colorspace);
  sws_setColorspaceDetails(scaler, matrix, isFullRange(from) ? 1 : 0, matrix, 0, 0, 1 << 16,
                           1 << 16);
  std::uint8_t* const planes[] = {to.plane(0).pixels, to.plane(1).pixels, nullptr, nullptr};
  const int strides[] = {to.plane(0).rowBytes(), to.plane(1).rowBytes(), 0, 0};
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
  if (!image || !write(picture, *image)) return nullptr;
  image->setMatrix(matrixOf(picture));
  return image;
}

bool PictureConverter::write(const AVFrame& picture, const CVPixelBuffer& image) {
  const bool bgra = format_ == kCVPixelFormatType_32BGRA;
  const auto format = formatWithoutRange(picture);
  const bool usual = format == AV_PIX_FMT_YUV420P;
  if (usual && bgra) return toBgra(picture, image);
  if (usual && !isFullRange(picture)) return toBiPlanar(picture, image);
  if (sws_isSupportedInput(format) == 0) return false;
  const ScalerInput input{picture.width, picture.height, format, isFullRange(picture)};
  if (!scaler_ || input != scalerInput_) {
    scaler_ = makeScaler(picture, format, bgra ? AV_PIX_FMT_BGRA : AV_PIX_FMT_NV12);
    scalerInput_ = input;
  }
  return scaler_ && scale(scaler_.get(), picture, image);
}

}  // namespace vlm::platform::h264
