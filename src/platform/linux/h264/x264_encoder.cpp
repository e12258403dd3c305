#include "platform/linux/h264/x264_encoder.h"

#include <algorithm>
#include <cmath>

extern "C" {
#include <x264.h>
}

namespace vlm::platform::h264 {
namespace {

constexpr int kBestQuantiser = 1;
// Six for each doubling, of a factor of ten.
constexpr int kHalfRange = 19;

// Code points of ITU-T H.273: a desktop's colours, and the matrices.
constexpr int kPrimariesBt709 = 1;
constexpr int kTransferSrgb = 13;
constexpr int kMatrixBt709 = 1;
constexpr int kMatrixSmpte170m = 6;  // BT.601's
constexpr int kMatrixBt2020 = 9;

int codePoint(YCbCrMatrix matrix) {
  switch (matrix) {
    case YCbCrMatrix::bt709:
      return kMatrixBt709;
    case YCbCrMatrix::bt2020:
      return kMatrixBt2020;
    default:
      return kMatrixSmpte170m;
  }
}

void describeColour(x264_param_t& param, const media::YCbCrEncoding& encoding) {
  param.vui.b_fullrange = encoding.fullRange ? 1 : 0;
  param.vui.i_colorprim = kPrimariesBt709;
  param.vui.i_transfer = kTransferSrgb;
  param.vui.i_colmatrix = codePoint(encoding.matrix);
}

// A fixed quantiser as far as x264 knows, which keeps it from analysing every picture a second time
// at low resolution; the quantiser of a picture is then forced. x264 clips it to the range between
// those of its frame types. It lets the types differ by a factor of ten, so the fixed one is put
// where the range reaches from the worst quantiser to the finest that may be asked for.
void openQuantiserRange(x264_param_t& param, int worst) {
  constexpr double kWidestFactor = 10;
  const int fixed = std::max(worst - kHalfRange, kBestQuantiser);
  param.rc.i_rc_method = X264_RC_CQP;
  param.rc.i_qp_constant = fixed;
  param.rc.f_ip_factor = kWidestFactor;
  param.rc.f_pb_factor = static_cast<float>(std::exp2((worst - fixed) / 6.0));
}

x264_param_t parameters(const X264Encoder::Format& format) {
  x264_param_t param;
  x264_param_default_preset(&param, "ultrafast", "zerolatency");
  param.i_width = static_cast<int>(format.width);
  param.i_height = static_cast<int>(format.height);
  param.i_csp = X264_CSP_NV12;
  param.i_log_level = X264_LOG_ERROR;
  param.i_threads = 1;
  param.b_sliced_threads = 0;
  param.i_fps_num = static_cast<std::uint32_t>(std::lround(format.framesPerSecond * 1000));
  param.i_fps_den = 1000;
  param.i_level_idc = format.level;
  param.i_keyint_max = X264_KEYINT_MAX_INFINITE;
  param.b_annexb = 0;
  param.b_repeat_headers = 0;
  param.b_cabac = 1;
  param.analyse.b_mb_info = 1;
  param.analyse.b_psy = 0;
  // Text has edges in every block: predicting 4 x 4 pixels costs nothing measurable and saves bits.
  param.analyse.intra = X264_ANALYSE_I4x4;
  // What a desktop moves, it moves far and whole: a page or a terminal that scrolls by several
  // lines is found again only by a wide search. That costs a quarter more where nothing is found,
  // and saves most of the bits, and the time that writing them takes, where something is.
  param.analyse.i_me_method = X264_ME_UMH;
  param.analyse.i_me_range = 48;
  describeColour(param, format.encoding);
  openQuantiserRange(param, format.worstQuantiser);
  x264_param_apply_profile(&param, "main");
  return param;
}

bool isSlice(const x264_nal_t& unit) {
  return unit.i_type == NAL_SLICE || unit.i_type == NAL_SLICE_IDR;
}

void setPlanes(x264_image_t& image, const YCbCrPicture& picture) {
  image.i_csp = X264_CSP_NV12;
  image.i_plane = 2;
  // x264 only reads them.
  image.plane[0] = const_cast<std::uint8_t*>(picture.luma.pixels);
  image.plane[1] = const_cast<std::uint8_t*>(picture.chroma.pixels);
  image.i_stride[0] = picture.luma.rowBytes();
  image.i_stride[1] = picture.chroma.rowBytes();
}

}  // namespace

void X264Encoder::Close::operator()(x264_t* encoder) const noexcept {
  x264_encoder_close(encoder);
}

// x264 would find a level of its own, but with quantisers that are forced it does not know the
// rate.
int X264Encoder::levelFor(const Format& format, double bitsPerSecond) {
  const double columns = std::ceil(static_cast<double>(format.width) / 16);
  const double rows = std::ceil(static_cast<double>(format.height) / 16);
  const double blocks = columns * rows;
  const double longest = std::max(columns, rows);
  const auto allows = [&](const x264_level_t& level) {
    return level.frame_size >= blocks && level.frame_size * 8.0 >= longest * longest &&
           level.dpb >= blocks && level.mbps >= blocks * format.framesPerSecond &&
           level.bitrate * 1000.0 >= bitsPerSecond;
  };
  const auto* level = &x264_levels[0];
  while (level[1].level_idc != 0 && !allows(*level)) ++level;
  return level->level_idc;
}

std::unique_ptr<X264Encoder> X264Encoder::open(const Format& format) {
  auto param = parameters(format);
  auto* encoder = x264_encoder_open(&param);
  if (encoder == nullptr) return nullptr;
  std::unique_ptr<X264Encoder> opened(new X264Encoder(format, encoder));
  return opened->readParameterSets() ? std::move(opened) : nullptr;
}

bool X264Encoder::readParameterSets() {
  x264_nal_t* units = nullptr;
  int count = 0;
  if (x264_encoder_headers(encoder_.get(), &units, &count) < 0) return false;
  for (const auto& unit : std::span(units, static_cast<std::size_t>(count))) {
    if (unit.i_type != NAL_SPS && unit.i_type != NAL_PPS) continue;
    const std::span bytes(unit.p_payload, static_cast<std::size_t>(unit.i_payload));
    const auto set = bytes.subspan(kLengthPrefix);
    parameterSets_.emplace_back(set.begin(), set.end());
  }
  return parameterSets_.size() == 2;
}

std::optional<std::vector<std::uint8_t>> X264Encoder::encode(const YCbCrPicture& picture,
                                                             std::span<std::uint8_t> constant,
                                                             int quantiser, bool keyFrame) {
  x264_picture_t input;
  x264_picture_init(&input);
  setPlanes(input.img, picture);
  input.i_pts = pictures_++;
  input.i_type = keyFrame ? X264_TYPE_IDR : X264_TYPE_P;
  input.i_qpplus1 = quantiser + 1;
  input.prop.mb_info = constant.empty() ? nullptr : constant.data();
  x264_picture_t coded;
  x264_nal_t* units = nullptr;
  int count = 0;
  shown_.reset();
  const int size = x264_encoder_encode(encoder_.get(), &units, &count, &input, &coded);
  if (size <= 0) return std::nullopt;
  const auto plane = [&](int index) {
    return PlaneView{coded.img.plane[index], static_cast<std::size_t>(coded.img.i_stride[index])};
  };
  shown_ = YCbCrPicture{{plane(0), plane(1)}, picture.width, picture.height, picture.encoding};
  std::vector<std::uint8_t> bytes;
  bytes.reserve(static_cast<std::size_t>(size));
  for (const auto& unit : std::span(units, static_cast<std::size_t>(count))) {
    if (isSlice(unit)) bytes.insert(bytes.end(), unit.p_payload, unit.p_payload + unit.i_payload);
  }
  return bytes;
}

}  // namespace vlm::platform::h264
