#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "stage.h"

namespace vlm::test {
namespace {

Machine* noted = nullptr;
void noteKey(int32_t key) {
  noted->journal.note("key " + std::to_string(key));
}
void noteOther(int32_t key) {
  noted->journal.note("other " + std::to_string(key));
}

TEST(Injection, PostsOneEventACall) {
  Machine machine;
  const auto posted = [&](auto call) {
    call();
    return machine.journal.take("CGEventPost(");
  };
  EXPECT_EQ(posted([] { vlm_input_mouse_move(1.5, -2); }),
            Lines{"CGEventPost(0, [mouse, 5, (1.5, -2.0), 0])"});
  const std::pair<int, std::pair<std::string, std::string>> buttons[] = {
      {0, {"1", "2"}}, {1, {"3", "4"}}, {2, {"25", "26"}}, {3, {"1", "2"}}, {-1, {"1", "2"}}};
  for (const auto& [button, types] : buttons) {
    const std::string number = button == 1 || button == 2 ? std::to_string(button) : "0";
    for (const bool down : {true, false}) {
      EXPECT_EQ(posted([&, which = button] { vlm_input_mouse_button(which, down, 3, 4); }),
                Lines{"CGEventPost(0, [mouse, " + (down ? types.first : types.second) +
                      ", (3.0, 4.0), " + number + "])"});
    }
  }
  const std::tuple<double, double, std::string> wheels[] = {{0, 2.9, "2, 0"},
                                                            {-2.9, 0, "0, -2"},
                                                            {0.4, -0.4, "0, 0"},
                                                            {NAN, 1e12, "2147483647, 0"},
                                                            {-INFINITY, 1, "1, -2147483648"}};
  for (const auto& [horizontal, vertical, amounts] : wheels) {
    EXPECT_EQ(posted([h = horizontal, v = vertical] { vlm_input_mouse_wheel(h, v); }),
              Lines{"CGEventPost(0, [wheel, 0, 2, " + amounts + ", 0])"});
  }
  EXPECT_EQ(posted([] { vlm_input_key(0, true, 0); }), Lines{"CGEventPost(0, [key, 0, true, 0])"});
  EXPECT_EQ(posted([] { vlm_input_key(65535, false, 0x120000); }),
            Lines{"CGEventPost(0, [key, 65535, false, 1179648])"});
  for (const char* maker : {"CGEventCreateMouseEvent", "CGEventCreateScrollWheelEvent2",
                            "CGEventCreateKeyboardEvent"}) {
    machine.answerNothing(maker);
  }
  EXPECT_EQ(posted([] {
              vlm_input_mouse_move(1, 2);
              vlm_input_mouse_wheel(1, 2);
              vlm_input_key(1, true, 2);
            }),
            Lines{});
  vlm_input_warp_cursor(5, 6);
  EXPECT_EQ(machine.journal.take(), (Lines{"CGWarpMouseCursorPosition((5.0, 6.0))",
                                           "CGAssociateMouseAndMouseCursorPosition(true)"}));
}

TEST(HotKeys, TranslateByPlaceOnTheKeyboard) {
  Machine machine;
  noted = &machine;
  ASSERT_TRUE(vlm_hotkey_monitor_start(noteKey));
  std::map<int, int> expected;
  const auto row = [&](std::initializer_list<int> keys, int first) {
    for (const int key : keys) expected[key] = first++;
  };
  row({0,  11, 8,  2,  14, 3, 5,  4,  34, 38, 40, 37, 46,
       45, 31, 35, 12, 15, 1, 17, 32, 9,  13, 7,  16, 6},
      'A');
  row({29, 18, 19, 20, 21, 23, 22, 26, 28, 25}, '0');
  row({122, 120, 99, 118, 96, 97, 98, 100, 101, 109, 103, 111, 105, 107, 113}, 0x70);
  row({49, 116, 121, 119, 115, 123, 126, 124, 125}, 0x20);  // space, pages, end, home, arrows
  expected.insert({{114, 45}, {117, 46}, {36, 13}, {48, 9}, {53, 27}, {51, 8}});
  EXPECT_EQ(expected.size(), 66U);
  for (const int key :
       {10, 24, 27, 30, 47, 50, 57, 65, 71, 76, 90, 106, 110, 127, 128, 255, 65535}) {
    expected[key] = key;
  }
  for (const auto& [key, code] : expected) {
    machine.desktop.press(static_cast<std::uint16_t>(key), key % 2 == 0);
    machine.run();
    EXPECT_EQ(machine.journal.take("key"), Lines{"key " + std::to_string(code)});
  }
  vlm_hotkey_monitor_stop();
}

TEST(HotKeys, OnePairOfMonitorsOnTheMainThread) {
  Machine machine;
  noted = &machine;
  const auto pressed = [&] {
    machine.desktop.press(0, true);
    machine.desktop.press(0, false);
    machine.run();
    return only({"key", "other"}, machine.journal.take());
  };
  const Lines pair{"NSEvent addGlobalMonitor(1024)", "NSEvent addLocalMonitor(1024)"};
  vlm_hotkey_monitor_stop();
  EXPECT_EQ(machine.journal.take(), Lines{});
  EXPECT_TRUE(vlm_hotkey_monitor_start(noteKey));
  EXPECT_EQ(machine.journal.take(), pair);
  EXPECT_FALSE(vlm_hotkey_monitor_start(nullptr));
  EXPECT_EQ(machine.journal.take(), Lines{});
  EXPECT_EQ(pressed(), (Lines{"key 65", "key 65"}));
  EXPECT_EQ(machine.desktop.passed, 1) << "what goes to this application goes on to it";
  machine.throwFrom("NSEvent addGlobalMonitor");
  EXPECT_FALSE(vlm_hotkey_monitor_start(noteKey)) << "no memory for a monitor";
  EXPECT_TRUE(vlm_hotkey_monitor_start(noteKey));
  machine.journal.take();
  EXPECT_TRUE(vlm_hotkey_monitor_start(noteOther));
  EXPECT_EQ(machine.journal.take("NSEvent").size(), 4U);
  EXPECT_EQ(pressed(), (Lines{"other 65", "other 65"}));

  machine.setOnMainThread(false);
  EXPECT_TRUE(vlm_hotkey_monitor_start(noteKey));
  vlm_hotkey_monitor_stop();
  platform::scripted::Fault refused;
  refused.nothing = true;
  machine.journal.script("NSEvent addLocalMonitor", refused, 1, 1);
  EXPECT_TRUE(vlm_hotkey_monitor_start(noteKey));
  EXPECT_EQ(machine.journal.take(), Lines{}) << "nothing is touched off the main thread";
  EXPECT_EQ(pressed(), Lines{"key 65"});
  vlm_hotkey_monitor_stop();
  machine.run();
  EXPECT_EQ(machine.journal.take(), Lines{"NSEvent removeMonitor()"});
  EXPECT_EQ(pressed(), Lines{});
}

}  // namespace
}  // namespace vlm::test
