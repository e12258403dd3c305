#pragma once

#include <cstddef>
#include <cstdint>

namespace vlm::bench {

// Paints something like a page of a browser: paragraphs of small dark marks on white between
// shaded, grainy pictures. The same for the same size, every time.
void paintPage(std::uint32_t* pixels, std::size_t width, std::size_t height);

}  // namespace vlm::bench
