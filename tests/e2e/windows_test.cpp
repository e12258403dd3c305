// Windows of real clients through the public header, as xwininfo, wmctrl and xdotool see them.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <thread>

#include "VelmoraMacNative.h"
#include "e2e/desktop.h"
#include "e2e/frame_recorder.h"
#include "support/canvas.h"
#include "support/private_desktop.h"

namespace vlm::test {
namespace {

const PrivateDesktop::Options kManaged{.width = 1000, .height = 700, .windowManager = true};
const PrivateDesktop::Options kBare{.width = 1000, .height = 700, .windowManager = false};

std::vector<VlmWindowEntry> windowsOf(pid_t pid) {
  std::vector<VlmWindowEntry> entries(64);
  const auto count = vlm_window_enumerate(pid, entries.data(), 64);
  entries.resize(static_cast<std::size_t>(std::max(count, 0)));
  return entries;
}

std::vector<std::uint32_t> idsOf(pid_t pid) {
  std::vector<std::uint32_t> ids;
  for (const auto& entry : windowsOf(pid)) ids.push_back(entry.windowId);
  std::ranges::sort(ids);
  return ids;
}

void expectAsSeen(const VlmWindowEntry& entry) {
  EXPECT_EQ(frameText(entry.left, entry.top, entry.width, entry.height), frameSeen(entry.windowId));
  double x = 0, y = 0, width = 0, height = 0;
  ASSERT_TRUE(vlm_window_get_bounds(entry.windowId, &x, &y, &width, &height));
  EXPECT_EQ(frameText(x, y, width, height), frameSeen(entry.windowId));
}

TEST(Windows, OfAnotherProcessAreAsOtherProgramsSeeThem) {
  PrivateDesktop desktop(kManaged);
  const auto window = desktop.spawnWindow({"xterm", "-geometry", "60x15+120+90"}, "xterm");
  const auto pid = desktop.client(0).pid();
  std::string title;
  for (int i = 0; i < 100; ++i) title += "\xE2\x82\xAC\xC3\xA4";  // 5 bytes, 2 characters
  outputOf(
      {"xprop", "-id", text(window), "-f", "_NET_WM_NAME", "8u", "-set", "_NET_WM_NAME", title});
  // xterm's one top-level window is the one that xdotool finds.
  ASSERT_EQ(idsOf(pid), std::vector{window});
  const auto entry = windowsOf(pid).front();
  expectAsSeen(entry);
  EXPECT_EQ(reinterpret_cast<const char*>(entry.title), title.substr(0, 125));
  EXPECT_EQ(vlm_window_find_pid("XTer"), pid);

  outputOf({"wmctrl", "-i", "-a", text(window)});
  EXPECT_TRUE(eventually([&] { return vlm_frontmost_pid() == pid; }));
  double x = 0, y = 0, width = 0, height = 0;
  ASSERT_TRUE(vlm_window_focused_bounds(pid, &x, &y, &width, &height));
  EXPECT_EQ(frameText(x, y, width, height), frameSeen(window));
  outputOf({"xdotool", "windowminimize", text(window)});
  EXPECT_TRUE(eventually([&] { return idsOf(pid).empty(); }));
  EXPECT_FALSE(vlm_window_focused_bounds(pid, &x, &y, &width, &height));
}

TEST(Windows, WithTheSameFrameHaveNumbersOfTheirOwn) {
  for (const auto& options : {kManaged, kBare}) {
    PrivateDesktop desktop(options);
    const Canvas below("below", {50, 60, 300, 200}, 0x102030),
        above("above", {50, 60, 300, 200}, 0);
    const Canvas aside("aside", {500, 60, 200, 100}, 0x405060);
    if (options.windowManager) {
      // Placed by the window manager, wherever; now one over the other.
      for (const auto* each : {&below, &above}) {
        outputOf({"wmctrl", "-i", "-r", text(each->id()), "-e", "0,50,60,300,200"});
      }
      outputOf({"wmctrl", "-i", "-a", text(aside.id())});
    } else {
      outputOf({"xdotool", "windowfocus", "--sync", text(aside.id())});
    }
    std::vector ids{below.id(), above.id(), aside.id()};
    std::ranges::sort(ids);
    EXPECT_TRUE(eventually([&] {
      const auto entries = windowsOf(getpid());
      const auto main = std::ranges::find(entries, 1, &VlmWindowEntry::isMain);
      return main != entries.end() && main->windowId == aside.id();
    }));
    EXPECT_EQ(idsOf(getpid()), ids);
    EXPECT_EQ(frameSeen(below.id()), frameSeen(above.id()));
    for (const auto& entry : windowsOf(getpid())) {
      expectAsSeen(entry);
      FrameRecorder recorder;
      EXPECT_TRUE(recorder.start(vlm_capture_start_window, entry.windowId, 30, 0, 0));
      EXPECT_GT(recorder.last().width, 0);
    }
    // Some managers keep no lists.
    outputOf(
        {"xprop", "-root", "-remove", "_NET_CLIENT_LIST", "-remove", "_NET_CLIENT_LIST_STACKING"});
    EXPECT_EQ(idsOf(getpid()), ids);
  }
}

struct Event {
  int32_t code;
  std::string frame;
};

void noteEvent(int32_t code, double x, double y, double width, double height, void* events) {
  static_cast<std::vector<Event>*>(events)->push_back({code, frameText(x, y, width, height)});
}

struct TitleCase {
  const char* type;
  std::string bytes;
  const char* title;
};

TEST(Windows, HaveTitlesInUtf8WhateverTheirEncoding) {
  PrivateDesktop desktop(kBare);
  const Canvas canvas("titled", {0, 0, 200, 100}, 0);
  auto* connection = xcb_connect(nullptr, nullptr);
  const TitleCase cases[] = {
      {"STRING",
       "Gr\xFC\xDF"
       "e",
       "Grüße"},
      {"COMPOUND_TEXT",
       "Gr\xFC\xDF"
       "e \x1B-b\xA4",
       "Grüße €"},
      {"COMPOUND_TEXT", "a\x1B%G\xE2\x82\xAC\x1B%@b", "a€b"},
      {"COMPOUND_TEXT", "\x1B%/1\x80\x8Ciso8859-15\x02\xA4!", "€!"},
      {"COMPOUND_TEXT", "\x1B$(B\x46\x7C\x1B(B x \x1B-L\xBF", "日 x П"},
      {"COMPOUND_TEXT", "\x1B$)C\xB0\xA1 \x9B\x31]z", "가 z"},
      {"COMPOUND_TEXT", "cut \x1B", "cut "},
      {"COMPOUND_TEXT",
       "\x1B%/2\xFF\xFF"
       "none",
       ""},
      {"UTF8_STRING",
       "a\xFF\xE2\x82"
       "b",
       "a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"
       "b"},
  };
  for (const auto& each : cases) {
    auto* atom = xcb_intern_atom_reply(
        connection,
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(each.type)),
                        each.type),
        nullptr);
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, canvas.id(), XCB_ATOM_WM_NAME,
                        atom->atom, 8, static_cast<std::uint32_t>(each.bytes.size()),
                        each.bytes.data());
    free(atom);
    free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    EXPECT_STREQ(reinterpret_cast<const char*>(windowsOf(getpid()).at(0).title), each.title);
  }
  xcb_disconnect(connection);
}

