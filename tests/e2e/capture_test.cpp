// Capturing a real X server through the public header. What is on the screen is judged by
// ImageMagick and xdotool.
#include <gtest/gtest.h>
#include <xcb/randr.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <random>
#include <span>
#include <thread>

#include "e2e/frame_recorder.h"
#include "e2e/spots.h"
#include "support/canvas.h"
#include "support/private_desktop.h"

namespace vlm::test {
namespace {

using namespace std::chrono_literals;

// For the rounding to 8 bits and the shared chroma at coloured edges.
constexpr double kSame = 0.02;
constexpr int kFps = 60;
constexpr std::uint32_t kWhite = 0xFFFFFF, kGrey = 0x707070, kRed = 0xE02020, kBlue = 0x2020E0;
const PrivateDesktop::Options kSmall{.width = 800, .height = 600, .windowManager = false};
const PrivateDesktop::Options kManaged{.width = 800, .height = 600, .windowManager = true};

// How far the frame is from what `import` with these arguments takes from the screen, judged by
// ImageMagick: the root of the mean square, 1 at most.
double distanceToScreen(const Frame& frame, const std::vector<std::string>& arguments) {
  const ScratchFolder folder;
  const auto raw = folder.file("frame.nv12"), ours = folder.file("ours.png"),
             screen = folder.file("screen.png");
  writeFile(raw, frame.pixels);
  const auto size = std::to_string(frame.width) + "x" + std::to_string(frame.height);
  outputOf({"ffmpeg", "-v", "error", "-f", "rawvideo", "-pix_fmt", "nv12", "-s", size, "-i", raw,
            "-frames:v", "1", ours});
  std::vector<std::string> import{"import", "-silent", "-window", "root"};
  import.insert(import.end(), arguments.begin(), arguments.end());
  import.push_back(screen);
  outputOf(import);
  // Exits with 1 for pictures that differ at all.
  const auto result = runCommand({"compare", "-metric", "RMSE", ours, screen, "null:"});
  const auto open = result.output.find('(');
  return open == std::string::npos ? 1 : std::stod(result.output.substr(open + 1));
}

void expectScreen(FrameRecorder& recorder, const std::vector<std::string>& importArguments = {}) {
  EXPECT_TRUE(
      eventually([&] { return distanceToScreen(recorder.last(), importArguments) < kSame; }));
}

void paintAtRandom(Canvas& canvas, const Canvas::Place& bounds, std::mt19937& random) {
  const auto place = [&](int limit) { return static_cast<std::int16_t>(random() % limit); };
  const auto size = [&](int limit) { return static_cast<std::uint16_t>(1 + random() % limit); };
  canvas.fill({place(bounds.width), place(bounds.height), size(90), size(60)}, random() & 0xFFFFFF);
}

TEST(Capture, StillScreenYieldsItsPictureOnceAndAChangeAtOnce) {
  const PrivateDesktop desktop(kSmall);
  Canvas canvas("still", {100, 80, 400, 300}, kGrey);
  canvas.fill({50, 50, 100, 100}, kRed);
  FrameRecorder recorder;
  ASSERT_TRUE(recorder.start(vlm_capture_start_display, 0U, kFps, 0, 0));
  expectScreen(recorder);
  EXPECT_EQ(recorder.count(), 1U);
  std::this_thread::sleep_for(300ms);
  canvas.fill({50, 50, 100, 100}, kRed);  // as it was
  EXPECT_EQ((recorder.last(), recorder.count()), 1U);
  canvas.fill({200, 100, 33, 17}, kWhite);
  expectScreen(recorder);
  EXPECT_EQ(recorder.count(), 2U);
}

struct PartialCase {
  const char* name;
  int maxWidth;
  int maxHeight;
  std::size_t keep;  // frames that the host holds on to
  std::vector<std::string> serverArguments;
};

class PartialUpdates : public testing::TestWithParam<PartialCase> {};

// Blocks that the account of changes calls unchanged are the same to the byte.
std::size_t wronglyUnchanged(const Frame& before, const Frame& after) {
  constexpr int kBlock = 16;
  const auto& changes = *after.changes;
  std::size_t wrong = 0;
  for (std::size_t block = 0; block < changes.lastChange.size(); ++block) {
    if (!changes.unchangedSince(before.changes->picture, block)) continue;
    const int x = static_cast<int>(block % changes.columns) * kBlock;
    const int y = static_cast<int>(block / changes.columns) * kBlock;
    const auto bytes = static_cast<std::size_t>(std::min(kBlock, after.width - x));
    for (int row = y; row < std::min(y + kBlock, after.height); ++row) {
      const auto luma = static_cast<std::size_t>(row) * after.width + x;
      const auto chroma = static_cast<std::size_t>(after.height + row / 2) * after.width + x;
      for (const auto at : {luma, chroma}) {
        wrong += std::memcmp(&before.pixels[at], &after.pixels[at], bytes) != 0;
      }
    }
  }
  return wrong;
}

TEST_P(PartialUpdates, EqualAWholePictureAndAreAccountedFor) {
  const auto& param = GetParam();
  auto options = kSmall;
  options.serverArguments = param.serverArguments;
  const PrivateDesktop desktop(options);
  const Canvas::Place place{37, 41, 700, 500};
  Canvas canvas("partial", place, kGrey);
  FrameRecorder recorder(param.keep);
  ASSERT_TRUE(recorder.start(vlm_capture_start_display, 0U, kFps, param.maxWidth, param.maxHeight));
  ASSERT_GT(recorder.last().width, 0);
  std::mt19937 random(7);
  for (int round = 0; round < 60; ++round) {
    for (int i = 0; i < 3; ++i) paintAtRandom(canvas, place, random);
    std::this_thread::sleep_for(std::chrono::milliseconds(random() % 30));
    if (round % 20 == 19) recorder.release();
  }
  recorder.last();
  ASSERT_GT(recorder.count(), 10U);
  for (std::size_t i = 1; i < recorder.count(); ++i) {
    const Frame before = recorder.at(i - 1), after = recorder.at(i);
    ASSERT_EQ(after.changes->source, before.changes->source);
    ASSERT_GT(after.changes->picture, before.changes->picture);
    ASSERT_GE(after.ptsNs - before.ptsNs, 1'000'000'000 / kFps);
    ASSERT_EQ(wronglyUnchanged(before, after), 0U) << "frame " << i;
  }
  const auto equalsWhole = [&] {
    FrameRecorder whole;
    if (!whole.start(vlm_capture_start_display, 0U, kFps, param.maxWidth, param.maxHeight))
      return false;
    const Frame fresh = whole.last();
    const Frame latest = recorder.last();
    EXPECT_NE(fresh.changes->source, latest.changes->source);
    return fresh.pixels == latest.pixels;
  };
  EXPECT_TRUE(eventually(equalsWhole));
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, PartialUpdates,
    testing::Values(PartialCase{"Whole", 0, 0, 0, {}}, PartialCase{"Kept", 0, 0, 3, {}},
                    PartialCase{"Half", 400, 300, 2, {}}, PartialCase{"Odd", 531, 397, 3, {}},
                    PartialCase{"NoSharedMemory", 0, 0, 1, {"-extension", "MIT-SHM"}}),
    [](const auto& each) { return each.param.name; });

TEST(Capture, ScaledPictureLooksLikeTheScreenMadeSmaller) {
  PrivateDesktop desktop(kSmall);
  desktop.spawnWindow({"xclock", "-geometry", "500x500+100+50"}, "xclock");
  FrameRecorder recorder;
  ASSERT_TRUE(recorder.start(vlm_capture_start_display, 0U, kFps, 267, 200));
  const Frame frame = recorder.last();
  const auto size = std::to_string(frame.width) + "x" + std::to_string(frame.height) + "!";
  EXPECT_LT(distanceToScreen(frame, {"-filter", "box", "-resize", size}), kSame);
}

// Gives the server's one monitor a size.
void setMonitor(const std::string& width, const std::string& height,
                const std::vector<std::string>& further) {
  const auto mode = width + "x" + height;
  outputOf(
      {"xrandr", "--newmode", mode, "25", width, "900", "901", "902", height, "700", "701", "702"});
  outputOf({"xrandr", "--addmode", "screen", mode});
  std::vector<std::string> command{"xrandr", "--output", "screen", "--mode", mode};
  command.insert(command.end(), further.begin(), further.end());
  outputOf(command);
}

// What xrandr refuses to do with a single monitor.
void moveMonitor(std::int16_t x) {
  auto* c = xcb_connect(nullptr, nullptr);
  const auto root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
  auto* resources =
      xcb_randr_get_screen_resources_reply(c, xcb_randr_get_screen_resources(c, root), nullptr);
  const auto crtc = *xcb_randr_get_screen_resources_crtcs(resources);
  auto* now = xcb_randr_get_crtc_info_reply(c, xcb_randr_get_crtc_info(c, crtc, 0), nullptr);
  free(xcb_randr_set_crtc_config_reply(
      c,
      xcb_randr_set_crtc_config(c, crtc, 0, 0, x, 0, now->mode, now->rotation, 1,
                                xcb_randr_get_screen_resources_outputs(resources)),
      nullptr));
  free(now);
  free(resources);
  xcb_disconnect(c);
}

TEST(Capture, ScreenOfAnotherSizeIsScaledIntoThePicture) {
  const PrivateDesktop desktop(kSmall);
  Canvas canvas("resized", {0, 0, 320, 240}, kGrey);
  FrameRecorder recorder;
  ASSERT_TRUE(recorder.start(vlm_capture_start_display, 0U, kFps, 0, 0));
  expectShown(recorder, "before", {{310, 230, kGrey}, {390, 290, 0}});
  setMonitor("640", "480", {});
  canvas.fill({0, 0, 160, 120}, kWhite);
  expectShown(recorder, "after", {{195, 145, kWhite}, {390, 290, kGrey}, {410, 310, 0}});
  EXPECT_EQ(recorder.last().width, 800);
}

TEST(Capture, MonitorIsFollowedUntilItIsRemoved) {
  const PrivateDesktop desktop(kSmall);
  const Canvas left("left", {0, 0, 400, 600}, kGrey);
  const Canvas right("right", {400, 0, 400, 600}, kWhite);
  setMonitor("400", "600", {"--fb", "800x600"});
  FrameRecorder display, application;
  ASSERT_TRUE(display.start(vlm_capture_start_display, 0U, kFps, 0, 0));
  ASSERT_TRUE(application.start(vlm_capture_start_app, "left", kFps, 0, 0));
  expectShown(display, "first half", {{200, 300, kGrey}});
  moveMonitor(400);
  expectShown(display, "second half", {{200, 300, kWhite}});
  expectShown(application, "second half", {{200, 300, 0}});

  testing::internal::CaptureStderr();
  outputOf({"xrandr", "--setmonitor", "private", "400/100x600/150+400+0", "screen"});
  const auto before = display.count() + application.count();
  const Canvas secret("left", {400, 0, 400, 600}, kRed);
  std::this_thread::sleep_for(500ms);
  EXPECT_EQ(display.count() + application.count(), before);
  display.stop();
  application.stop();
  const std::string line =
      "[vlm] capture stream stopped with error: the captured display was removed\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), line + line);
}

TEST(Capture, WindowIsWholeWhileCoveredMovedResizedAndMinimised) {
  PrivateDesktop desktop(kManaged);
  Canvas canvas("target", {60, 60, 320, 240}, kGrey);
  canvas.fill({40, 40, 80, 80}, kWhite);
  const std::string id = std::to_string(canvas.id());
  double x = 0, y = 0, width = 0, height = 0;
  FrameRecorder recorder;
  ASSERT_TRUE(recorder.start(vlm_capture_start_window, canvas.id(), kFps, 0, 0));
  ASSERT_TRUE(vlm_capture_bounds(recorder.capture(), &x, &y, &width, &height));
  EXPECT_EQ(width, 320);
  EXPECT_EQ(height, 240);
  const auto geometry =
      "320x240+" + std::to_string(static_cast<int>(x)) + "+" + std::to_string(static_cast<int>(y));
  expectScreen(recorder, {"-crop", geometry, "+repage"});

  const Canvas cover("cover", {80, 80, 300, 200}, kRed);
  canvas.fill({150, 100, 80, 80}, kBlue);
  expectShown(recorder, "covered", {{60, 60, kWhite}, {180, 140, kBlue}, {300, 200, kGrey}});

  outputOf({"xdotool", "windowmove", id, "650", "450"});  // half outside the screen
  canvas.fill({0, 0, 20, 20}, kWhite);
  expectShown(recorder, "moved", {{10, 10, kWhite}, {60, 60, kWhite}, {310, 230, kGrey}});

  outputOf({"xdotool", "windowmove", id, "60", "60"});
  outputOf({"xdotool", "windowsize", "--sync", id, "640", "480"});
  expectShown(recorder, "resized", {{40, 40, kWhite}, {90, 70, kBlue}, {310, 230, kGrey}});
  EXPECT_EQ(recorder.last().width, 320);

  outputOf({"xdotool", "windowminimize", id});
  const auto before = (recorder.last(), recorder.count());
  canvas.fill({0, 0, 640, 480}, kRed);
  EXPECT_EQ((recorder.last(), recorder.count()), before);
  outputOf({"xdotool", "windowmap", id});
  expectShown(recorder, "shown again", {{160, 120, kRed}});
}

TEST(Capture, WindowOfOddSizeLosesItsLastColumnAndRowAndNoSharpness) {
  const PrivateDesktop desktop(kSmall);
  Canvas canvas("odd", {60, 60, 321, 241}, kGrey);
  for (std::int16_t x = 0; x < 321; x += 2) canvas.fill({x, 0, 1, 241}, kWhite);
  FrameRecorder recorder;
  ASSERT_TRUE(recorder.start(vlm_capture_start_window, canvas.id(), kFps, 0, 0));
  expectShown(recorder, "lines",
              {{0, 0, kWhite},
               {161, 120, kGrey},
               {162, 120, kWhite},
               {318, 239, kWhite},
               {319, 239, kGrey}});
  EXPECT_EQ(recorder.last().width, 320);
  EXPECT_EQ(recorder.last().height, 240);
}

// The window of an owner who takes time to paint. Until then it has what was behind it.
class LateWindow {
 public:
  LateWindow(const char* name, const Canvas::Place& place)
      : connection_(xcb_connect(nullptr, nullptr)), id_(xcb_generate_id(connection_)) {
    const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    const std::uint32_t bypassesManager = 1;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, id_, screen->root, place.x, place.y,
                      place.width, place.height, 3, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      screen->root_visual, XCB_CW_OVERRIDE_REDIRECT, &bypassesManager);
    if (name == nullptr) {
      show();
      return;
    }
    const std::string both = std::string(name) + '\0' + name + '\0';
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, id_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING,
                        8, static_cast<std::uint32_t>(both.size()), both.data());
    show();
  }
  ~LateWindow() { xcb_disconnect(connection_); }
  std::uint32_t id() const { return id_; }
  void show() {
    xcb_map_window(connection_, id_);
    sync();
  }
  void hide() {
    xcb_unmap_window(connection_, id_);
    sync();
  }
  void resize(std::uint32_t width, std::uint32_t height) {
    const std::uint32_t size[] = {width, height};
    xcb_configure_window(connection_, id_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         size);
    sync();
  }
  void paint(std::uint32_t color) {
    const auto context = xcb_generate_id(connection_);
    xcb_create_gc(connection_, context, id_, XCB_GC_FOREGROUND, &color);
    const xcb_rectangle_t all{0, 0, 1000, 1000};
    xcb_poly_fill_rectangle(connection_, id_, context, 1, &all);
    xcb_free_gc(connection_, context);
    sync();
  }

