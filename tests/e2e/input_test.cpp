// Input posted into real clients, and key presses of another program, through the public header.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <regex>
#include <thread>

#include "VelmoraMacNative.h"
#include "e2e/desktop.h"
#include "support/canvas.h"
#include "support/private_desktop.h"
#include "support/scratch_folder.h"

namespace vlm::test {
namespace {

using Lines = std::vector<std::string>;

const PrivateDesktop::Options kManaged{.width = 1000, .height = 700, .windowManager = true};
constexpr std::uint64_t kShift = 0x20000, kControl = 0x40000, kOption = 0x80000,
                        kRightOption = 0x40, kCommand = 0x100000;
constexpr std::uint16_t kKeyA = 0, kKeyB = 11, kKeyE = 14;

// A client with the keyboard, whose output goes to a file.
class Listener {
 public:
  // OUT in the command is replaced by the file.
  Listener(PrivateDesktop& desktop, std::string command, const std::string& window) {
    command.replace(command.find("OUT"), 3, folder_.file("heard"));
    const auto id = desktop.spawnWindow({"sh", "-c", command}, window);
    outputOf({"wmctrl", "-i", "-a", text(id)});
    outputOf({"xdotool", "windowfocus", "--sync", text(id)});
    outputOf({"xdotool", "mousemove", "--window", text(id), "20", "20"});
  }

  std::string heard() const { return contentsOf(folder_.file("heard")); }

