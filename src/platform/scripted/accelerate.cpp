#include "platform/portable/fallible.h"
#include "platform/scripted/machine/refusal.h"

namespace vlm::platform {

using scripted::number;
using scripted::unlessRefused;

vImage_Error vImageConvert_YpCbCrToARGB_GenerateConversion(const vImage_YpCbCrToARGBMatrix& matrix,
                                                           const vImage_YpCbCrPixelRange& range,
                                                           vImage_YpCbCrToARGB& out) {
  const CFArray matrixEntries{matrix.Yp, matrix.Cr_R, matrix.Cr_G, matrix.Cb_G, matrix.Cb_B};
  const CFArray rangeEntries{range.Yp_bias, range.CbCr_bias, range.YpRangeMax, range.CbCrRangeMax,
                             range.YpMax,   range.YpMin,     range.CbCrMax,    range.CbCrMin};
  return unlessRefused("vImageConvert_YpCbCrToARGB_GenerateConversion",
                       {matrixEntries, rangeEntries},
                       [&] { return portable::generateConversion(matrix, range, out); });
}

vImage_Error vImageConvert_420Yp8_CbCr8ToARGB8888(const vImage_Buffer& luma,
                                                  const vImage_Buffer& chroma,
                                                  const vImage_Buffer& destination,
                                                  const vImage_YpCbCrToARGB& conversion,
                                                  const std::array<std::uint8_t, 4>& permuteMap,
                                                  std::uint8_t alpha) {
  const auto size = [](const vImage_Buffer& image) {
    return CFArray{number(image.width), number(image.height), number(image.rowBytes)};
  };
  CFArray order;
  for (const int index : permuteMap) order.emplace_back(index);
  return unlessRefused(
      "vImageConvert_420Yp8_CbCr8ToARGB8888",
      {size(luma), size(chroma), size(destination), order, std::int32_t{alpha}}, [&] {
        return portable::convertToARGB(luma, chroma, destination, conversion, permuteMap, alpha);
      });
}

}  // namespace vlm::platform
