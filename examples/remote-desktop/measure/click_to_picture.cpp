// How long a click in the viewer takes to be seen there:
//
//   click_to_picture SHARED VIEWING X Y COUNT
//
// On the display SHARED a window in the top left corner changes its colour with each click. On the
// display VIEWING the pointer is put to X, Y, where the viewer shows that window, and clicks; the
// time until the pixel beside it changes is printed in milliseconds: median, 95 %, worst.
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

struct Display {
  explicit Display(const char* name) : connection(xcb_connect(name, nullptr)) {
    if (xcb_connection_has_error(connection) != 0) std::exit(2);
    root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
  }
  xcb_connection_t* connection;
  xcb_window_t root;
};

// For ever.
void changeColourWithEachClick(const char* name) {
  const Display display(name);
  auto* c = display.connection;
  const auto window = xcb_generate_id(c);
  const std::uint32_t values[]{0xFFFFFF, 1, XCB_EVENT_MASK_BUTTON_PRESS};
  xcb_create_window(c, XCB_COPY_FROM_PARENT, window, display.root, 0, 0, 200, 200, 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                    XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
  xcb_map_window(c, window);
  xcb_flush(c);
  std::uint32_t colour = 0xFFFFFF;
  while (auto* event = xcb_wait_for_event(c)) {
    if ((event->response_type & 0x7F) == XCB_BUTTON_PRESS) {
      colour ^= 0xFFFFFF;
      xcb_change_window_attributes(c, window, XCB_CW_BACK_PIXEL, &colour);
      xcb_clear_area(c, 0, window, 0, 0, 0, 0);
      xcb_flush(c);
    }
    std::free(event);
  }
}

bool isLight(const Display& display, int x, int y) {
  const auto asked =
      xcb_get_image(display.connection, XCB_IMAGE_FORMAT_Z_PIXMAP, display.root,
                    static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 1, 1, ~0U);
  const std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> image(
      xcb_get_image_reply(display.connection, asked, nullptr), std::free);
  return image && xcb_get_image_data(image.get())[0] > 127;
}

void fake(const Display& display, std::uint8_t type, std::uint8_t detail, int x, int y) {
  xcb_test_fake_input(display.connection, type, detail, XCB_CURRENT_TIME, display.root,
                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
  xcb_flush(display.connection);
}

// Nothing when the click was not seen within two seconds.
double clickOnce(const Display& viewing, int x, int y) {
  constexpr int kBeside = 40;  // where no pointer is drawn
  const bool before = isLight(viewing, x + kBeside, y);
  const auto start = Clock::now();
  fake(viewing, XCB_BUTTON_PRESS, 1, 0, 0);
  fake(viewing, XCB_BUTTON_RELEASE, 1, 0, 0);
  while (isLight(viewing, x + kBeside, y) == before) {
    if (Clock::now() - start > std::chrono::seconds(2)) return -1;
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  return Milliseconds(Clock::now() - start).count();
}

}  // namespace

int main(int count, char** words) {
  if (count != 6) return 2;
  std::thread(changeColourWithEachClick, words[1]).detach();
  const Display viewing(words[2]);
  const int x = std::atoi(words[3]), y = std::atoi(words[4]);
  fake(viewing, XCB_MOTION_NOTIFY, 0, x, y);
  std::this_thread::sleep_for(std::chrono::seconds(3));

  std::vector<double> times;
  int unseen = 0;
  std::mt19937 random(1);
  for (int i = std::atoi(words[5]); i > 0; --i) {
    const auto time = clickOnce(viewing, x, y);
    time < 0 ? void(++unseen) : times.push_back(time);
    // At any moment between two pictures.
    std::this_thread::sleep_for(std::chrono::milliseconds(250 + random() % 100));
  }
  if (times.empty()) return 1;
  std::ranges::sort(times);
  std::printf("median %.1f ms, 95 %% %.1f ms, worst %.1f ms of %zu clicks, %d not seen\n",
              times[times.size() / 2], times[times.size() * 95 / 100], times.back(), times.size(),
              unseen);
  std::fflush(stdout);
  std::_Exit(0);
}
