// What a host meets beside the functions: the library's threads with their names and signals, and
// its log.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "VelmoraMacNative.h"
#include "e2e/desktop.h"
#include "support/private_desktop.h"
#include "support/private_session_bus.h"
#include "support/private_sound_server.h"

namespace vlm::test {
namespace {

// The rest of the line in a file of /proc that begins with `label`; the first line for none.
std::string lineOf(const std::filesystem::path& path, const std::string& label = "") {
  std::ifstream file(path);
  std::string line;
  while (std::getline(file, line)) {
    if (line.starts_with(label)) return line.substr(label.size());
  }
  return "";
}

struct ThreadSeen {
  std::string name;
  std::uint64_t blocked = 0;  // a bit for each signal, the first for signal 1
};

std::map<std::string, ThreadSeen> threadsOfThisProcess() {
  std::map<std::string, ThreadSeen> threads;
  for (const auto& each : std::filesystem::directory_iterator("/proc/self/task")) {
    const auto mask = lineOf(each.path() / "status", "SigBlk:\t");
    if (mask.empty()) continue;  // it has just ended
    threads[each.path().filename()] = {lineOf(each.path() / "comm"),
                                       std::stoull(mask, nullptr, 16)};
  }
  return threads;
}

// GIO starts threads too, which keep its names.
bool isNameOfOurs(const std::string& name) {
  return name.starts_with("vlm.") || name == "gmain" || name == "gdbus" ||
         name.starts_with("pool-") || name == "dconf worker";
}

std::atomic<pid_t> handledBy{0};

// Everything of the library that works on threads, running at once.
class BusySession {
 public:
  BusySession() {
    capture = vlm_capture_start_display(0, 30, 320, 240, onFrame, onAudio, this);
    decoder = vlm_dec_create(ignoreFrame, nullptr);
    presenter = vlm_present_create();
    microphone = vlm_audio_in_start("mic", ignoreSound, nullptr);
    playback = vlm_audio_out_start("spk", 2);
    hotKeys = vlm_hotkey_monitor_start(ignoreKey);
    const std::uint8_t secret = 1;
    vlm_secret_set("vlm.test", "threads", &secret, 1);
  }
  ~BusySession() {
    vlm_capture_stop(capture);
    vlm_enc_destroy(encoder);
    vlm_dec_destroy(decoder);
    vlm_present_destroy(presenter);
    vlm_audio_in_stop(microphone);
    vlm_audio_out_stop(playback);
    if (hotKeys) vlm_hotkey_monitor_stop();
  }
  bool isComplete() const {
    return capture && decoder && presenter && microphone && playback && hotKeys && decoded > 0 &&
           heard > 0;
  }

 private:
  static void onFrame(void* picture, std::int32_t width, std::int32_t height, std::int64_t time,
                      void* self) {
    auto& session = *static_cast<BusySession*>(self);
    if (session.encoder == nullptr) {
      session.encoder = vlm_enc_create(width, height, 30, 1'000'000, true, onEncoded, self);
    }
    vlm_enc_encode(session.encoder, picture, time, false);
  }
  static void onEncoded(const std::uint8_t* data, std::int32_t size, bool, std::int64_t time,
                        void* self) {
    auto& session = *static_cast<BusySession*>(self);
    if (vlm_dec_decode(session.decoder, data, size, time)) ++session.decoded;
  }
  static void onAudio(const float*, std::int32_t, std::int32_t, std::int32_t, void* self) {
    ++static_cast<BusySession*>(self)->heard;
  }
  static void ignoreFrame(void*, std::int32_t, std::int32_t, std::int64_t, void*) {}
  static void ignoreSound(const float*, std::int32_t, void*) {}
  static void ignoreKey(std::int32_t) {}

  void* capture = nullptr;
  void* encoder = nullptr;
  void* decoder = nullptr;
  void* presenter = nullptr;
  void* microphone = nullptr;
  void* playback = nullptr;
  bool hotKeys = false;
  std::atomic<int> decoded = 0;
  std::atomic<int> heard = 0;
};

TEST(Threads, HaveNamesAndLeaveTheHostsSignalsToTheHost) {
  const PrivateDesktop desktop;
  const PrivateSoundServer sound;
  PrivateSessionBus bus;
  bus.startKeyring();
  const auto before = threadsOfThisProcess();
  const BusySession session;
  ASSERT_TRUE(pumpUntil([&] { return session.isComplete(); }));

  std::uint64_t wanted = 0;
  for (const int each : {SIGUSR1, SIGTERM, SIGINT, SIGALRM, SIGCHLD, SIGPIPE, SIGHUP}) {
    wanted |= std::uint64_t{1} << (each - 1);
  }
  std::map<std::string, int> names;
  for (const auto& [id, thread] : threadsOfThisProcess()) {
    if (before.contains(id)) continue;
    ++names[thread.name];
    EXPECT_TRUE(isNameOfOurs(thread.name)) << thread.name;
    EXPECT_EQ(thread.blocked & wanted, wanted) << thread.name;
  }
  for (const auto* name : {"vlm.capture", "vlm.screen", "vlm.encoder", "vlm.decoder", "vlm.view",
                           "vlm.sound", "vlm.mixture"}) {
    EXPECT_GT(names[name], 0) << name;
  }

  // A signal that the host's only thread blocks waits for it, and no thread of the library takes
  // it.
  sigset_t user;
  sigset_t old;
  sigemptyset(&user);
  sigaddset(&user, SIGUSR1);
  std::signal(SIGUSR1, [](int) { handledBy = gettid(); });
  pthread_sigmask(SIG_BLOCK, &user, &old);
  int taken = 0;
  for (int attempt = 0; attempt < 20; ++attempt) {
    kill(getpid(), SIGUSR1);
    usleep(2000);
    if (handledBy.exchange(0) != 0) ++taken;
  }
  EXPECT_EQ(taken, 0) << "of 20 signals";
  pthread_sigmask(SIG_SETMASK, &old, nullptr);
  EXPECT_EQ(handledBy, gettid());
}

std::vector<std::string> linesSeen;

TEST(Log, LinesGoToTheHostsFunctionWhereItHasOne) {
  unsetenv("DISPLAY");
  const auto failToStart = [] {
    testing::internal::CaptureStderr();
    EXPECT_EQ(vlm_capture_start_display(
                  0, 30, 320, 240, [](auto...) {}, nullptr, nullptr),
              nullptr);
    return testing::internal::GetCapturedStderr();
  };
  const auto setHook = [](void (*hook)(const char*)) {
    g_dataset_set_data(g_main_context_default(), "VelmoraMacNative.log",
                       reinterpret_cast<gpointer>(hook));
  };
  const auto written = failToStart();
  EXPECT_THAT(written, testing::StartsWith("[vlm] "));
  setHook([](const char* line) { linesSeen.emplace_back(line); });
  EXPECT_EQ(failToStart(), "");
  ASSERT_EQ(linesSeen.size(), 1U);
  EXPECT_EQ(linesSeen.front() + "\n", written);
  setHook(nullptr);
  EXPECT_EQ(failToStart(), written);
}

}  // namespace
}  // namespace vlm::test
