#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "bench/quality/contents.h"

namespace vlm::bench {

// The lines of one of the benchmark's own sources, so that there is real text to show.
std::vector<std::string> sourceLines();

// An editor on light ground, coloured a little, filled from top to bottom.
void paintCode(Canvas& canvas);
// Headings, paragraphs and two pictures.
void paintDocument(Canvas& canvas);
// A slide: a title, points and a picture; another one for every number.
void paintSlide(Canvas& canvas, int number);
// Lines of a terminal, light on dark, from `first` on.
constexpr std::size_t kTerminalLine = 18;
void paintTerminal(Canvas& canvas, std::size_t first);
// One picture of a film: shaded ground that drifts, discs with hard edges that move over it, and
// grain that is new in every picture.
void paintFilm(Canvas& canvas, int frame);

// Copies `from` to a place in `to`, cropped at its edges.
void put(const Canvas& from, Canvas& to, std::size_t x, std::size_t y);

}  // namespace vlm::bench