 private:
  void sync() {
    free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
  }
  xcb_connection_t* const connection_;
  const std::uint32_t id_;
};

// How many frames show the colour anywhere.
std::size_t framesWith(FrameRecorder& recorder, std::uint32_t color) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < recorder.count(); ++i) {
    const Frame frame = recorder.at(i);
    const auto luma =
        std::span(frame.pixels).first(static_cast<std::size_t>(frame.width) * frame.height);
    count += std::ranges::any_of(
        luma, [&](std::uint8_t each) { return std::abs(each - lumaOf(color)) <= 2; });
  }
  return count;
}

TEST(Capture, WhatLiesBehindAWindowIsNotShownBeforeTheWindowIsPainted) {
  const auto lateEnough = [] { std::this_thread::sleep_for(400ms); };
  for (const bool isApplication : {false, true}) {
    PrivateDesktop desktop(kSmall);
    const Canvas secret("private", {0, 0, 800, 600}, kRed);
    LateWindow late("shared", {0, 0, 320, 240});
    late.paint(kGrey);
    const Canvas cover("private", {40, 40, 80, 80}, kRed);
    FrameRecorder recorder;
    ASSERT_TRUE(isApplication ? recorder.start(vlm_capture_start_app, "shared", kFps, 0, 0)
                              : recorder.start(vlm_capture_start_window, late.id(), kFps, 0, 0));
    lateEnough();
    late.paint(kWhite);
    expectShown(recorder, "at the start", {{160, 120, kWhite}, {80, 80, kWhite}});
    late.hide();
    late.show();
    lateEnough();
    late.paint(kWhite);
    expectShown(recorder, "shown again", {{160, 120, kWhite}, {310, 230, kWhite}});
    late.resize(640, 480);
    lateEnough();
    late.paint(kBlue);
    expectShown(recorder, "grown", {{160, 120, kBlue}, {310, 230, kBlue}});
    late.paint(kGrey);
    late.resize(642, 482);  // with damage of the former picture underway
    lateEnough();
    late.paint(kWhite);
    expectShown(recorder, "grown again", {{160, 120, kWhite}, {310, 230, kWhite}});
    if (isApplication) {
      LateWindow menu("shared", {100, 100, 200, 150});
      lateEnough();
      menu.paint(kGrey);
      expectShown(recorder, "menu", {{200, 200, kGrey}, {90, 90, kWhite}});
      LateWindow classless(nullptr, {300, 300, 100, 100}), foreign("other", {500, 300, 50, 50});
      lateEnough();
      classless.paint(kGrey);
      foreign.paint(kGrey);
      expectShown(recorder, "menu without class", {{350, 350, kGrey}, {520, 320, kWhite}});
    }
    EXPECT_EQ(framesWith(recorder, kRed), 0U) << isApplication << " of " << recorder.count();
  }
}