TEST(Windows, AreListedWhileTheyMove) {
  PrivateDesktop desktop(kBare);
  const Canvas canvas("moving", {0, 0, 200, 100}, 0);
  ASSERT_EQ(idsOf(getpid()).size(), 1U);
  std::atomic<bool> done = false;
  std::thread restless([&] {
    auto* mover = xcb_connect(nullptr, nullptr);
    for (std::uint32_t i = 0; !done; ++i) {
      const std::uint32_t place[] = {i * 37 % 700, i * 53 % 500};
      xcb_configure_window(mover, canvas.id(), XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place);
      free(xcb_get_input_focus_reply(mover, xcb_get_input_focus(mover), nullptr));
    }
    xcb_disconnect(mover);
  });
  int missing = 0;
  for (int i = 0; i < 1000; ++i) missing += idsOf(getpid()).empty() ? 1 : 0;
  done = true;
  restless.join();
  EXPECT_EQ(missing, 0);
}

// As a toolkit that draws the decoration of its windows itself says it.
void setShadow(std::uint32_t window, const char* sides) {
  outputOf({"xprop", "-id", text(window), "-f", "_GTK_FRAME_EXTENTS", "32c", "-set",
            "_GTK_FRAME_EXTENTS", sides});
}

TEST(Windows, EndWhereTheirInvisibleShadowBegins) {
  PrivateDesktop desktop(kBare);
  Canvas canvas("decorated", {100, 100, 320, 240}, 0xE02020);
  canvas.fill({26, 23, 268, 188}, 0x707070);
  std::vector<Event> events;
  void* tracker = vlm_window_track(getpid(), noteEvent, &events);
  FrameRecorder recorder, application;
  ASSERT_TRUE(application.start(vlm_capture_start_app, "decorated", 30, 0, 0));
  const std::string frame = "126,123 268x188";
  setShadow(canvas.id(), "26, 26, 23, 29");
  EXPECT_TRUE(pumpUntil([&] { return !events.empty() && events.back().frame == frame; }));
  vlm_window_untrack(tracker);
  const auto entry = windowsOf(getpid()).at(0);
  EXPECT_EQ(frameText(entry.left, entry.top, entry.width, entry.height), frame);
  double x = 0, y = 0, width = 0, height = 0;
  ASSERT_TRUE(vlm_window_get_bounds(canvas.id(), &x, &y, &width, &height));
  EXPECT_EQ(frameText(x, y, width, height), frame);
  ASSERT_TRUE(recorder.start(vlm_capture_start_window, canvas.id(), 30, 0, 0));
  ASSERT_TRUE(vlm_capture_bounds(recorder.capture(), &x, &y, &width, &height));
  EXPECT_EQ(frameText(x, y, width, height), frame);
  // All of it is grey, and the shadow is nowhere.
  const auto grey = [](const Frame& picture, int left, int top) {
    const auto at = [&](int column, int row) {
      return picture.pixels.at(static_cast<std::size_t>(top + row) * picture.width + left + column);
    };
    return at(0, 0) == at(134, 94) && at(267, 187) == at(134, 94) && at(134, 94) > 100;
  };
  EXPECT_TRUE(grey(recorder.last(), 0, 0));
  EXPECT_TRUE(
      grey(application.waitUntil([&](const Frame& f) { return f.pixels[110 * 1000 + 110] == 16; }),
           126, 123));
  EXPECT_EQ(application.last().pixels[110 * 1000 + 110], 16);
  // What a hostile client says is as good as nothing.
  for (const char* sides : {"200, 200, 0, 0", "4294967295, 1, 0, 0", "1, 2, 3"}) {
    setShadow(canvas.id(), sides);
    ASSERT_TRUE(vlm_window_get_bounds(canvas.id(), &x, &y, &width, &height));
    EXPECT_EQ(frameText(x, y, width, height), "100,100 320x240") << sides;
  }
}

