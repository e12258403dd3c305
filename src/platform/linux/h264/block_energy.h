#pragma once

#include <array>
#include <cstddef>

#include "platform/linux/h264/encoder_input.h"

namespace vlm::platform::h264 {

// What there is to code in a macroblock: the mean energy of a pixel, for each of its four quarters.
using BlockEnergy = std::array<float, 4>;

// Of the difference between two pictures of one size, colours included.
BlockEnergy differenceEnergy(const YCbCrPicture& a, const YCbCrPicture& b, std::size_t column,
                             std::size_t row);
// Of the luma itself around its mean: what there is to code where nothing is known.
BlockEnergy detailEnergy(const YCbCrPicture& picture, std::size_t column, std::size_t row);

// Bits that the energy of a quarter takes at a quantiser, to be scaled by what a stream shows. What
// is below `threshold` times the square of the quantiser's step is mostly left out.
float bitsOf(float energy, int quantiser, float threshold);

}  // namespace vlm::platform::h264
