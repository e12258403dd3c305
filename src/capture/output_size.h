#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/core_graphics.h"

namespace vlm::capture {

struct OutputSize {
  std::size_t width = 2;
  std::size_t height = 2;
  friend bool operator==(const OutputSize&, const OutputSize&) = default;
};

// The pixel size of a capture's pictures: the content at its scale, made smaller (never larger) to
// fit the limits with its shape kept, each side then rounded down to an even number of at least 2.
// A limit of 0 or less in either direction switches the limit off in both.
OutputSize outputSize(platform::CGSize content, double scale, std::int32_t maxWidth,
                      std::int32_t maxHeight);

}  // namespace vlm::capture
