// Listing of windows and posting of pointer moves, beside bare requests for the same over XCB, in
// turns. Argument: rounds, or "windows" for the program that only opens windows beside.
#include <unistd.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "VelmoraMacNative.h"
#include "support/child_process.h"
#include "support/private_desktop.h"

namespace vlm::bench {
namespace {

constexpr int kWindows = 200;
constexpr int kOurs = 50;
constexpr int kMoves = 20'000;
// What a listing asks the server, some twenty single questions left out: of every window its
// geometry, place, attributes and state for the window server's list; of our own ones the same
// again and the names for the accessibility interface. The processes are asked for separately.
constexpr int kRequests = kWindows * 4 + kOurs * 7;

struct Disconnect {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

struct FreeReply {
  void operator()(void* reply) const { std::free(reply); }
};
template <class T>
using Reply = std::unique_ptr<T, FreeReply>;

Connection connect() {
  Connection connection(xcb_connect(nullptr, nullptr));
  if (xcb_connection_has_error(connection.get()) != 0) throw std::runtime_error("no X server");
  return connection;
}

xcb_window_t rootOf(xcb_connection_t* c) {
  return xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
}

void openWindows(xcb_connection_t* c, int count) {
  for (int i = 0; i < count; ++i) {
    const auto window = xcb_generate_id(c);
    xcb_create_window(c, XCB_COPY_FROM_PARENT, window, rootOf(c), 0, 0, 200, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    const std::string title = "window " + std::to_string(i);
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(title.size()), title.data());
    xcb_map_window(c, window);
  }
  xcb_flush(c);
}

int countManaged(xcb_connection_t* c) {
  const std::string name = "_NET_CLIENT_LIST";
  const auto list = xcb_intern_atom(c, 0, static_cast<std::uint16_t>(name.size()), name.data());
  const Reply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(c, list, nullptr));
  const auto asked =
      xcb_get_property(c, 0, rootOf(c), atom->atom, XCB_ATOM_WINDOW, 0, kWindows + 1);
  const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(c, asked, nullptr));
  return xcb_get_property_value_length(reply.get()) / 4;
}

int listed() {
  std::vector<VlmWindowEntry> entries(kWindows);
  return vlm_window_enumerate(getpid(), entries.data(), kWindows);
}

// The tree of the root and then `count` geometries in one batch.
void askForGeometry(xcb_connection_t* c, int count) {
  const Reply<xcb_query_tree_reply_t> tree(
      xcb_query_tree_reply(c, xcb_query_tree(c, rootOf(c)), nullptr));
  const auto* windows = xcb_query_tree_children(tree.get());
  if (xcb_query_tree_children_length(tree.get()) < kWindows) {
    throw std::runtime_error("windows are missing");
  }
  std::vector<xcb_get_geometry_cookie_t> asked;
  asked.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) asked.push_back(xcb_get_geometry(c, windows[i % kWindows]));
  for (const auto& each : asked) {
    const Reply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(c, each, nullptr));
  }
}

// One write for each move; the question at the end waits until the server has them all.
void postMoves(int count) {
  for (int i = 0; i < count; ++i) vlm_input_mouse_move(i % 800, i % 600);
  vlm_input_cursor_pos(nullptr, nullptr);
}

void postMovesBare(xcb_connection_t* c, int count) {
  for (int i = 0; i < count; ++i) {
    xcb_test_fake_input(c, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, rootOf(c),
                        static_cast<std::int16_t>(i % 800), static_cast<std::int16_t>(i % 600), 0);
    xcb_flush(c);
  }
  const Reply<xcb_query_pointer_reply_t> place(
      xcb_query_pointer_reply(c, xcb_query_pointer(c, rootOf(c)), nullptr));
}

double microseconds(const std::function<void()>& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin)
      .count();
}

struct Medians {
  double ours;
  double bare;
};

Medians inTurns(int rounds, const std::function<void()>& ours, const std::function<void()>& bare) {
  ours();
  bare();
  std::vector<double> times[2];
  for (int i = 0; i < rounds; ++i) {
    times[0].push_back(microseconds(ours));
    times[1].push_back(microseconds(bare));
  }
  for (auto& each : times) std::ranges::nth_element(each, each.begin() + rounds / 2);
  return {times[0][static_cast<std::size_t>(rounds / 2)],
          times[1][static_cast<std::size_t>(rounds / 2)]};
}

// The windows of another process.
void openOthers() {
  const auto connection = connect();
  openWindows(connection.get(), kWindows - kOurs);
  for (;;) pause();
}

void measure(int rounds) {
  const test::PrivateDesktop desktop;
  // The window manager overlooks windows that come while it still sets itself up.
  std::this_thread::sleep_for(std::chrono::seconds(1));
  const test::ChildProcess others({"/proc/self/exe", "windows"});
  const auto bare = connect();
  openWindows(bare.get(), kOurs);
  const auto areManaged = [&] { return countManaged(bare.get()) == kWindows; };
  if (!test::eventually(areManaged, std::chrono::seconds(30)) || listed() != kOurs) {
    throw std::runtime_error("the windows did not come");
  }
  const auto ask = [&](int count) { return [&, count] { askForGeometry(bare.get(), count); }; };
  const auto perWindow = inTurns(
      rounds, [] { listed(); }, ask(kWindows));
  const auto perRequest = inTurns(
      rounds, [] { listed(); }, ask(kRequests));
  const auto moving = inTurns(
      5, [] { postMoves(kMoves); }, [&] { postMovesBare(bare.get(), kMoves); });
  std::printf("| work | ours | bare requests | ours / bare |\n|---|---:|---:|---:|\n");
  const auto row = [](const char* work, const Medians& it) {
    std::printf("| %s | %.0f | %.0f | %.2f |\n", work, it.ours, it.bare, it.ours / it.bare);
  };
  row("50 windows among 200, us; geometry of 200", perWindow);
  row("50 windows among 200, us; as many requests as ours", perRequest);
  std::printf("| pointer moves a second | %.0f | %.0f | %.2f |\n", kMoves / moving.ours * 1e6,
              kMoves / moving.bare * 1e6, moving.bare / moving.ours);
}

}  // namespace
}  // namespace vlm::bench

int main(int argc, char** argv) {
  try {
    if (argc > 1 && std::string(argv[1]) == "windows") vlm::bench::openOthers();
    vlm::bench::measure(argc > 1 ? std::atoi(argv[1]) : 200);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vlm_bench_desktop: %s\n", error.what());
    return 1;
  }
}
