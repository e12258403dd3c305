// The view in windows of GTK, Qt and SDL, each a host program of its own with the toolkit's main
// loop. What is on the screen is judged by ImageMagick.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <optional>
#include <sstream>

#include "e2e/desktop.h"
#include "e2e/quadrants.h"
#include "support/private_desktop.h"

namespace vlm::test {
namespace {

constexpr double kTolerance = 10;
constexpr int kScreenWidth = 800, kScreenHeight = 600;

struct Toolkit {
  const char* name;
  int margin;      // that the host leaves around the view
  bool keepsView;  // when it destroys the window: Qt's own embedding takes the view out
};

// A host and the socket to it.
class Host {
 public:
  explicit Host(const Toolkit& toolkit) : toolkit_(toolkit) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) throw errno;
    socket_ = ends[0];
    program_.emplace(
        std::vector<std::string>{std::string(VLM_TOOLKIT_HOSTS "/") + toolkit.name + "_host",
                                 std::to_string(ends[1])},
        ends[1]);
    close(ends[1]);
  }
  ~Host() { close(socket_); }

  // The host's answer, nothing when it has died.
  std::string ask(const std::string& command) const {
    char answer[256];
    if (send(socket_, command.data(), command.size(), MSG_NOSIGNAL) < 0) return {};
    const auto length = recv(socket_, answer, sizeof answer, 0);
    return length > 0 ? std::string(answer, static_cast<std::size_t>(length) - 1) : std::string();
  }
  struct Report {
    int lastResult = -100, windowEvents = 0, keys = 0;
  };
  Report report(const std::string& presenter) const {
    Report report;
    std::istringstream(ask("report " + presenter)) >> report.lastResult >> report.windowEvents >>
        report.keys;
    return report;
  }

  // True when the window has this size and the picture all of it but the margin.
  bool shows(const std::string& title, int width, int height) const {
    const int margin = toolkit_.margin;
    std::string format = "%w %h ";
    for (const int y : {margin + 2, height - margin - 3}) {
      for (const int x : {margin + 2, width - margin - 3}) format += pixelAt(x, y);
    }
    format += pixelAt(margin / 2, margin / 2);
    std::istringstream seen(
        runCommand({"import", "-window", title, "-depth", "8", "-format", format, "info:-"})
            .output);
    int seenWidth = 0, seenHeight = 0;
    seen >> seenWidth >> seenHeight;
    if (seenWidth != width || seenHeight != height) return false;
    for (const Rgb& color : kQuadrants) {
      if (!isNext(seen, color)) return false;
    }
    return isNext(seen, margin > 0 ? Rgb{255, 255, 255} : kQuadrants[0]);
  }
  // Raises the window first: what is judged is the screen at its place.
  bool comesToShow(const std::string& title, int width = 320, int height = 240) const {
    runCommand({"wmctrl", "-a", title});
    return eventually([&] { return shows(title, width, height); });
  }

 private:
  static std::string pixelAt(int x, int y) {
    std::string format;
    for (const char* channel : {"r", "g", "b"}) {
      format += "%[fx:255*p{" + std::to_string(x) + "," + std::to_string(y) + "}." + channel + "] ";
    }
    return format;
  }
  static bool isNext(std::istream& seen, const Rgb& color) {
    for (const double wanted : {color.red, color.green, color.blue}) {
      double got = -1;
      if (!(seen >> got) || std::abs(got - wanted) > kTolerance) return false;
    }
    return true;
  }

  const Toolkit toolkit_;
  int socket_ = -1;
  std::optional<ChildProcess> program_;
};

bool isMapped(const std::string& title) {
  return runCommand({"xwininfo", "-name", title}).output.find("IsViewable") != std::string::npos;
}

class InToolkit : public testing::TestWithParam<Toolkit> {
 protected:
  void SetUp() override { ASSERT_EQ(host.ask("open first"), "done"); }
  void does(const std::string& command) { ASSERT_EQ(host.ask(command), "done") << command; }
  bool answers(const std::string& presenter, int result) {
    return eventually([&] { return host.report(presenter).lastResult == result; });
  }

  PrivateDesktop desktop{{.width = kScreenWidth, .height = kScreenHeight}};
  Host host{GetParam()};
};

TEST_P(InToolkit, TheViewFollowsItsWindow) {
  host.ask("embed view first");
  EXPECT_TRUE(host.comesToShow("first"));
  does("resize first 500 411");
  EXPECT_TRUE(host.comesToShow("first", 500, 411));
  does("resize first 250 200");
  EXPECT_TRUE(host.comesToShow("first", 250, 200));
  does("hide first");
  EXPECT_TRUE(eventually([] { return !isMapped("first"); }));
  EXPECT_TRUE(answers("view", 0)) << "frames for a hidden window are taken";
  does("show first");
  EXPECT_TRUE(host.comesToShow("first", 250, 200));
  does("full first");
  EXPECT_TRUE(host.comesToShow("first", kScreenWidth, kScreenHeight));
  does("restore first");
  EXPECT_TRUE(host.comesToShow("first", 250, 200));
}

TEST_P(InToolkit, TheViewOutlivesWindows) {
  const auto before = host.ask("embed view first");
  EXPECT_TRUE(host.comesToShow("first"));
  does("remake first");
  EXPECT_EQ(host.ask("embed view first") == before, GetParam().keepsView);
  EXPECT_TRUE(host.comesToShow("first")) << "after the toolkit made its X window anew";

  does("open second");
  host.ask("embed view second");
  EXPECT_TRUE(host.comesToShow("second")) << "moved to another parent";
  host.ask("embed other first");
  EXPECT_TRUE(host.comesToShow("first")) << "a second view";
  EXPECT_TRUE(host.comesToShow("second"));

  does("close second");
  EXPECT_TRUE(answers("view", 1)) << "busy without a window";
  does("open third");
  host.ask("embed view third");
  EXPECT_TRUE(host.comesToShow("third"));
  EXPECT_TRUE(answers("view", 0));
  does("close third");
  does("destroy view");
  does("destroy other");
  does("close first");
  does("open last");
}

TEST_P(InToolkit, TrackingAndKeysAreServedByItsLoop) {
  host.ask("embed view first");
  EXPECT_TRUE(host.comesToShow("first"));
  const auto clock = text(desktop.spawnWindow({"xclock"}, "xclock"));
  does("watch " + outputOf({"xdotool", "getwindowpid", clock}));
  outputOf({"xdotool", "windowsize", clock, "222", "200"});
  EXPECT_TRUE(eventually([&] { return host.report("view").windowEvents > 0; }));
  for (const auto& window : {std::string("first"), std::string("xclock")}) {
    outputOf({"wmctrl", "-a", window});
    const int before = host.report("view").keys;
    outputOf({"xdotool", "key", "F5"});
    EXPECT_TRUE(eventually([&] { return host.report("view").keys > before; })) << window;
  }
  EXPECT_TRUE(host.comesToShow("first"));
}

INSTANTIATE_TEST_SUITE_P(Each, InToolkit,
                         testing::Values(Toolkit{"gtk3", 0, false}, Toolkit{"qt5", 20, true},
                                         Toolkit{"sdl2", 0, false}),
                         [](const auto& toolkit) { return std::string(toolkit.param.name); });

}  // namespace
}  // namespace vlm::test