TEST(Windows, MayVanishAtAnyMoment) {
  PrivateDesktop desktop(kManaged);
  // Connects before the thread does: two programs in one process can't do it at the same time.
  EXPECT_TRUE(windowsOf(getpid()).empty());
  std::atomic<bool> done = false;
  std::thread restless([&] {
    while (!done) const Canvas shortLived("short", {10, 10, 50, 50}, 0);
  });
  for (int i = 0; i < 300; ++i) {
    for (const auto& entry : windowsOf(getpid())) {
      vlm_window_get_bounds(entry.windowId, nullptr, nullptr, nullptr, nullptr);
    }
  }
  done = true;
  restless.join();
  desktop.killServer();
  EXPECT_EQ(vlm_window_find_pid("any"), 0);
  EXPECT_TRUE(windowsOf(getpid()).empty());
  EXPECT_EQ(vlm_window_track(getpid(), noteEvent, nullptr), nullptr);
  EXPECT_FALSE(vlm_input_cursor_pos(nullptr, nullptr));
}

void moveAThousandTimes(xcb_window_t window) {
  auto* connection = xcb_connect(nullptr, nullptr);
  for (std::uint32_t i = 1; i <= 1000; ++i) {
    const std::uint32_t place[] = {i % 500, i % 300};
    xcb_configure_window(connection, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place);
  }
  free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
  xcb_disconnect(connection);
}