TEST(Capture, ApplicationShowsItsWindowsAndNothingOfOthers) {
  PrivateDesktop desktop(kManaged);
  Canvas back("shared", {100, 100, 300, 200}, kGrey);
  Canvas other("private", {250, 150, 300, 200}, kRed);
  desktop.spawnWindow({"xclock", "-geometry", "200x200+500+350"}, "xclock");
  FrameRecorder recorder;
  ASSERT_TRUE(recorder.start(vlm_capture_start_app, "shared", kFps, 0, 0));
  // The first window where others cover it, and two places of others.
  expectShown(recorder, "first", {{380, 280, kGrey}, {500, 250, 0}, {600, 450, 0}});
  EXPECT_EQ(recorder.last().width, 800);
  {
    Canvas front("shared", {300, 250, 300, 200}, kWhite);
    expectShown(recorder, "a second", {{450, 400, kWhite}, {380, 290, kWhite}});
    outputOf({"wmctrl", "-i", "-a", std::to_string(back.id())});
    expectShown(recorder, "first raised", {{450, 400, kWhite}, {380, 290, kGrey}});
    outputOf({"xdotool", "windowmove", std::to_string(front.id()), "20", "380"});
    expectShown(recorder, "second moved", {{150, 500, kWhite}, {550, 420, 0}});
    Canvas glass("shared", {0, 0, 800, 600}, 0, true);
    glass.fill({120, 120, 80, 80}, 0x80000000);  // a shadow
    glass.fill({250, 200, 40, 100}, 0xFF000000 | kBlue);
    expectShown(recorder, "through glass",
                {{220, 160, kGrey}, {160, 160, kGrey / 2}, {270, 260, kBlue}, {600, 450, 0}});
  }
  expectShown(recorder, "second closed", {{150, 500, 0}, {380, 280, kGrey}});
}

