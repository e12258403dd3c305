// A headless GNOME session, captured by its portal through the public header. What is on the screen
// was drawn by a client of Wayland alone, and consent was given by the permission store's own call.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <optional>
#include <thread>

#include "VelmoraMacNative.h"
#include "e2e/frame_recorder.h"
#include "e2e/spots.h"
#include "wayland/person.h"
#include "wayland/private_session.h"

namespace vlm::test {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t kGrey = 0x707070, kRed = 0xE02020, kGreen = 0x20E020;

class Wayland : public testing::Test {
 protected:
  void SetUp() override {
    if (!PrivateSession::isInstalled()) GTEST_SKIP() << "there is no GNOME desktop to start";
    begin();
  }
  void begin() {
    session.reset();
    session.emplace();
    environment.set("VLM_PORTAL_TOKEN_FILE", session->file("token"));
  }
  // A person agreed in an earlier run of the host.
  void agree() {
    session->grant();
    writeFile(session->file("token"), std::string(PrivateSession::kToken) + "\n");
  }
  static bool start(FrameRecorder& recorder, int maxWidth = 0, int maxHeight = 0) {
    return recorder.start(vlm_capture_start_display, 0U, 60, maxWidth, maxHeight);
  }

  std::optional<PrivateSession> session;
  Environment environment;
};

TEST_F(Wayland, PermissionIsThereWithConsentAndADesktopThatShares) {
  EXPECT_TRUE(vlm_screen_capture_ready());
  EXPECT_FALSE(vlm_perm_screen_recording(false)) << "before a person agreed";
  agree();
  EXPECT_TRUE(vlm_perm_screen_recording(false));
  EXPECT_TRUE(vlm_perm_screen_recording(true)) << "no dialog opens";
  struct stat status {};
  FrameRecorder recorder;
  ASSERT_TRUE(start(recorder));
  ASSERT_EQ(stat(session->file("token").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U) << "replaced";
  recorder.stop();
  std::filesystem::remove(session->file("token"));
  EXPECT_TRUE(vlm_perm_screen_recording(false)) << "for the rest of the process";
  environment.set("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + session->file("no bus"));
  EXPECT_FALSE(vlm_perm_screen_recording(true)) << "no portal";
  EXPECT_FALSE(vlm_screen_capture_ready());
  environment.set("VLM_SESSION_TYPE", "x11");
  EXPECT_FALSE(vlm_perm_screen_recording(false)) << "no X server";
}

TEST_F(Wayland, StillScreenYieldsItsPictureOnceAndAChangeAtOnce) {
  agree();
  NativeClient client(*session);
  client.fill("100 80 200 150 E02020");
  FrameRecorder whole, half;
  ASSERT_TRUE(start(whole));
  ASSERT_TRUE(start(half, 640, 360)) << "without asking again, beside the first";
  expectShown(whole, "whole", {{110, 90, kRed}, {90, 70, kGrey}, {1270, 710, kGrey}});
  expectShown(half, "half", {{55, 45, kRed}, {140, 110, kRed}, {160, 130, kGrey}});
  double x = -1, y = -1, width = 0, height = 0;
  EXPECT_TRUE(vlm_capture_bounds(whole.capture(), &x, &y, &width, &height));
  EXPECT_EQ((std::array{x, y, width, height}), (std::array{0.0, 0.0, 1280.0, 720.0}));
  const auto before = (whole.last(), whole.count());
  std::this_thread::sleep_for(500ms);
  EXPECT_EQ(whole.count(), before);
  client.fill("600 400 33 17 20E020");
  expectShown(whole, "changed", {{610, 410, kGreen}, {590, 410, kGrey}, {110, 90, kRed}});
  EXPECT_EQ(whole.count(), before + 1);
  whole.stop();
  client.fill("600 400 33 17 E02020");
  expectShown(half, "the other's end", {{306, 204, kRed}});
}

TEST_F(Wayland, WindowsThatNobodyCanPickAreRefused) {
  NativeClient client(*session);
  FrameRecorder recorder;
  EXPECT_FALSE(recorder.start(vlm_capture_start_window, 1U, 60, 0, 0));
  EXPECT_FALSE(recorder.start(vlm_capture_start_app, "native", 60, 0, 0));
  EXPECT_EQ(vlm_capture_find_window(nullptr, nullptr), 0U);
}

TEST_F(Wayland, LossOfTheDesktopEndsTheCaptureAndNothingHangs) {
  struct Case {
    const char* what;
    std::function<void(PrivateSession&)> lose;
    const char* reason;
  };
  const auto kill = [](const char* name) { ::kill(PrivateSession::serverOf(name), SIGKILL); };
  const Case kCases[] = {
      {"compositor", [](auto& s) { s.compositor().end(SIGKILL); }, "the desktop ended the capture"},
      {"the monitor as it was", [](auto&) { PrivateSession::rotateMonitor(); },
       "the desktop ended the capture"},
      {"PipeWire", [](auto& s) { s.pipeWire().end(SIGKILL); },
       "the connection to PipeWire was lost"},
      {"the desktop's portal", [&](auto&) { kill("org.freedesktop.impl.portal.desktop.gnome"); },
       "the desktop ended the capture"},
  };
  for (const auto& [what, lose, reason] : kCases) {
    begin();
    agree();
    NativeClient client(*session);
    FrameRecorder recorder;
    ASSERT_TRUE(start(recorder)) << what;
    ASSERT_GT(recorder.last().width, 0) << what;
    testing::internal::CaptureStderr();
    lose(*session);
    std::this_thread::sleep_for(1s);
    recorder.stop();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string("[vlm] capture stream stopped with error: ") + reason + "\n")
        << what;
  }
}

TEST_F(Wayland, PersonIsAskedOnceForTheScreenAndMayRefuse) {
  NativeClient client(*session);
  Person person;
  const auto answeredWith = [&](const auto& keys) {
    return std::thread([&] { person.answer(client, keys); });
  };
  auto refusal = answeredWith(Person::kCancel);
  EXPECT_FALSE(vlm_perm_screen_recording(true));
  refusal.join();
  EXPECT_FALSE(vlm_perm_screen_recording(false));
  auto consent = answeredWith(Person::kShareScreen);
  FrameRecorder recorder;
  EXPECT_TRUE(start(recorder));
  consent.join();
  expectShown(recorder, "after consent", {{640, 360, kGrey}});
  EXPECT_TRUE(vlm_perm_screen_recording(false));
  FrameRecorder second;
  EXPECT_TRUE(start(second)) << "no second dialog opens";
}

TEST_F(Wayland, InputReachesANativeWindowOnceAPersonGaveLeave) {
  NativeClient client(*session);
  Person person;
  EXPECT_FALSE(vlm_perm_accessibility(false));
  testing::internal::CaptureStderr();
  vlm_input_key(0, true, 0);
  vlm_input_mouse_move(10, 10);
  EXPECT_EQ(timesIn(testing::internal::GetCapturedStderr(), "[vlm]"), 1U);
  std::thread consent([&] { person.answer(client, Person::kShareInput); });
  ASSERT_TRUE(vlm_perm_accessibility(true));
  consent.join();
  EXPECT_TRUE(vlm_perm_accessibility(true)) << "no second dialog opens";
  constexpr std::uint64_t kShift = 0x20000;
  // The first input makes the pointer, which the client has to notice.
  ASSERT_TRUE(eventually([&] {
    vlm_input_mouse_move(300, 200);
    return timesIn(client.input(), "motion 300 200\n") > 0;
  }));
  for (const bool down : {true, false}) vlm_input_mouse_button(1, down, 310, 220);
  vlm_input_mouse_wheel(0, -80);
  for (const bool down : {true, false}) vlm_input_key(0, down, kShift);
  for (const bool down : {true, false}) vlm_input_key(0x35, down, 0);  // Escape
  vlm_input_warp_cursor(1e9, -5);                                      // the nearest place
  for (const auto* each :
       {"motion 310 220\n", "button 3 down\n", "button 3 up\n", "scroll +0.0 +1.0",
        "key 50 down plain\nkey 38 down shift\nkey 38 up shift\n"
        "key 50 up shift\nkey 9 down plain\nkey 9 up plain\n",
        "motion 1279 0\n"}) {
    EXPECT_TRUE(eventually([&] { return timesIn(client.input(), each) > 0; })) << each;
  }
  EXPECT_FALSE(vlm_input_cursor_pos(nullptr, nullptr));
  PrivateSession::rotateMonitor();
  EXPECT_TRUE(eventually([] { return !vlm_perm_accessibility(false); })) << "taken back";
  vlm_input_key(0, true, 0);
}

TEST_F(Wayland, PortalThatHangsIsWaitedForOnlySoLong) {
  agree();
  ASSERT_TRUE(vlm_perm_screen_recording(false));
  const pid_t portal = PrivateSession::serverOf("org.freedesktop.portal.Desktop");
  kill(portal, SIGSTOP);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_FALSE(vlm_perm_screen_recording(true));
  EXPECT_LT(std::chrono::steady_clock::now() - before, 60s);
  kill(portal, SIGCONT);
  EXPECT_TRUE(eventually([] { return vlm_perm_screen_recording(false); }));
}

}  // namespace
}  // namespace vlm::test
