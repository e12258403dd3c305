#pragma once

#include <cstdint>
#include <vector>

#include "bench/quality/contents.h"

namespace vlm::bench {

// 4:2:0 with interleaved chroma, packed, of even size: what all encoders are given, and what is
// judged against.
struct Picture {
  std::size_t width = 0;
  std::size_t height = 0;
  std::vector<std::uint8_t> bytes;

  Picture(std::size_t wide, std::size_t high)
      : width(wide), height(high), bytes(wide * high * 3 / 2) {}
  const std::uint8_t* luma() const { return bytes.data(); }
  const std::uint8_t* chroma() const { return bytes.data() + width * height; }
};

// By the BT.601 matrix into video range.
void convert(const Canvas& canvas, Picture& picture);

}  // namespace vlm::bench
