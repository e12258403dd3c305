#include <gtest/gtest.h>

#include "stage.h"

namespace vlm::test {
namespace {

using platform::CGRect;

constexpr const char* kQuery = "getShareableContent(false, true)";

CGRect rect(double x, double y, double width, double height) {
  return {{x, y}, {width, height}};
}

// Two displays side by side and windows, front to back, each of which is in the way of a search
// that forgets one of the conditions.
struct Office {
  Machine machine;
  Office() {
    auto& screen = machine.screen;
    screen.addDisplay(1, rect(0, 0, 1000, 800));
    screen.addDisplay(2, rect(1000, 0, 800, 600));
    const auto one = screen.addApplication("com.alpha.one");
    const auto two = screen.addApplication("com.alpha.two");
    const auto gamma = screen.addApplication("org.gamma");
    screen.addApplication("net.windowless");
    screen.addWindow(10, "Nobody's", rect(0, 0, 500, 500), nullptr);
    screen.addWindow(11, "Narrow tool", rect(0, 0, 99, 500), one);
    screen.addWindow(12, "Flat tool", rect(0, 0, 500, 99.5), one);
    screen.addWindow(13, std::nullopt, rect(0, 0, 100, 100), one);
    screen.addWindow(14, "Notes of Today", rect(1000, 0, 300, 300), two);
    screen.addWindow(15, "notes", rect(0, 0, 400, 400), gamma);
  }

  // What a start asks the platform for, "null" when it gives no handle.
  std::string filterOf(void* handle) {
    if (handle == nullptr) return "null";
    vlm_capture_stop(handle);
    const auto filters = machine.journal.take("initWith");
    return filters.size() == 1 ? filters.front() : "no filter";
  }
};

TEST(CaptureTargets, FindsTheFirstWindowThatMeetsEveryCondition) {
  Office office;
  const struct {
    const char* prefix;
    const char* title;
    uint32_t found;
  } cases[] = {
      {nullptr, nullptr, 13},     {"", nullptr, 13},
      {"com.alpha", nullptr, 13}, {"com.alpha.two", nullptr, 14},
      {"Com.alpha", nullptr, 0},  {"alpha", nullptr, 0},
      {nullptr, "today", 14},     {nullptr, "NOTES", 14},
      {"org", "Notes", 15},       {nullptr, "", 0},
      {nullptr, "tool", 0},       {nullptr, "nobody", 0},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(std::string(each.prefix ? each.prefix : "any") + "/" +
                 (each.title ? each.title : "any"));
    EXPECT_EQ(vlm_capture_find_window(each.prefix, each.title), each.found);
    EXPECT_EQ(office.machine.journal.take(), Lines{kQuery});
  }
}

TEST(CaptureTargets, StartsPickTheirTarget) {
  Office office;
  auto& machine = office.machine;
  const auto window = [&](uint32_t id) {
    return office.filterOf(vlm_capture_start_window(id, 30, 0, 0, noteFrame, nullptr, &machine));
  };
  const auto application = [&](const char* prefix) {
    return office.filterOf(vlm_capture_start_app(prefix, 30, 0, 0, noteFrame, nullptr, &machine));
  };
  const auto display = [&](uint32_t id) {
    return office.filterOf(vlm_capture_start_display(id, 30, 0, 0, noteFrame, nullptr, &machine));
  };
  EXPECT_EQ(window(14), "initWithDesktopIndependentWindow(14)");
  EXPECT_EQ(window(99), "null");
  EXPECT_EQ(display(0), "initWithDisplayExcludingWindows(1, [])");
  EXPECT_EQ(display(2), "initWithDisplayExcludingWindows(2, [])");
  EXPECT_EQ(display(99), "initWithDisplayExcludingWindows(1, [])");

  // The first application, on the display of the largest window of any that shares the prefix.
  EXPECT_EQ(application("com.alpha"),
            "initWithDisplayIncludingApplications(2, [com.alpha.one], [])");
  EXPECT_EQ(application("com.alpha.one"),
            "initWithDisplayIncludingApplications(1, [com.alpha.one], [])");
  EXPECT_EQ(application("net"), "initWithDisplayIncludingApplications(1, [net.windowless], [])");
  for (const char* prefix : {static_cast<const char*>(nullptr), "", "unknown"}) {
    EXPECT_EQ(application(prefix), "null");
  }
  // Of two equally large windows the earlier one decides; one on no display falls to the first.
  machine.screen.addWindow(16, "rival", rect(10, 10, 300, 300),
                           machine.screen.addApplication("tie"));
  machine.screen.addWindow(17, "late", rect(1100, 0, 300, 300),
                           machine.screen.content->applications.back());
  EXPECT_EQ(application("tie"), "initWithDisplayIncludingApplications(1, [tie], [])");
  machine.screen.addWindow(18, "lost", rect(-900, 0, 900, 800),
                           machine.screen.addApplication("off"));
  EXPECT_EQ(application("off"), "initWithDisplayIncludingApplications(1, [off], [])");

  machine.screen.content->displays.clear();
  EXPECT_EQ(application("com.alpha"), "null");
  EXPECT_EQ(display(0), "null");
}

TEST(CaptureTargets, AnErrorIsLoggedAndContentThatCameWithItIsUsed) {
  Office office;
  auto& machine = office.machine;
  const Lines log{"[vlm] SCShareableContent failed: not allowed"};
  EXPECT_TRUE(vlm_screen_capture_ready());
  EXPECT_EQ(machine.journal.take(), Lines{kQuery});
  machine.screen.contentError = platform::NSError{"not allowed"};
  EXPECT_TRUE(vlm_screen_capture_ready());
  EXPECT_EQ(machine.takeLog(), log);
  machine.screen.content = nullptr;
  EXPECT_FALSE(vlm_screen_capture_ready());
  EXPECT_EQ(machine.takeLog(), log);
  EXPECT_EQ(vlm_capture_find_window(nullptr, nullptr), 0U);
  EXPECT_EQ(vlm_capture_start_app("com", 30, 0, 0, noteFrame, nullptr, &machine), nullptr);
  machine.screen.contentError.reset();
  machine.takeLog();
  EXPECT_FALSE(vlm_screen_capture_ready());
  EXPECT_EQ(machine.takeLog(), Lines{});
}

}  // namespace
}  // namespace vlm::test
