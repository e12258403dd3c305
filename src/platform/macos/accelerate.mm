#include "platform/accelerate.h"

#import <Accelerate/Accelerate.h>
#include <cstring>

namespace vlm::platform {

namespace {

static_assert(kvImageNoError == ::kvImageNoError);
static_assert(sizeof(vImage_YpCbCrToARGB) == sizeof(::vImage_YpCbCrToARGB));

::vImage_YpCbCrPixelRange toNative(const vImage_YpCbCrPixelRange& range) {
  return {range.Yp_bias, range.CbCr_bias, range.YpRangeMax, range.CbCrRangeMax,
          range.YpMax,   range.YpMin,     range.CbCrMax,    range.CbCrMin};
}

::vImage_YpCbCrToARGBMatrix toNative(const vImage_YpCbCrToARGBMatrix& matrix) {
  return {static_cast<float>(matrix.Yp), static_cast<float>(matrix.Cr_R),
          static_cast<float>(matrix.Cr_G), static_cast<float>(matrix.Cb_G),
          static_cast<float>(matrix.Cb_B)};
}

::vImage_Buffer toNative(const vImage_Buffer& buffer) {
  return {buffer.data, buffer.height, buffer.width, buffer.rowBytes};
}

}  // namespace

vImage_Error vImageConvert_YpCbCrToARGB_GenerateConversion(const vImage_YpCbCrToARGBMatrix& matrix,
                                                           const vImage_YpCbCrPixelRange& range,
                                                           vImage_YpCbCrToARGB& out) {
  const auto nativeMatrix = toNative(matrix);
  const auto nativeRange = toNative(range);
  // The framework's record wants an alignment that the header's has not.
  ::vImage_YpCbCrToARGB conversion{};
  const auto error = ::vImageConvert_YpCbCrToARGB_GenerateConversion(
      &nativeMatrix, &nativeRange, &conversion, ::kvImage420Yp8_CbCr8, ::kvImageARGB8888,
      ::kvImageNoFlags);
  if (error == ::kvImageNoError) std::memcpy(&out, &conversion, sizeof out);
  return error;
}

vImage_Error vImageConvert_420Yp8_CbCr8ToARGB8888(const vImage_Buffer& luma,
                                                  const vImage_Buffer& chroma,
                                                  const vImage_Buffer& destination,
                                                  const vImage_YpCbCrToARGB& conversion,
                                                  const std::array<std::uint8_t, 4>& permuteMap,
                                                  std::uint8_t alpha) {
  const auto nativeLuma = toNative(luma);
  const auto nativeChroma = toNative(chroma);
  const auto nativeDestination = toNative(destination);
  ::vImage_YpCbCrToARGB aligned{};
  std::memcpy(&aligned, &conversion, sizeof aligned);
  return ::vImageConvert_420Yp8_CbCr8ToARGB8888(&nativeLuma, &nativeChroma, &nativeDestination,
                                                &aligned, permuteMap.data(), alpha,
                                                ::kvImageNoFlags);
}

}  // namespace vlm::platform
