// Playing what a host writes, and capturing what others play.
#include "e2e/sounds.h"
#include "support/private_desktop.h"

namespace vlm::test {
namespace {

TEST(Playback, IsOneUnbrokenToneOnEachSide) {
  PrivateSoundServer server;
  const auto attempt = [&](const char* uid) {
    SoundRecorder recorder(server, "spk.monitor");
    void* playback = vlm_audio_out_start(uid, 2);
    ASSERT_NE(playback, nullptr);
    const double seconds = toneSeconds();
    playSteadily(playback, sine(seconds, {997, 1499}, 0.5), 2);
    sleepFor(milliseconds(200));
    vlm_audio_out_stop(playback);
    const auto recorded = recorder.finish();
    expectTone(toneIn(recorded, 2, 0, 997), 997, 0.5, seconds);
    expectTone(toneIn(recorded, 2, 1, 1499), 1499, 0.5, seconds);
    EXPECT_LT(toneIn(recorded, 2, 0, 1499).amplitude, 0.001);
  };
  expectInOneAttempt([&] { attempt("spk"); });
  expectInOneAttempt([&] { attempt(nullptr); });
}

TEST(Playback, StaysOnItsDeviceOrFollowsTheDefault) {
  if (PrivateSoundServer::isPipeWire())
    GTEST_SKIP() << "PipeWire has a dummy output when no other is left";
  PrivateSoundServer server;
  void* named = vlm_audio_out_start("spk", 1);
  void* unnamed = vlm_audio_out_start("", 1);
  EXPECT_EQ(sinksOfStreams(), (std::vector<std::string>{"spk", "spk"}));
  outputOf({"pactl", "set-default-sink", "micfeed"});
  EXPECT_TRUE(eventually([] {
    return sinksOfStreams() == std::vector<std::string>{"spk", "micfeed"};
  }));
  outputOf({"pactl", "unload-module", "module-null-sink"});
  const Samples samples(4800, 0.1F);
  for (void* playback : {named, unnamed}) {
    vlm_audio_out_write(playback, samples.data(), 4800);
    vlm_audio_out_stop(playback);
  }
  EXPECT_EQ(vlm_audio_out_start(nullptr, 1), nullptr) << "no output is left";
}

void captureOthersAndPlay() {
  PrivateDesktop desktop;
  PrivateSoundServer server;
  const double seconds = toneSeconds();
  const auto before = soundFile(server, "before.wav", sine(seconds + 2, {440, 440}, 0.25));
  const auto during = soundFile(server, "during.wav", sine(seconds, {997, 1499}, 0.25));
  const ChildProcess playsAlready({"paplay", "--device=micfeed", before});
  sleepFor(milliseconds(200));
  CapturedAudio captured;
  void* capture = vlm_capture_start_display(0, 30, 0, 0, CapturedAudio::onFrame,
                                            CapturedAudio::onAudio, &captured);
  ASSERT_NE(capture, nullptr);
  const auto start = std::chrono::steady_clock::now();
  void* playback = vlm_audio_out_start("spk", 2);
  std::thread own([&] { playSteadily(playback, sine(seconds + 0.5, {2500, 2500}, 0.5), 2); });
  outputOf({"paplay", "--device=spk", during});
  own.join();
  const std::chrono::duration<double> lasted = std::chrono::steady_clock::now() - start;
  vlm_capture_stop(capture);
  vlm_audio_out_stop(playback);
  const Samples& all = captured.samples;
  EXPECT_NEAR(static_cast<double>(all.size()) / 2, lasted.count() * 48000, 0.1 * 48000);
  EXPECT_GT(captured.frames, 0);
  // Both others are heard all the time that they play, and this process never.
  const std::span<const float> middle(all.data() + all.size() / 4 * 2, all.size() / 4);
  const Tone other = toneIn(middle, 2, 0, 997);
  EXPECT_NEAR(other.frequency, 997, 0.01);
  EXPECT_NEAR(other.amplitude, 0.25, 0.01);
  EXPECT_LT(other.jump, 0.1);
  EXPECT_NEAR(toneIn(middle, 2, 1, 1499).amplitude, 0.25, 0.01);
  EXPECT_NEAR(toneIn(middle, 2, 0, 440).amplitude, 0.25, 0.01);
  EXPECT_LT(toneIn(middle, 2, 0, 2500).loudest, 0.005);
}

TEST(CaptureAudio, IsWhatOtherProgramsPlayAndNotWhatThisOneDoes) {
  expectInOneAttempt(captureOthersAndPlay);
}

}  // namespace
}  // namespace vlm::test