// Of far more moves than are read the last one is reported, and no memory is kept for the others.
void expectLastPlace(xcb_window_t window, const std::vector<Event>& events) {
  std::string last;
  EXPECT_TRUE(pumpUntil([&] {
    const auto now = frameSeen(window);
    const bool still = now == std::exchange(last, now);
    return still && !events.empty() && events.back().frame == now;
  })) << last
      << ", reported " << (events.empty() ? "nothing" : events.back().frame);
  EXPECT_LE(events.size(), 1000U);
}

// While a window never rests, each turn of the loop ends all the same.
void moveWithoutRest(xcb_window_t window) {
  std::atomic<bool> done = false;
  std::thread restless([&] {
    auto* mover = xcb_connect(nullptr, nullptr);
    for (std::uint32_t i = 0; !done; ++i) {
      const std::uint32_t place = i % 100;
      xcb_configure_window(mover, window, XCB_CONFIG_WINDOW_X, &place);
      xcb_flush(mover);
    }
    xcb_disconnect(mover);
  });
  for (int turn = 0; turn < 10; ++turn) g_main_context_iteration(nullptr, TRUE);
  done = true;
  restless.join();
}

TEST(Tracker, ReportsWhatHappensInOrder) {
  PrivateDesktop desktop(kManaged);
  const auto window = desktop.spawnWindow({"xterm", "-geometry", "40x10+50+50"}, "xterm");
  const Canvas other("other", {500, 300, 200, 100}, 0);
  outputOf({"wmctrl", "-i", "-a", text(window)});
  ASSERT_TRUE(eventually([&] { return vlm_frontmost_pid() == desktop.client(0).pid(); }));

  std::vector<Event> events;
  void* tracker = vlm_window_track(desktop.client(0).pid(), noteEvent, &events);
  ASSERT_NE(tracker, nullptr);
  const auto expectNext = [&](const std::vector<std::string>& command, int32_t code) {
    events.clear();
    outputOf(command);
    std::string frame;
    const bool came = pumpUntil([&] {
      const auto found = std::ranges::find(events, code, &Event::code);
      if (found == events.end()) return false;
      frame = found->frame;
      return true;
    });
    EXPECT_TRUE(came) << code;
    // Where the window is afterwards, until it is closed.
    EXPECT_EQ(frame, code == 4 ? "0,0 0x0" : frameSeen(window)) << code;
  };
  expectNext({"xdotool", "windowmove", "--sync", text(window), "200", "150"}, 0);
  expectNext({"xdotool", "windowsize", "--sync", text(window), "400", "300"}, 1);
  expectNext({"wmctrl", "-i", "-a", text(other.id())}, 3);
  expectNext({"wmctrl", "-i", "-a", text(window)}, 2);

  // Dragged, the window is followed before the button is released.
  events.clear();
  // By its title, which every window manager takes.
  outputOf({"xdotool", "mousemove", "--window", text(window), "--", "90", "-8", "mousedown", "1"});
  EXPECT_TRUE(pumpUntil([&] {
    outputOf({"xdotool", "mousemove_relative", "5", "4"});
    return !events.empty();
  }));
  outputOf({"xdotool", "mouseup", "1"});

  events.clear();
  moveAThousandTimes(window);
  expectLastPlace(window, events);
  moveWithoutRest(window);
  EXPECT_FALSE(events.empty());
  ASSERT_TRUE(pumpUntil([] { return g_main_context_pending(nullptr) == FALSE; }));

  expectNext({"wmctrl", "-i", "-c", text(window)}, 4);
  vlm_window_untrack(tracker);
  events.clear();
  outputOf({"wmctrl", "-i", "-a", text(other.id())});
  EXPECT_FALSE(g_main_context_iteration(nullptr, FALSE));
  EXPECT_TRUE(events.empty());
}

}  // namespace
}  // namespace vlm::test
