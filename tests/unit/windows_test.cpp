#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>

#include "platform/application_services.h"
#include "stage.h"

namespace vlm::test {
namespace {

using platform::AXUIElement;
using platform::CGPoint;
using platform::CGSize;

constexpr int kPid = 7;

Ref<AXUIElement> element(const std::string& name, CGPoint position, CGSize size,
                         const CFDictionary& more = {}) {
  CFDictionary attributes = more;
  attributes.emplace("AXPosition", position);
  attributes.emplace("AXSize", size);
  return platform::makeRef<AXUIElement>(name, attributes);
}

CFValue serverWindow(std::uint32_t number, CFArray frame, const CFValue& pid = kPid) {
  return CFDictionary{
      {"kCGWindowOwnerPID", pid},
      {"kCGWindowNumber", number},
      {"kCGWindowBounds",
       CFDictionary{{"X", frame[0]}, {"Y", frame[1]}, {"Width", frame[2]}, {"Height", frame[3]}}}};
}

struct Desktop {
  Desktop(CFArray server, const std::vector<Ref<AXUIElement>>& windows) {
    machine.desktop.windowList = std::move(server);
    machine.desktop.applications[kPid]["AXWindows"] = CFArray(windows.begin(), windows.end());
  }

  // "9 (1,2 30x40) main title" for each entry.
  Lines enumerate(std::size_t capacity = 8) {
    std::array<VlmWindowEntry, 8> entries;
    std::memset(entries.data(), 0xEE, sizeof entries);
    const auto untouched = entries;
    const auto count = vlm_window_enumerate(kPid, entries.data(), static_cast<int32_t>(capacity));
    Lines lines;
    for (int i = 0; i < count; ++i) lines.push_back(line(entries[i]));
    EXPECT_EQ(std::memcmp(entries.data() + count, untouched.data(),
                          sizeof(VlmWindowEntry) * (entries.size() - count)),
              0);
    return lines;
  }

  static std::string line(const VlmWindowEntry& entry) {
    const auto text = [](auto number) { return std::to_string(number); };
    return text(entry.windowId) + " (" + text(entry.left) + "," + text(entry.top) + " " +
           text(entry.width) + "x" + text(entry.height) + ")" + (entry.isMain == 1 ? " main" : "") +
           (entry.title[0] != 0 ? " " : "") + reinterpret_cast<const char*>(entry.title);
  }