TEST(Capture, EndsWithALogLineWhenTheWindowOrTheServerGoes) {
  for (const bool killsServer : {false, true}) {
    PrivateDesktop desktop(kSmall);
    Canvas canvas("target", {0, 0, 400, 300}, kGrey);
    FrameRecorder recorder;
    ASSERT_TRUE(recorder.start(vlm_capture_start_window, canvas.id(), kFps, 0, 0));
    ASSERT_GT(recorder.last().width, 0);
    testing::internal::CaptureStderr();
    if (killsServer) {
      desktop.killServer();
    } else {
      canvas.close();
    }
    std::this_thread::sleep_for(1s);
    recorder.stop();
    const auto log = testing::internal::GetCapturedStderr();
    const std::string line = "[vlm] capture stream stopped with error: ";
    EXPECT_EQ(log, line + (killsServer ? "the connection to the display was lost\n"
                                       : "the captured window was closed\n"));
    EXPECT_EQ(vlm_screen_capture_ready(), !killsServer);
    testing::internal::CaptureStderr();
    FrameRecorder again;
    EXPECT_FALSE(again.start(vlm_capture_start_window, canvas.id(), kFps, 0, 0));
    testing::internal::GetCapturedStderr();
  }
}

TEST(Capture, WaylandSessionIsSeenThroughAndItsX11WindowsCanBeCaptured) {
  PrivateDesktop desktop(kSmall);
  Canvas canvas("client", {0, 0, 400, 300}, kGrey);
  EXPECT_TRUE(vlm_perm_screen_recording(true) && vlm_perm_accessibility(true));
  Environment environment;
  environment.set("WAYLAND_DISPLAY", "wayland-0");
  EXPECT_FALSE(vlm_perm_screen_recording(true) || vlm_perm_accessibility(true));
  FrameRecorder display, window;
  testing::internal::CaptureStderr();
  EXPECT_FALSE(display.start(vlm_capture_start_display, 0U, kFps, 0, 0));
  EXPECT_NE(testing::internal::GetCapturedStderr().find(
                "[vlm] startCapture failed: a Wayland session does not show its screen"),
            std::string::npos);
  ASSERT_TRUE(window.start(vlm_capture_start_window, canvas.id(), kFps, 0, 0));
  expectShown(window, "an X11 window", {{200, 150, kGrey}});
}

