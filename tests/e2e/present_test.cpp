// Presenting in a host's window on a real X server, through the public header. What is on the
// screen is judged by ImageMagick and xwininfo.
#include <glib.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "VelmoraMacNative.h"
#include "e2e/desktop.h"
#include "e2e/quadrants.h"
#include "support/canvas.h"
#include "support/private_desktop.h"

namespace vlm::test {
namespace {

using platform::CVPixelBuffer;
using platform::Ref;
constexpr std::uint32_t kWhite = 0xFFFFFF;
constexpr auto kVideoRange = platform::kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange;
constexpr auto kFullRange = platform::kCVPixelFormatType_420YpCbCr8BiPlanarFullRange;
constexpr auto kPacked = platform::kCVPixelFormatType_32BGRA;

// For the rounding of two conversions, and of libyuv's filters where the picture is scaled. Another
// matrix or range is off by more.
constexpr double kTolerance = 8;
// libyuv's factor for blue in BT.709 is capped.
constexpr double kTolerance709 = 12;
const PrivateDesktop::Options kBareServer{.width = 800, .height = 600, .windowManager = false};

// True when the window has this size and shows these four colours, seen a few pixels from its
// corners, where a picture that is not stretched over all of it would miss at least one.
bool shows(const Canvas& window, int width, int height, const std::array<Rgb, 4>& colors,
           double tolerance = kTolerance) {
  std::string format = "%w %h ";
  for (const int y : {3, height - 4}) {
    for (const int x : {3, width - 4}) {
      for (const char* channel : {"r", "g", "b"}) {
        format +=
            "%[fx:255*p{" + std::to_string(x) + "," + std::to_string(y) + "}." + channel + "] ";
      }
    }
  }
  std::istringstream pixels(runCommand({"import", "-window", text(window.id()), "-depth", "8",
                                        "-format", format, "info:-"})
                                .output);
  int shownWidth = 0, shownHeight = 0;
  pixels >> shownWidth >> shownHeight;
  if (shownWidth != width || shownHeight != height) return false;
  for (const Rgb& color : colors) {
    for (const double wanted : {color.red, color.green, color.blue}) {
      double got = -1;
      if (!(pixels >> got) || std::abs(got - wanted) > tolerance) return false;
    }
  }
  return true;
}

constexpr std::array<Rgb, 4> kBlack{};

std::size_t entriesIn(const char* folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

// A presenter whose view is in a host's window.
class Presenting {
 public:
  Presenting(std::uint16_t width, std::uint16_t height)
      : host("host", {40, 30, width, height}, kWhite) {
    if (presenter != nullptr) host.adopt(vlm_present_view(presenter));
  }
  ~Presenting() {
    vlm_present_destroy(presenter);
    runMainLoop();
  }

  int enqueue(const Ref<CVPixelBuffer>& picture) const {
    return vlm_present_enqueue(presenter, picture.get(), 0);
  }
  // Hands the picture over until it is taken.
  bool present(const Ref<CVPixelBuffer>& picture) const {
    return eventually([&] { return enqueue(picture) == VLM_PRESENT_OK; });
  }
  bool showsQuadrants(int width, int height, double tolerance = kTolerance) const {
    return eventually([&] { return shows(host, width, height, kQuadrants, tolerance); });
  }

  void* const presenter = vlm_present_create();
  Canvas host;
};

TEST(Present, PicturesOfEveryFormatFillTheView) {
  const struct {
    platform::OSType format;
    std::size_t width, height;
    platform::YCbCrMatrix matrix = platform::YCbCrMatrix::bt601;
  } cases[] = {{kVideoRange, 321, 203}, {kVideoRange, 321, 203, platform::YCbCrMatrix::bt709},
               {kVideoRange, 64, 48},   {kFullRange, 1280, 801},
               {kPacked, 321, 203},     {kPacked, 1000, 700}};
  for (const auto& arguments : {std::vector<std::string>{}, {"-extension", "MIT-SHM"}}) {
    auto options = kBareServer;
    options.serverArguments = arguments;
    const PrivateDesktop desktop(options);
    for (const auto& [format, width, height, matrix] : cases) {
      const Presenting presenting(321, 203);
      EXPECT_TRUE(presenting.present(makeQuadrants(width, height, format, matrix)));
      const bool isExact = matrix == platform::YCbCrMatrix::bt601;
      EXPECT_TRUE(presenting.showsQuadrants(321, 203, isExact ? kTolerance : kTolerance709))
          << format << ", " << width << " wide, server with " << arguments.size();
    }
  }
}

TEST(Present, FollowsItsHostsSizeAndVisibility) {
  const PrivateDesktop desktop;  // with a window manager
  Presenting presenting(320, 240);
  auto& host = presenting.host;
  ASSERT_TRUE(presenting.present(makeQuadrants(320, 240, kVideoRange)));
  EXPECT_TRUE(presenting.showsQuadrants(320, 240));

  outputOf({"xdotool", "windowsize", text(host.id()), "500", "411"});
  EXPECT_TRUE(presenting.showsQuadrants(500, 411)) << "the last picture is drawn anew";
  const auto view = *static_cast<const std::uint32_t*>(vlm_present_view(presenting.presenter));
  EXPECT_EQ(frameSeen(view), frameSeen(host.id()));

  // Pictures for a hidden view are taken, and the last is there when it is seen.
  outputOf({"xdotool", "windowunmap", "--sync", text(host.id())});
  ASSERT_TRUE(presenting.present(makeQuadrants(16, 16, kPacked)));
  ASSERT_TRUE(presenting.present(makeQuadrants(160, 160, kPacked)));
  host.show();
  EXPECT_TRUE(presenting.showsQuadrants(500, 411));

  vlm_present_clear(presenting.presenter);
  EXPECT_TRUE(eventually([&] { return shows(host, 500, 411, kBlack); }));
  ASSERT_TRUE(presenting.present(makeQuadrants(500, 411, kFullRange)));
  EXPECT_TRUE(presenting.showsQuadrants(500, 411));
}

TEST(Present, FillsAHostWhoseSizeItHadBefore) {
  const PrivateDesktop desktop(kBareServer);
  Presenting presenting(320, 240);
  Canvas next("next", {400, 30, 320, 240}, kWhite);
  next.adopt(vlm_present_view(presenting.presenter), 0, 0);
  const auto picture = makeQuadrants(320, 240, kPacked);
  ASSERT_TRUE(presenting.present(picture));
  EXPECT_TRUE(eventually([&] { return shows(next, 320, 240, kQuadrants); })) << "from host to host";
  void* const other = vlm_present_create();
  const void* view = vlm_present_view(other);
  outputOf({"xdotool", "windowsize", text(*static_cast<const std::uint32_t*>(view)), "320", "240"});
  presenting.host.adopt(view, 0, 0);
  EXPECT_TRUE(eventually([&] { return vlm_present_enqueue(other, picture.get(), 0) == 0; }));
  EXPECT_TRUE(presenting.showsQuadrants(320, 240));
  vlm_present_destroy(other);
}

TEST(Present, LetsClicksThroughAndSurvivesTheHostsWindow) {
  const PrivateDesktop desktop(kBareServer);
  Presenting presenting(320, 240);
  const auto picture = makeQuadrants(320, 240, kVideoRange);
  ASSERT_TRUE(presenting.present(picture));
  ASSERT_TRUE(presenting.showsQuadrants(320, 240));
  outputOf({"xdotool", "mousemove", "140", "130", "click", "1"});
  EXPECT_TRUE(eventually([&] { return presenting.host.clicks() > 0; }));

  const auto viewId = [&] {
    return *static_cast<const std::uint32_t*>(vlm_present_view(presenting.presenter));
  };
  const auto first = viewId();
  testing::internal::CaptureStderr();
  presenting.host.close();
  const auto second = viewId();
  EXPECT_NE(second, first);
  EXPECT_EQ(runCommand({"xwininfo", "-id", text(second)}).status, 0);
  for (int i = 0; i < 200; ++i) {
    EXPECT_EQ(presenting.enqueue(picture), VLM_PRESENT_BUSY) << "until it has a place";
  }
  runMainLoop();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  Canvas next("next", {400, 30, 200, 150}, kWhite);
  next.adopt(vlm_present_view(presenting.presenter));
  EXPECT_TRUE(eventually([&] { return shows(next, 200, 150, kQuadrants); })) << "the last picture";
  EXPECT_TRUE(presenting.present(picture));
}

TEST(Present, TheHostsSizeHoldsAndNothingElseIsSeenWhileItGrows) {
  const PrivateDesktop desktop(kBareServer);
  Presenting presenting(700, 500);
  auto& host = presenting.host;
  const auto view =
      text(*static_cast<const std::uint32_t*>(vlm_present_view(presenting.presenter)));
  ASSERT_TRUE(presenting.present(makeQuadrants(64, 48, kVideoRange)));
  ASSERT_TRUE(presenting.showsQuadrants(700, 500));
  outputOf({"xdotool", "windowmove", view, "20", "10", "windowsize", view, "60", "40"});
  const auto isAt = [&](const std::string& frame) {
    return eventually(
        [&] { return frameSeen(static_cast<std::uint32_t>(std::stoul(view))) == frame; });
  };
  EXPECT_TRUE(isAt("60,40 60x40"));
  outputOf({"xdotool", "windowsize", "--sync", text(host.id()), "720", "520"});
  int wrong = 0;
  for (int side = 60; side < 460; side += 2) {
    host.resizeChild(static_cast<std::uint16_t>(side), static_cast<std::uint16_t>(side));
    for (int look = 0; look < 4; ++look) {
      const auto [blue, green, red] = host.lastPixelOfChild();
      const Rgb& wanted = kQuadrants[3];
      if (std::abs(red - wanted.red) > kTolerance || std::abs(green - wanted.green) > kTolerance ||
          std::abs(blue - wanted.blue) > kTolerance) {
        ++wrong;
      }
    }
  }
  EXPECT_EQ(wrong, 0) << "of 800 looks";
  EXPECT_TRUE(isAt("60,40 458x458"));
}

TEST(Present, AnswersBusyWhileTheServerStandsStill) {
  PrivateDesktop desktop(kBareServer);
  const Presenting presenting(320, 240);
  const auto picture = makeQuadrants(1920, 1080, kVideoRange);
  ASSERT_TRUE(presenting.present(picture));
  ASSERT_TRUE(presenting.showsQuadrants(320, 240));

  desktop.server().signal(SIGSTOP);
  int taken = 0;
  for (int i = 0; i < 300; ++i) {
    if (presenting.enqueue(picture) == VLM_PRESENT_OK) ++taken;
  }
  desktop.server().signal(SIGCONT);
  EXPECT_LE(taken, 2) << "one may still have been on its way";
  EXPECT_TRUE(presenting.present(picture));
}

TEST(Present, SurvivesTheServersDeath) {
  PrivateDesktop desktop(kBareServer);
  const Presenting presenting(320, 240);
  const auto picture = makeQuadrants(320, 240, kVideoRange);
  ASSERT_TRUE(presenting.present(picture));
  desktop.killServer();
  ASSERT_TRUE(eventually([&] { return presenting.enqueue(picture) == VLM_PRESENT_BUSY; }));

  testing::internal::CaptureStderr();
  for (int i = 0; i < 200; ++i) EXPECT_EQ(presenting.enqueue(picture), VLM_PRESENT_BUSY);
  runMainLoop();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "nothing could be recovered";
  EXPECT_NE(vlm_present_view(presenting.presenter), nullptr);
  EXPECT_EQ(vlm_present_create(), nullptr) << "there is no server to make a view with";
}

TEST(Present, MakesAndEndsViewsOffTheMainThread) {
  const PrivateDesktop desktop(kBareServer);
  Canvas host("host", {40, 30, 200, 150}, kWhite);
  bool ended = false;
  std::thread worker([&] {
    void* presenter = vlm_present_create();
    host.adopt(vlm_present_view(presenter));
    const auto picture = makeQuadrants(200, 150, kVideoRange);
    EXPECT_TRUE(eventually([&] {
      return vlm_present_enqueue(presenter, picture.get(), 0) == VLM_PRESENT_OK &&
             shows(host, 200, 150, kQuadrants);
    }));
    vlm_present_destroy(presenter);
    g_main_context_invoke(
        nullptr,
        [](gpointer flag) -> gboolean {
          *static_cast<bool*>(flag) = true;
          return G_SOURCE_REMOVE;
        },
        &ended);
  });
  while (!ended) g_main_context_iteration(nullptr, TRUE);
  worker.join();
  EXPECT_TRUE(eventually([&] {
    return outputOf({"xwininfo", "-children", "-id", text(host.id())}).find("0 children") !=
           std::string::npos;
  }));
}

TEST(Present, LeavesNothingBehind) {
  const PrivateDesktop desktop(kBareServer);
  const auto picture = makeQuadrants(64, 48, kVideoRange);
  const auto once = [&] {
    const Presenting presenting(64, 48);
    presenting.enqueue(picture);
  };
  // What is made once for the process, the main loop's own descriptors say, is not counted.
  for (int i = 0; i < 10; ++i) once();
  runMainLoop();
  const auto threads = entriesIn("/proc/self/task");
  const auto descriptors = entriesIn("/proc/self/fd");
  for (int i = 0; i < 1000; ++i) once();
  // The last view's thread may still be on its way out.
  EXPECT_TRUE(eventually([&] { return entriesIn("/proc/self/task") <= threads; }));
  EXPECT_TRUE(eventually([&] { return entriesIn("/proc/self/fd") <= descriptors; }));
  EXPECT_NE(outputOf({"xwininfo", "-root", "-children"}).find("0 children"), std::string::npos);
}

}  // namespace
}  // namespace vlm::test