  Machine machine;
};

TEST(Enumeration, PairsEachWindowWithTheNearestOfItsProcess) {
  const auto first = element("first", {10, 20}, {300, 200}, {{"AXTitle", "one"}});
  const auto twin = element("twin", {10, 20}, {300, 200}, {{"AXMinimized", "not a truth value"}});
  const auto far = element("far", {510.9, -20.9}, {300.9, 200.9});
  const auto farther = element("farther", {900, 0}, {50, 50});
  Desktop desktop({serverWindow(1, {10, 20, 300, 200}, 8),  // of another process
                   serverWindow(2, {500, -20, 300, 200}), serverWindow(3, {11.9, 20.0, 300, 200}),
                   serverWindow(4, {10, 20, 300, 200}), serverWindow(5, {10, 20, 300, 200}),
                   serverWindow(6, {905, 4, 50, 50})},
                  {first, twin, far, farther});
  desktop.machine.desktop.applications[kPid]["AXMainWindow"] = element("twin", {}, {});
  EXPECT_EQ(desktop.enumerate(),
            (Lines{"4 (10,20 300x200) one", "5 (10,20 300x200) main"}));  // 10 and 9 away: none
  desktop.machine.desktop.windowList->push_back(serverWindow(7, {902, 2, 52, 48}));
  desktop.machine.desktop.windowList->push_back(serverWindow(8, {502, -20, 300, 200}));
  EXPECT_EQ(desktop.enumerate(), (Lines{"4 (10,20 300x200) one", "5 (10,20 300x200) main",
                                        "8 (510,-20 300x200)", "7 (900,0 50x50)"}));
  EXPECT_EQ(desktop.enumerate(1), Lines{"4 (10,20 300x200) one"});
  // Only the width differs: from one by 3, from the other by 1, from the last by too much.
  Desktop wide({serverWindow(1, {100, 100, 63, 60}), serverWindow(2, {100, 100, 61, 60}),
                serverWindow(3, {700, 700, 89, 80})},
               {element("wide", {100, 100}, {60, 60}), element("far", {700, 700}, {80, 80})});
  EXPECT_EQ(wide.enumerate(), Lines{"2 (100,100 60x60)"});
}

TEST(Enumeration, LeavesOutWhatCanNotBeSeenOrRead) {
  const CFDictionary minimized{{"AXMinimized", true}};
  const CFDictionary wrongTitle{{"AXTitle", 5}, {"AXMinimized", false}};
  const double inf = std::numeric_limits<double>::infinity();
  const auto noPoint = platform::makeRef<AXUIElement>(
      "no point", CFDictionary{{"AXPosition", CGSize{1, 2}}, {"AXSize", CGSize{30, 40}}});
  const auto noSize =
      platform::makeRef<AXUIElement>("no size", CFDictionary{{"AXPosition", CGPoint{1, 2}}});
  Desktop desktop({serverWindow(1, {1, 2, 30, 40}), serverWindow(2, {1, 2, 30, 40}, "seven"),
                   CFDictionary{{"kCGWindowOwnerPID", kPid}, {"kCGWindowNumber", 3}},
                   serverWindow(4, {"1", 2, 30, 40}), CFValue("no dictionary")},
                  {element("minimized", {1, 2}, {30, 40}, minimized), noPoint, noSize,
                   element("thin", {1, 2}, {0.5, 40}), element("flat", {1, 2}, {30, 0.99}),
                   element("wild", {inf, -inf}, {1e300, std::nan("")}),
                   element("seen", {1, 2}, {30, 40}, wrongTitle)});
  EXPECT_EQ(desktop.enumerate(), Lines{"1 (1,2 30x40)"});

  auto& attributes = desktop.machine.desktop.applications[kPid];
  desktop.machine.refuse("AXUIElementCopyAttributeValue(application, AXWindows",
                         platform::kAXErrorCannotComplete);
  EXPECT_EQ(desktop.enumerate(), Lines{});
  desktop.machine.answerNothing("AXUIElementCopyAttributeValue(application, AXWindows");
  EXPECT_EQ(desktop.enumerate(), Lines{});
  attributes["AXMainWindow"] = "no element";
  EXPECT_EQ(desktop.enumerate(), Lines{"1 (1,2 30x40)"});
  desktop.machine.desktop.windowList.reset();
  EXPECT_EQ(desktop.enumerate(), Lines{});
  desktop.machine.desktop.windowList = CFArray{serverWindow(1, {1, 2, 30, 40})};
  attributes["AXWindows"] = CFArray{element("seen", {1, 2}, {30, 40}), "no element"};
  EXPECT_EQ(desktop.enumerate(), Lines{});
}

TEST(Enumeration, CutsTitlesBetweenCharacters) {
  const std::string euro = "\xE2\x82\xAC", full(126, 'a');
  const std::pair<std::string, std::string> cases[] = {
      {std::string(200, 'x'), std::string(127, 'x')},
      {std::string(125, 'x') + euro, std::string(125, 'x')},
      {std::string(124, 'x') + euro + euro, std::string(124, 'x') + euro},
      {full + "\xC3\xA4", full},
      {std::string(125, 'x') + "\xC3\xA4y", std::string(125, 'x') + "\xC3\xA4"},
      {std::string(124, 'x') + "\xF0\x9F\x98\x80", std::string(124, 'x')},
      {"ok\xED\xA0\x80 half a pair", "ok"},
      {"\xC0\x80 overlong", ""},
      {"\x80", ""},
      {"", ""},
  };
  for (const auto& [title, stored] : cases) {
    Desktop desktop({serverWindow(1, {1, 2, 30, 40})},
                    {element("w", {1, 2}, {30, 40}, {{"AXTitle", title}})});
    VlmWindowEntry entry;
    std::memset(&entry, 0xEE, sizeof entry);
    ASSERT_EQ(vlm_window_enumerate(kPid, &entry, 1), 1);
    std::string field(reinterpret_cast<const char*>(entry.title), sizeof entry.title);
    EXPECT_EQ(field, stored + std::string(128 - stored.size(), '\0'));
  }
}

// "1,2 30x40", or "none" with the out-parameters as they were.
std::string frame(auto ask) {
  double out[4] = {-1, -1, -1, -1};
  if (!ask(&out[0], &out[1], &out[2], &out[3])) {
    return std::accumulate(out, out + 4, 0.0) == -4 ? "none" : "none, but written to";
  }
  EXPECT_TRUE(ask(nullptr, nullptr, nullptr, nullptr));
  return platform::scripted::describe(CFArray{out[0], out[1], out[2], out[3]});
}

TEST(Lookup, FindsProcessesAndFrames) {
  Machine machine;
  machine.desktop.running = {{std::nullopt, 1}, {"org.one.App", 2}, {"org.two", 3}, {"org.two", 4}};
  const std::tuple<const char*, int> prefixes[] = {{"org.", 2},     {"org.two", 3}, {"Org", 0},
                                                   {"org.two.", 0}, {"", 0},        {nullptr, 0}};
  for (const auto& [prefix, pid] : prefixes) EXPECT_EQ(vlm_window_find_pid(prefix), pid);

  const auto bounds = [](auto... out) { return vlm_window_get_bounds(5, out...); };
  const CFDictionary partial{{"X", 1.5}, {"Y", -2}, {"Height", 40.25}};
  const std::pair<std::optional<CFArray>, std::string> lists[] = {
      {std::nullopt, "none"},
      {CFArray{}, "none"},
      {CFArray{CFDictionary{}, serverWindow(5, {1, 2, 3, 4})}, "none"},
      {CFArray{CFDictionary{{"kCGWindowBounds", CFDictionary{{"X", "1"}}}}}, "none"},
      {CFArray{CFDictionary{{"kCGWindowBounds", partial}}}, "[1.5, -2.0, 0.0, 40.25]"},
  };
  for (const auto& [list, answer] : lists) {
    machine.desktop.windowList = list;
    EXPECT_EQ(frame(bounds), answer);
  }
  EXPECT_EQ(machine.journal.take().front(), "CGWindowListCopyWindowInfo(8, 5)");
}

TEST(Lookup, PrefersTheMainWindowAndNeverGivesAMinimizedOne) {
  Machine machine;
  const auto focused = [](auto... out) { return vlm_window_focused_bounds(kPid, out...); };
  const CFDictionary minimized{{"AXMinimized", true}};
  const CFValue main = element("main", {1, 2}, {0.5, 40}), other = element("other", {3, 4}, {5, 6});
  const CFValue gone = element("gone", {1, 2}, {30, 40}, minimized);
  const CFValue wrong = platform::makeRef<AXUIElement>(
      "wrong", CFDictionary{{"AXPosition", "left"}, {"AXSize", CGSize{5, 6}}});
  const std::pair<CFDictionary, std::string> cases[] = {
      {{{"AXMainWindow", main}, {"AXFocusedWindow", other}}, "[1.0, 2.0, 0.5, 40.0]"},
      {{{"AXMainWindow", CFValue()}, {"AXFocusedWindow", other}}, "[3.0, 4.0, 5.0, 6.0]"},
      {{{"AXFocusedWindow", wrong}}, "[0.0, 0.0, 5.0, 6.0]"},
      {{{"AXMainWindow", gone}, {"AXFocusedWindow", other}}, "none"},
      {{{"AXMainWindow", 5}, {"AXFocusedWindow", other}}, "none"},
      {{{"AXMainWindow", element("empty", {1, 2}, {0, 40})}}, "none"},
      {{}, "none"},
  };
  for (const auto& [attributes, answer] : cases) {
    machine.desktop.applications[kPid] = attributes;
    EXPECT_EQ(frame(focused), answer);
  }
}

void noteEvent(int32_t event, double x, double y, double width, double height, void* user) {
  static_cast<Machine*>(user)->journal.note(
      "event " + platform::scripted::describe(CFArray{event, x, y, width, height}));
}

TEST(Tracker, ReportsTheFocusedWindowWithEachEvent) {
  Machine machine;
  machine.desktop.applications[kPid]["AXFocusedWindow"] = element("w", {1, 2}, {30, 40});
  machine.refuse("AXObserverAddNotification(application, AXApplicationDeactivated", -25207);
  void* tracker = vlm_window_track(kPid, noteEvent, &machine);
  EXPECT_EQ(machine.journal.take(),
            (Lines{"AXUIElementCreateApplication(7)", "AXObserverCreate(7)",
                   "AXObserverAddNotification(application, AXWindowMoved)",
                   "AXObserverAddNotification(application, AXWindowResized)",
                   "AXObserverAddNotification(application, AXFocusedWindowChanged)",
                   "AXObserverAddNotification(application, AXApplicationDeactivated)",
                   "AXObserverAddNotification(application, AXApplicationActivated)",
                   "AXObserverAddNotification(application, AXUIElementDestroyed)",
                   "CFRunLoopAddSource()"}));
  for (const char* name : {"AXWindowMoved", "AXWindowResized", "AXFocusedWindowChanged",
                           "AXApplicationActivated", "AXApplicationDeactivated", "AXOther"}) {
    machine.desktop.notify(name);
  }
  machine.run();
  const std::string at = ", 1.0, 2.0, 30.0, 40.0]", nowhere = ", 0.0, 0.0, 0.0, 0.0]";
  EXPECT_EQ(machine.journal.take("event"),
            (Lines{"event [0" + at, "event [1" + at, "event [2" + at, "event [2" + at}));
  for (const char* operation : {"AXUIElementCopyAttributeValue(application, AXFocusedWindow",
                                "AXUIElementCopyAttributeValue(w, AXSize"}) {
    machine.refuse(operation, platform::kAXErrorInvalidUIElement);
    machine.desktop.notify("AXUIElementDestroyed");
    machine.run();
    EXPECT_EQ(machine.journal.take("event"), Lines{"event [4" + nowhere});
  }
  machine.desktop.notify("AXWindowMoved");
  vlm_window_untrack(tracker);
  machine.run();
  EXPECT_EQ(machine.journal.take("CFRunLoopRemoveSource"), Lines{"CFRunLoopRemoveSource()"});
  machine.refuse("AXObserverCreate", platform::kAXErrorFailure);
  EXPECT_EQ(vlm_window_track(kPid, noteEvent, &machine), nullptr);
  machine.answerNothing("AXObserverCreate");
  EXPECT_EQ(vlm_window_track(kPid, noteEvent, &machine), nullptr);
}

}  // namespace
}  // namespace vlm::test
