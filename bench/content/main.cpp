// What the benchmarks look at: clients of the X server that DISPLAY names, which draw the same
// each time they are run, so many times a second, until they are ended.
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <map>
#include <string>
#include <vector>

#include "bench/content/page.h"
#include "bench/support/bar_code.h"
#include "bench/support/clock.h"
#include "bench/support/shared_image.h"

namespace vlm::bench {
namespace {

constexpr std::uint16_t kScreenWidth = 1920;
constexpr std::uint16_t kScreenHeight = 1080;
// How far a panned picture is larger than the screen.
constexpr std::uint16_t kPan = 960;

// Where a point is that moves to and fro between 0 and `range`, `step` at a time.
std::uint16_t toAndFro(unsigned moment, unsigned step, unsigned range) {
  const unsigned way = moment * step % (2 * range);
  return static_cast<std::uint16_t>(way < range ? way : 2 * range - way);
}

// A page as the screen's background, once.
void wallpaper(double) {
  const Server server;
  const SharedImage page(server, kScreenWidth, kScreenHeight);
  paintPage(page.pixels(), page.width(), page.height());
  const xcb_window_t root = server.screen().root;
  const xcb_pixmap_t pixmap = xcb_generate_id(server.get());
  xcb_create_pixmap(server.get(), server.screen().root_depth, pixmap, root, page.width(),
                    page.height());
  page.put(pixmap, 0, 0, page.width(), page.height());
  xcb_change_window_attributes(server.get(), root, XCB_CW_BACK_PIXMAP, &pixmap);
  xcb_clear_area(server.get(), 0, root, 0, 0, 0, 0);
  server.finish();
}

// A window that moves over the desktop.
void window(double rate) {
  constexpr std::uint16_t kWidth = 400;
  constexpr std::uint16_t kHeight = 300;
  const Server server;
  const SharedImage page(server, kWidth, kHeight);
  paintPage(page.pixels(), kWidth, kHeight);
  const xcb_pixmap_t pixmap = xcb_generate_id(server.get());
  xcb_create_pixmap(server.get(), server.screen().root_depth, pixmap, server.screen().root, kWidth,
                    kHeight);
  page.put(pixmap, 0, 0, kWidth, kHeight);
  const xcb_window_t window = openWindow(server, 0, 0, kWidth, kHeight);
  xcb_change_window_attributes(server.get(), window, XCB_CW_BACK_PIXMAP, &pixmap);
  xcb_clear_area(server.get(), 0, window, 0, 0, 0, 0);
  Pace pace(rate);
  for (unsigned moment = 0;; ++moment, pace.next()) {
    const std::uint32_t place[] = {toAndFro(moment, 5, kScreenWidth - kWidth),
                                   toAndFro(moment, 3, kScreenHeight - kHeight)};
    xcb_configure_window(server.get(), window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place);
    server.finish();
  }
}

// A page panned over the whole screen.
void motion(double rate) {
  const Server server;
  const SharedImage page(server, kScreenWidth + kPan, kScreenHeight + kPan);
  paintPage(page.pixels(), page.width(), page.height());
  const xcb_window_t window = openWindow(server, 0, 0, kScreenWidth, kScreenHeight);
  Pace pace(rate);
  for (unsigned moment = 0;; ++moment, pace.next()) {
    page.put(window, toAndFro(moment, 5, kPan), toAndFro(moment, 7, kPan), kScreenWidth,
             kScreenHeight);
    server.finish();
  }
}

// Lines of text, for a terminal.
void lines(double rate) {
  Pace pace(rate);
  for (unsigned moment = 0;; ++moment, pace.next()) {
    std::printf("%08u", moment);
    for (unsigned word = 0; word < 8; ++word)
      std::printf(" %08x", (moment * 8 + word) * 2654435761U);
    std::printf("\n");
    if (std::fflush(stdout) != 0) return;
  }
}

// The clock as a bar code on a screen that is still otherwise.
void clock(double rate) {
  const Server server;
  const SharedImage image(server, BarCode::kWidth, BarCode::kHeight);
  const xcb_window_t window =
      openWindow(server, BarCode::kX, BarCode::kY, BarCode::kWidth, BarCode::kHeight);
  for (Pace pace(rate);; pace.next()) {
    BarCode::draw(monotonicNow(), image.pixels(), image.width());
    image.put(window, 0, 0, image.width(), image.height());
    server.finish();
  }
}

// The clock as a bar code on a page that is panned over the whole screen.
void movingClock(double rate) {
  const Server server;
  const SharedImage image(server, kScreenWidth, kScreenHeight);
  const xcb_window_t window = openWindow(server, 0, 0, kScreenWidth, kScreenHeight);
  constexpr std::size_t kPageWidth = kScreenWidth + kPan;
  std::vector<std::uint32_t> page(kPageWidth * (kScreenHeight + kPan));
  paintPage(page.data(), kPageWidth, kScreenHeight + kPan);
  Pace pace(rate);
  for (unsigned moment = 0;; ++moment, pace.next()) {
    // Picture and clock come in one request, so that no grab sees one without the other.
    const auto* from = &page[toAndFro(moment, 7, kPan) * kPageWidth + toAndFro(moment, 5, kPan)];
    for (std::size_t row = 0; row < kScreenHeight; ++row) {
      std::memcpy(image.pixels() + row * kScreenWidth, from + row * kPageWidth, kScreenWidth * 4);
    }
    BarCode::draw(monotonicNow(), image.pixels() + BarCode::kY * kScreenWidth + BarCode::kX,
                  kScreenWidth);
    image.put(window, 0, 0, kScreenWidth, kScreenHeight);
    server.finish();
  }
}

int run(const std::string& name, double rate) {
  const std::map<std::string, void (*)(double)> contents = {
      {"wallpaper", wallpaper}, {"window", window}, {"motion", motion},
      {"lines", lines},         {"clock", clock},   {"moving-clock", movingClock},
  };
  const auto found = contents.find(name);
  if (found == contents.end() || !(rate > 0)) {
    std::fprintf(stderr, "usage: content wallpaper|window|motion|lines|clock|moving-clock RATE\n");
    return 2;
  }
  found->second(rate);
  return 0;
}

}  // namespace
}  // namespace vlm::bench

int main(int count, char** arguments) {
  try {
    return vlm::bench::run(count > 1 ? arguments[1] : "", count > 2 ? std::atof(arguments[2]) : 60);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "content: %s\n", error.what());
    return 1;
  }
}