 private:
  const ScratchFolder folder_;
};

TEST(Typing, ArrivesAsItWasMeantUnderEachLayout) {
  const std::string everything =
      "The quick brown fox, JUMPS over 13 lazy dogs! `~1!2@3#4$5%6^7&8*9(0)-_=+[{]}\\|;:'\",<.>/?";
  const std::string same = "The quick brown fox JUMPS over 13 lad dogs! 14 $ % 5,5. WAVE 067289";
  for (const auto& [layout, line] : {std::pair("us", everything), std::pair("de", same)}) {
    PrivateDesktop desktop(kManaged);
    outputOf({"setxkbmap", layout});
    {
      const Listener terminal(desktop, "exec xterm -e sh -c 'stty -icanon -echo; cat >OUT'",
                              "xterm");
      outputOf({VLM_PROGRAM, "type", line});
      eventually([&, &typed = line] { return terminal.heard() == typed; });
      EXPECT_EQ(terminal.heard(), line) << layout << ", xterm";
    }
    const Listener entry(desktop, "GDK_BACKEND=x11 exec yad --entry --title=asked >OUT", "asked");
    outputOf({VLM_PROGRAM, "type", line + "\n"});
    eventually([&, &typed = line] { return entry.heard() == typed + "\n"; });
    EXPECT_EQ(entry.heard(), line + "\n") << layout << ", GTK";
  }
}

// What xev reports, one line each: "down A 0x1", "button 4". Those of modifiers are left out.
Lines reported(const Listener& xev) {
  static const std::regex kEvent(
      "(KeyPress|KeyRelease|ButtonPress) event[^]*?state (0x[0-9a-f]+), "
      "(?:keycode \\d+ \\(keysym 0x[0-9a-f]+, (\\w+)\\)|button (\\d))");
  static const std::regex kModifier("(Shift|Control|Alt|Super|Caps|ISO)_\\w+");
  Lines lines;
  const auto output = xev.heard();
  for (std::sregex_iterator at(output.begin(), output.end(), kEvent), end; at != end; ++at) {
    const auto& event = *at;
    if (event[4].matched) {
      lines.push_back("button " + event[4].str());
    } else if (!std::regex_match(event[3].str(), kModifier)) {
      lines.push_back((event[1] == "KeyPress" ? "down " : "up ") + event[3].str() + " " +
                      event[2].str());
    }
  }
  return lines;
}

void expectReported(const Listener& xev, Lines& before, const Lines& more) {
  before.insert(before.end(), more.begin(), more.end());
  eventually([&] { return reported(xev) == before; }, std::chrono::seconds(3));
  EXPECT_EQ(reported(xev), before);
}

TEST(Injection, IsSeenWithExactlyTheFlagsGiven) {
  PrivateDesktop desktop(kManaged);
  const Listener xev(desktop, "exec stdbuf -oL xev -event keyboard >OUT", "Event Tester");
  Lines all;
  const auto press = [&](std::uint64_t flags) {
    vlm_input_key(kKeyA, true, flags);
    vlm_input_key(kKeyA, false, flags);
  };
  const auto seen = [](const std::string& key, const std::string& state) {
    return Lines{"down " + key + " " + state, "up " + key + " " + state};
  };
  const std::tuple<std::uint64_t, std::string, std::string> cases[] = {
      {0, "a", "0x0"},       {kShift, "A", "0x1"},    {kControl, "a", "0x4"},
      {kOption, "a", "0x8"}, {kCommand, "a", "0x40"}, {kShift | kCommand, "A", "0x41"}};
  for (const auto& [flags, key, state] : cases) {
    press(flags);
    expectReported(xev, all, seen(key, state));
  }
  // Modifiers that are held or locked are lifted for the key, and are back afterwards.
  outputOf({"xdotool", "keydown", "shift", "keydown", "ctrl", "key", "Caps_Lock"});
  press(0);
  expectReported(xev, all, seen("a", "0x0"));
  press(kControl);
  expectReported(xev, all, seen("a", "0x4"));
  outputOf({"xdotool", "key", "b"});
  expectReported(xev, all, seen("b", "0x7"));
  outputOf({"xdotool", "keyup", "shift", "keyup", "ctrl", "key", "Caps_Lock"});
  // A modifier posted as a key is held until it is released.
  vlm_input_key(0x38, true, kShift);
  outputOf({"xdotool", "key", "b"});
  vlm_input_key(0x38, false, 0);
  expectReported(xev, all, seen("B", "0x1"));
  press(0);
  expectReported(xev, all, seen("a", "0x0"));
}

TEST(Injection, ButtonsAndWheelFollowTheUsersMapping) {
  PrivateDesktop desktop(kManaged);
  const Listener xev(desktop, "exec stdbuf -oL xev -event button >OUT", "Event Tester");
  Lines all;
  double x = 0, y = 0;
  ASSERT_TRUE(vlm_input_cursor_pos(&x, &y));
  for (const int button : {0, 1, 2}) {
    vlm_input_mouse_button(button, true, x + 5, y + 5);
    vlm_input_mouse_button(button, false, x + 5, y + 5);
  }
  expectReported(xev, all, {"button 1", "button 3", "button 2"});
  outputOf({"xmodmap", "-e", "pointer = 3 2 1 5 4"});  // left-handed, and scrolling the other way
  vlm_input_mouse_button(0, true, x + 5, y + 5);
  vlm_input_mouse_button(0, false, x + 5, y + 5);
  expectReported(xev, all, {"button 1"});
  vlm_input_mouse_wheel(0, 40);
  vlm_input_mouse_wheel(0, -80);
  expectReported(xev, all, {"button 4", "button 5", "button 5"});
  vlm_input_mouse_wheel(0, 30);
  vlm_input_mouse_wheel(0, -40);  // what was left over the other way takes nothing of it
  expectReported(xev, all, {"button 5"});
  for (int i = 0; i < 16; ++i) vlm_input_mouse_wheel(10, 5);  // 160 and 80 pixels
  const auto before = all.size();
  eventually([&] { return reported(xev).size() >= before + 6; });
  all = reported(xev);
  EXPECT_EQ(std::count(all.begin() + before, all.end(), "button 6"), 4);
  EXPECT_EQ(std::count(all.begin() + before, all.end(), "button 4"), 2);
}

TEST(Injection, APressKeepsItsModifiersUntilItsRelease) {
  PrivateDesktop desktop(kManaged);
  const Listener xev(desktop, "exec stdbuf -oL xev -event keyboard >OUT", "Event Tester");
  Lines all;
  outputOf({"xset", "r", "off"});
  for (int i = 0; i < 6; ++i) vlm_input_key(kKeyA, true, 0);
  vlm_input_key(kKeyA, false, 0);
  eventually([&] { return timesIn(xev.heard(), "KeyPress event") >= 6; });
  EXPECT_EQ(std::ranges::count(reported(xev), "down a 0x0"), 6) << "one press a call";
  all = reported(xev);
  const std::tuple<std::uint16_t, bool, std::uint64_t, std::string> posts[] = {
      {kKeyA, true, kShift, "down A 0x1"},   {kKeyB, true, 0, "down b 0x0"},
      {kKeyA, false, kShift, "up a 0x0"},    {kKeyB, false, kOption, "up b 0x0"},
      {kKeyA, true, kShift, "down A 0x1"},   {kKeyB, true, kShift, "down B 0x1"},
      {kKeyA, false, kShift, "up A 0x1"},    {kKeyB, false, kShift, "up B 0x1"},
      {kKeyA, true, kControl, "down a 0x4"}, {kKeyA, false, 0, "up a 0x0"},
      {kKeyB, true, kOption, "down b 0x8"},  {kKeyB, false, kOption, "up b 0x8"}};
  for (const auto& [key, down, flags, seen] : posts) {
    vlm_input_key(key, down, flags);
    expectReported(xev, all, {seen});
  }
  EXPECT_EQ(timesIn(xev.heard(), "Alt_L)"), 2U) << "pressed once and released once";
  outputOf({"xset", "r", "on"});
  outputOf({"xset", "r", "rate", "200", "50"});
  vlm_input_key(kKeyA, true, kShift);
  EXPECT_TRUE(eventually([&] { return reported(xev).size() > all.size() + 6; })) << "repeats";
  vlm_input_key(kKeyA, false, kShift);
  vlm_input_key(kKeyB, true, 0);
  eventually([&] { return reported(xev).back() == "down b 0x0"; });
  const auto more = reported(xev);
  vlm_input_key(kKeyB, false, 0);
  for (auto i = all.size(); i + 1 < more.size(); ++i) EXPECT_TRUE(more[i].ends_with("A 0x1")) << i;
}

TEST(Injection, AltGrIsTheRightOptionKey) {
  PrivateDesktop desktop(kManaged);
  const Listener xev(desktop, "exec stdbuf -oL xev -event keyboard >OUT", "Event Tester");
  const auto pressed = [&](const auto& press) {
    const auto before = reported(xev).size();
    press();
    eventually([&] { return reported(xev).size() >= before + 2; });
    return reported(xev).back();
  };
  const auto ours = [&](std::uint64_t flags) {
    return pressed([&] {
      vlm_input_key(kKeyE, true, flags);
      vlm_input_key(kKeyE, false, flags);
    });
  };
  for (const char* layout : {"de", "fr", "gb", "pl", "us -variant intl"}) {
    SCOPED_TRACE(layout);
    outputOf({"sh", "-c", std::string("setxkbmap ") + layout});
    const auto asTyped = pressed([] {
      outputOf(
          {"xdotool", "keydown", "ISO_Level3_Shift", "key", "26", "keyup", "ISO_Level3_Shift"});
    });
    EXPECT_NE(asTyped, "up e 0x0");
    EXPECT_EQ(ours(kOption | kRightOption), asTyped);
    EXPECT_EQ(ours(kOption), "up e 0x8");
    vlm_input_key(0x3D, true, kOption | kRightOption);
    EXPECT_EQ(ours(kOption), asTyped);
    EXPECT_EQ(ours(0), "up e 0x0");
    vlm_input_key(0x3D, false, 0);
  }
}

TEST(Injection, MovesThePointerAsOthersSeeIt) {
  PrivateDesktop desktop(kManaged);
  const auto seen = [] { return outputOf({"xdotool", "getmouselocation"}); };
  for (const bool warp : {false, true}) {
    const double x = warp ? 700 : 310.9, y = warp ? 0 : 220.2;
    warp ? vlm_input_warp_cursor(x, y) : vlm_input_mouse_move(x, y);
    const auto place = "x:" + std::to_string(static_cast<int>(x)) +
                       " y:" + std::to_string(static_cast<int>(y)) + " ";
    EXPECT_TRUE(eventually([&] { return seen().starts_with(place); })) << seen();
    double nowX = 0, nowY = 0;
    EXPECT_TRUE(vlm_input_cursor_pos(&nowX, &nowY));
    EXPECT_EQ(frameText(nowX, nowY, 0, 0), frameText(x, y, 0, 0));
  }
}

std::vector<int32_t> keys;
std::vector<int32_t> otherKeys;
void noteKey(int32_t key) {
  keys.push_back(key);
}
void noteOtherKey(int32_t key) {
  otherKeys.push_back(key);
}

TEST(HotKeys, ComeOnceWhoeverHasTheKeyboard) {
  PrivateDesktop desktop(kManaged);
  outputOf({"xset", "r", "rate", "200", "50"});
  const auto other = desktop.spawnWindow({"xterm"}, "xterm");
  const Canvas ours("ours", {500, 300, 200, 100}, 0);
  ASSERT_TRUE(vlm_hotkey_monitor_start(noteOtherKey));
  ASSERT_TRUE(vlm_hotkey_monitor_start(noteKey));
  const auto pressed = [](Lines command, const std::vector<int32_t>& codes) {
    keys.clear();
    command.insert(command.begin(), {"xdotool", "key"});
    outputOf(command);
    pumpUntil([&] { return keys.size() >= codes.size(); });
    EXPECT_EQ(keys, codes);
  };
  for (const auto window : {other, ours.id()}) {
    outputOf({"wmctrl", "-i", "-a", text(window)});
    const bool isOurs = window == ours.id();
    ASSERT_TRUE(eventually([&] { return (vlm_frontmost_pid() == getpid()) == isOurs; }));
    pressed({"a", "shift+1", "F1", "Return", "Left", "KP_Enter", "minus", "Caps_Lock", "Caps_Lock",
             "super+space"},
            {65, 49, 0x70, 13, 37, 76, 27, 32});
  }
  keys.clear();
  outputOf({"xdotool", "keydown", "x"});
  EXPECT_TRUE(pumpUntil([] { return keys.size() > 3; }));
  outputOf({"xdotool", "keyup", "x", "key", "End"});
  EXPECT_TRUE(pumpUntil([] { return !keys.empty() && keys.back() == 0x23; }));
  EXPECT_EQ(std::ranges::count(keys, 'X') + 1, std::ssize(keys));
  EXPECT_TRUE(otherKeys.empty());
  outputOf({"setxkbmap", "de"});
  pressed({"ISO_Level3_Shift", "q"}, {'Q'});

  std::thread([] { EXPECT_TRUE(vlm_hotkey_monitor_start(noteOtherKey)); }).join();
  runMainLoop();
  pressed({"b"}, {});
  EXPECT_TRUE(pumpUntil([] { return otherKeys == std::vector<int32_t>{66}; }));
  vlm_hotkey_monitor_stop();
  pressed({"b"}, {});
  EXPECT_EQ(otherKeys.size(), 1U);
}

TEST(MainLoop, ThatNothingServesIsLoggedOnce) {
  PrivateDesktop desktop(kManaged);
  testing::internal::CaptureStderr();
  ASSERT_TRUE(vlm_hotkey_monitor_start(noteKey));
  std::this_thread::sleep_for(std::chrono::seconds(4));
  std::thread([] { EXPECT_TRUE(vlm_hotkey_monitor_start(noteKey)); }).join();
  std::this_thread::sleep_for(std::chrono::seconds(4));
  EXPECT_EQ(timesIn(testing::internal::GetCapturedStderr(), "[vlm] nothing serves the main loop"),
            1U);
  keys.clear();
  outputOf({"xdotool", "key", "a"});
  EXPECT_TRUE(pumpUntil([] { return keys == std::vector<int32_t>{65}; }));
  vlm_hotkey_monitor_stop();
}

}  // namespace
}  // namespace vlm::test