TEST(Capture, KeptFramesMakeTheStreamSkipAndThenCatchUp) {
  const PrivateDesktop desktop(kSmall);
  Canvas canvas("kept", {0, 0, 800, 600}, kGrey);
  FrameRecorder recorder(5);
  ASSERT_TRUE(recorder.start(vlm_capture_start_display, 0U, kFps, 0, 0));
  for (std::uint32_t round = 1; round < 20; ++round) {
    canvas.fill({0, 0, 800, 600}, round * 0x0A0A0A);
    std::this_thread::sleep_for(25ms);
  }
  recorder.last();
  EXPECT_EQ(recorder.count(), 5U);
  recorder.release();
  expectScreen(recorder);
  EXPECT_EQ(recorder.count(), 6U);
}

// A host that is busy with its first frame when the capture ends, or ends it there.
struct EndingHost {
  bool endsInside = false;
  std::mutex starting;
  void* capture = nullptr;
  std::atomic<bool> entered = false;
  std::atomic<bool> left = false;

  static void onFrame(void*, std::int32_t, std::int32_t, std::int64_t, void* user) {
    auto& self = *static_cast<EndingHost*>(user);
    if (self.entered.exchange(true)) return;
    const std::lock_guard afterStart(self.starting);
    if (self.endsInside) {
      vlm_capture_stop(self.capture);
    } else {
      std::this_thread::sleep_for(200ms);
    }
    self.left = true;
  }
};

