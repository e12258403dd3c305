#pragma once

#include <cstdint>
#include <span>

namespace vlm::platform::h264 {

// What the slices of an access unit say about its picture.
struct AccessUnitFacts {
  bool hasIdrSlice = false;
  bool isIntra = false;         // every slice is an I or SI slice
  bool isBiPredictive = false;  // some slice is a B slice
};

// Of NAL units with lengths of four bytes before them. What is broken ends the reading.
AccessUnitFacts factsOf(std::span<const std::uint8_t> accessUnit);

}  // namespace vlm::platform::h264
