#include "bench/quality/painting.h"

#include <cairo.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <stdexcept>

#include "bench/quality/random.h"

namespace vlm::bench {
namespace {

struct Free {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_t* brush) const { cairo_destroy(brush); }
};

// A brush over a canvas, which gets the pixels when the brush is gone.
class Brush {
 public:
  explicit Brush(Canvas& canvas)
      : surface_(cairo_image_surface_create_for_data(
            reinterpret_cast<unsigned char*>(canvas.pixels.data()), CAIRO_FORMAT_RGB24,
            static_cast<int>(canvas.width), static_cast<int>(canvas.height),
            static_cast<int>(canvas.width * 4))),
        brush_(cairo_create(surface_.get())) {}

  void colour(std::uint32_t rgb) {
    cairo_set_source_rgb(brush_.get(), (rgb >> 16 & 255) / 255.0, (rgb >> 8 & 255) / 255.0,
                         (rgb & 255) / 255.0);
  }
  void fill() { cairo_paint(brush_.get()); }
  void box(double x, double y, double width, double height) {
    cairo_rectangle(brush_.get(), x, y, width, height);
    cairo_fill(brush_.get());
  }
  void font(const char* family, double size, bool bold = false) {
    cairo_select_font_face(brush_.get(), family, CAIRO_FONT_SLANT_NORMAL,
                           bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(brush_.get(), size);
  }
  void text(double x, double y, const std::string& line) {
    cairo_move_to(brush_.get(), x, y);
    cairo_show_text(brush_.get(), line.c_str());
  }

 private:
  std::unique_ptr<cairo_surface_t, Free> surface_;
  std::unique_ptr<cairo_t, Free> brush_;
};

constexpr char kMono[] = "DejaVu Sans Mono";
constexpr char kSans[] = "DejaVu Sans";

std::uint32_t inkOf(const std::string& line) {
  if (line.find("//") != std::string::npos) return 0x707880;
  if (line.find('#') == 0) return 0x8A2BA0;
  if (line.find("return") != std::string::npos) return 0x1040B0;
  return line.find('"') != std::string::npos ? 0xA03020 : 0x202428;
}

// Words of the text, in lines of so many letters.
std::string proseLine(std::size_t number, std::size_t letters) {
  static const auto words = [] {
    std::vector<std::string> found;
    for (const auto& line : sourceLines()) {
      std::string word;
      for (const char letter : line + " ") {
        if (std::isalpha(static_cast<unsigned char>(letter)) != 0) {
          word += letter;
        } else {
          if (word.size() > 1) found.push_back(word);
          word.clear();
        }
      }
    }
    return found;
  }();
  std::string line;
  for (std::size_t i = number * 17; line.size() < letters; ++i)
    line += words[i % words.size()] + " ";
  return line;
}

void paintPhoto(Canvas& canvas, std::size_t x0, std::size_t y0, std::size_t width,
                std::size_t height, unsigned seed) {
  Canvas photo(width, height);
  paintFilm(photo, static_cast<int>(seed * 37));
  put(photo, canvas, x0, y0);
}

}  // namespace

std::vector<std::string> sourceLines() {
  std::ifstream source(VLM_BENCH_TEXT);
  std::vector<std::string> lines;
  for (std::string line; std::getline(source, line);) lines.push_back(line);
  if (lines.empty()) throw std::runtime_error("the text to show is gone");
  return lines;
}

void paintCode(Canvas& canvas) {
  Brush brush(canvas);
  brush.colour(0xFAFAF7);
  brush.fill();
  const auto lines = sourceLines();
  const auto width = static_cast<double>(canvas.width);
  brush.font(kMono, 13);
  // Two panes of text, as editors have.
  for (std::size_t row = 0; 20 + row * 17 < canvas.height; ++row) {
    for (int pane = 0; pane < 2; ++pane) {
      const auto number = (row + static_cast<std::size_t>(pane) * 71) % lines.size();
      const double x = 8 + pane * width / 2;
      const auto y = static_cast<double>(20 + row * 17);
      brush.colour(0xA0A4A8);
      brush.text(x, y, std::to_string(number + 1));
      brush.colour(inkOf(lines[number]));
      brush.text(x + 40, y, lines[number]);
    }
  }
}

void paintDocument(Canvas& canvas) {
  {
    Brush brush(canvas);
    brush.colour(0xFFFFFF);
    brush.fill();
    brush.colour(0x202428);
    brush.font(kSans, 28, true);
    brush.text(60, 60, "A report on what was measured");
    brush.font(kSans, 15);
    std::size_t number = 0;
    for (std::size_t y = 100; y + 20 < canvas.height; y += 23) {
      if (number % 9 != 8) {
        brush.text(60, static_cast<double>(y), proseLine(number, canvas.width / 20));
      }
      ++number;
    }
  }
  const auto x = canvas.width * 6 / 10;
  paintPhoto(canvas, x, 60, canvas.width * 35 / 100, canvas.height * 4 / 10, 1);
  paintPhoto(canvas, x, canvas.height / 2 + 40, canvas.width * 35 / 100, canvas.height * 4 / 10, 5);
}

void paintSlide(Canvas& canvas, int number) {
  constexpr std::array<std::uint32_t, 4> kGrounds{0xFFFFFF, 0x14304A, 0xF3EEE2, 0x202020};
  const auto shade = static_cast<std::size_t>(number) % kGrounds.size();
  const auto wide = static_cast<double>(canvas.width);
  const auto high = static_cast<double>(canvas.height);
  {
    Brush brush(canvas);
    brush.colour(kGrounds[shade]);
    brush.fill();
    brush.colour(0xD05028);
    brush.box(0, 0, wide, high / 60);
    brush.colour(shade % 2 == 1 ? 0xF0F0F0 : 0x202428);
    brush.font(kSans, high / 16, true);
    brush.text(wide / 20, high / 7, "Slide " + std::to_string(number + 1) + ": what changes");
    brush.font(kSans, high / 38);
    for (std::size_t point = 0; point < 12; ++point) {
      brush.text(wide / 16, high / 4 + static_cast<double>(point) * high / 17,
                 proseLine(static_cast<std::size_t>(number) * 12 + point, 42));
    }
  }
  paintPhoto(canvas, canvas.width * 65 / 100, canvas.height * 3 / 10, canvas.width * 3 / 10,
             canvas.height / 2, static_cast<unsigned>(number));
}

void paintTerminal(Canvas& canvas, std::size_t first) {
  Brush brush(canvas);
  brush.colour(0x101418);
  brush.fill();
  brush.font(kMono, 14);
  const auto lines = sourceLines();
  for (std::size_t row = 0; (row + 1) * kTerminalLine <= canvas.height; ++row) {
    const auto number = first + row;
    brush.colour(number % 7 == 0 ? 0x60D080 : 0xD0D4D8);
    brush.text(6, static_cast<double>(row * kTerminalLine + 14),
               std::to_string(number) + "  " + lines[number % lines.size()] + "   " +
                   std::to_string(number * 2654435761U));
  }
}

void paintFilm(Canvas& canvas, int frame) {
  constexpr int kDiscs = 6;
  struct Disc {
    double x, y, radius;
    std::uint32_t tint;
  };
  const auto wide = static_cast<double>(canvas.width);
  const auto high = static_cast<double>(canvas.height);
  std::array<Disc, kDiscs> discs{};
  for (int i = 0; i < kDiscs; ++i) {
    const double turn = frame * (0.013 + 0.004 * i) + i;
    discs[static_cast<std::size_t>(i)] = {
        wide * (0.5 + 0.4 * std::sin(turn)), high * (0.5 + 0.4 * std::cos(turn * 1.3 + i)),
        high * (0.05 + 0.02 * i), static_cast<std::uint32_t>(40 + 30 * i)};
  }
  Random random(static_cast<std::uint32_t>(frame) * 747796405U + 1);
  for (std::size_t y = 0; y < canvas.height; ++y) {
    for (std::size_t x = 0; x < canvas.width; ++x) {
      const auto column = static_cast<double>(x);
      const auto row = static_cast<double>(y);
      auto red = static_cast<std::uint32_t>(90 + 80 * column / wide + frame % 60);
      auto green = static_cast<std::uint32_t>(60 + 100 * row / high);
      auto blue = static_cast<std::uint32_t>(150 - 60 * column / wide);
      for (const auto& disc : discs) {
        const double dx = column - disc.x;
        const double dy = row - disc.y;
        if (dx * dx + dy * dy < disc.radius * disc.radius) {
          red = disc.tint;
          green = 200 - disc.tint / 2;
          blue = disc.tint / 2 + 40;
        }
      }
      // Two dice make grain that is mostly small.
      const std::uint32_t dice = random.next();
      const std::uint32_t grain = (dice & 7) + (dice >> 8 & 7);
      canvas.pixels[y * canvas.width + x] = std::min(red + grain, 255U) << 16 |
                                            std::min(green + grain, 255U) << 8 |
                                            std::min(blue + grain, 255U);
    }
  }
}

void put(const Canvas& from, Canvas& to, std::size_t x, std::size_t y) {
  for (std::size_t row = 0; row < from.height && y + row < to.height; ++row) {
    const auto count = std::min(from.width, to.width - x);
    std::copy_n(&from.pixels[row * from.width], count, &to.pixels[(y + row) * to.width + x]);
  }
}

}  // namespace vlm::bench