TEST(Capture, StopWaitsForARunningCallbackAndMayComeFromOne) {
  const PrivateDesktop desktop(kSmall);
  for (const bool endsInside : {false, true}) {
    EndingHost host;
    host.endsInside = endsInside;
    {
      const std::lock_guard lock(host.starting);
      host.capture = vlm_capture_start_display(
          0, kFps, 0, 0, EndingHost::onFrame,
          [](const float*, std::int32_t, std::int32_t, std::int32_t, void*) {}, &host);
      ASSERT_NE(host.capture, nullptr);
    }
    EXPECT_TRUE(eventually([&] { return host.entered.load(); }));
    if (!endsInside) {
      vlm_capture_stop(host.capture);
      EXPECT_TRUE(host.left);
    }
    EXPECT_TRUE(eventually([&] { return host.left.load(); }));
  }
}

TEST(Capture, WindowsAreFoundFrontToBackAndMinimisedOnesAreNot) {
  PrivateDesktop desktop(kManaged);
  const Canvas first("Twin", {50, 50, 200, 200}, kGrey);
  const Canvas second("Twin", {300, 50, 200, 200}, kGrey);
  const Canvas small("Tiny", {550, 50, 99, 200}, kGrey);
  const auto clock = desktop.spawnWindow({"xclock"}, "xclock");
  EXPECT_EQ(vlm_capture_find_window("XClo", nullptr), clock);
  EXPECT_EQ(vlm_capture_find_window("Twin", "TWI"), second.id());
  EXPECT_EQ(vlm_capture_find_window("Tiny", nullptr), 0U);
  outputOf({"wmctrl", "-i", "-a", std::to_string(first.id())});
  EXPECT_TRUE(eventually([&] { return vlm_capture_find_window("Twin", "t") == first.id(); }));
  outputOf({"xdotool", "windowminimize", std::to_string(first.id())});
  EXPECT_TRUE(eventually([&] { return vlm_capture_find_window("Twin", nullptr) == second.id(); }));
}

}  // namespace
}  // namespace vlm::test
