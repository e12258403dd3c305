// Conversion of pictures needs nothing of the system.
#include "platform/portable/fallible.h"

namespace vlm::platform {

vImage_Error vImageConvert_YpCbCrToARGB_GenerateConversion(const vImage_YpCbCrToARGBMatrix& matrix,
                                                           const vImage_YpCbCrPixelRange& range,
                                                           vImage_YpCbCrToARGB& out) {
  return portable::generateConversion(matrix, range, out);
}

vImage_Error vImageConvert_420Yp8_CbCr8ToARGB8888(const vImage_Buffer& luma,
                                                  const vImage_Buffer& chroma,
                                                  const vImage_Buffer& destination,
                                                  const vImage_YpCbCrToARGB& conversion,
                                                  const std::array<std::uint8_t, 4>& permuteMap,
                                                  std::uint8_t alpha) {
  return portable::convertToARGB(luma, chroma, destination, conversion, permuteMap, alpha);
}

}  // namespace vlm::platform
