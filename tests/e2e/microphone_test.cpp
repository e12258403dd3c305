// Microphones.
#include "e2e/sounds.h"

namespace vlm::test {
namespace {

TEST(Microphone, GivesStereoAt44100AsMonoAt48000) {
  if (PrivateSoundServer::isPipeWire())
    GTEST_SKIP() << "PipeWire gives every device in the rate of its graph";
  PrivateSoundServer server;
  const double seconds = toneSeconds();
  const auto tone = soundFile(server, "tone.wav", sine(seconds, {997, 997}, 0.5, 44100), 44100);
  const auto attempt = [&](const char* uid) {
    Microphone heard;
    void* microphone = vlm_audio_in_start(uid, Microphone::onSamples, &heard);
    ASSERT_NE(microphone, nullptr);
    const auto start = std::chrono::steady_clock::now();
    outputOf({"paplay", "--device=micfeed", tone});
    const std::chrono::duration<double> lasted = std::chrono::steady_clock::now() - start;
    vlm_audio_in_stop(microphone);
    const auto stopped = heard.samples.size();
    sleepFor(milliseconds(50));
    EXPECT_EQ(heard.samples.size(), stopped);
    expectTone(toneIn(heard.samples, 1, 0, 997), 997, 0.5, seconds);
    EXPECT_NEAR(static_cast<double>(stopped), lasted.count() * 48000, 0.1 * 48000);
    // 960 frames at 44,100 Hz are 1044.9 at 48,000 Hz; the first block fills the converter.
    ASSERT_GT(heard.counts.size(), 10U);
    for (std::size_t i = 1; i < heard.counts.size(); ++i) {
      EXPECT_TRUE(heard.counts[i] == 1044 || heard.counts[i] == 1045) << heard.counts[i];
    }
  };
  expectInOneAttempt([&] { attempt("mic"); });
  expectInOneAttempt([&] { attempt(nullptr); });
}

TEST(Microphone, IsNoneWhereThereAreOnlyMonitors) {
  PrivateSoundServer server;
  outputOf({"pactl", "unload-module", "module-remap-source"});
  EXPECT_EQ(vlm_audio_in_start(nullptr, Microphone::onSamples, nullptr), nullptr);
  EXPECT_EQ(vlm_audio_in_start("spk.monitor", Microphone::onSamples, nullptr), nullptr);
}

TEST(Microphone, StopsWhenItsCallbackReturnsHoweverSlowThatIs) {
  PrivateSoundServer server;
  std::atomic<int> millisecondsTaken = 30;  // for blocks of 20
  void* microphone = vlm_audio_in_start(
      "mic",
      [](const float*, std::int32_t, void* taken) {
        sleepFor(milliseconds(static_cast<std::atomic<int>*>(taken)->load()));
      },
      &millisecondsTaken);
  ASSERT_NE(microphone, nullptr);
  sleepFor(milliseconds(500));
  std::atomic<bool> hasStopped = false;
  std::thread stopping([&] {
    vlm_audio_in_stop(microphone);
    hasStopped = true;
  });
  EXPECT_TRUE(eventually([&] { return hasStopped.load(); }, std::chrono::seconds(3)));
  millisecondsTaken = 0;
  stopping.join();
}

TEST(Microphone, NeverHearsWhatTheMachinePlays) {
  PrivateSoundServer server;
  Microphone heard;
  void* microphone = vlm_audio_in_start(nullptr, Microphone::onSamples, &heard);
  ASSERT_NE(microphone, nullptr);
  EXPECT_FALSE(heardIn(heard, milliseconds(300)).empty());
  const ChildProcess player(
      {"paplay", "--device=spk", soundFile(server, "tone.wav", sine(10, {997, 997}, 0.5))});
  // The server moves the recording to what is left, the monitor of an output.
  outputOf({"pactl", "set-default-source", "spk.monitor"});
  outputOf({"pactl", "unload-module", "module-remap-source"});
  EXPECT_TRUE(heardIn(heard, milliseconds(700)).empty());
  outputOf(
      {"pactl", "load-module", "module-remap-source", "source_name=mic", "master=micfeed.monitor"});
  outputOf({"pactl", "set-default-source", "mic"});
  EXPECT_TRUE(eventually([&] { return !heardIn(heard, milliseconds(100)).empty(); }));
  vlm_audio_in_stop(microphone);
}

TEST(Microphone, FoldsEveryChannelOfADevice) {
  const struct {
    const char* channels;
    std::vector<double> weights;  // to each other
  } cases[] = {
      {"front-left,front-right,lfe", {1, 1, 0.7}},
      {"front-left,rear-left,front-right,rear-right", {1, 0.7, 1, 0.7}},
      {"front-left,front-right,front-center,lfe,rear-left,rear-right", {1, 1, 1.4, 0.7, 0.7, 0.7}},
      {"front-left,front-right,rear-left,rear-right,front-center,lfe,side-left,side-right",
       {1, 1, 0.7, 0.7, 1.4, 0.7, 0.7, 0.7}},
      {"aux0,aux1,aux2,aux3,aux4", {1, 1, 1, 1, 1}},
  };
  PrivateSoundServer server;
  for (const auto& [channels, weights] : cases) {
    SCOPED_TRACE(channels);
    const auto count = std::to_string(weights.size());
    const std::string map(channels);
    const auto sink =
        outputOf({"pactl", "load-module", "module-null-sink", "sink_name=many", "rate=48000",
                  "format=float32le", "norewinds=1", "channels=" + count, "channel_map=" + map});
    const auto source =
        outputOf({"pactl", "load-module", "module-remap-source", "source_name=manymic",
                  "master=many.monitor", "remix=no", "channels=" + count, "channel_map=" + map,
                  "master_channel_map=" + map});
    std::vector<double> frequencies;
    for (std::size_t i = 0; i < weights.size(); ++i) {
      frequencies.push_back(500 + 200 * static_cast<double>(i));
    }
    writeFile(server.file("many.raw"), sine(3, frequencies, 0.5));
    const ChildProcess player({"pacat", "--playback", "--device=many", "--format=float32le",
                               "--rate=48000", "--channels=" + count, "--channel-map=" + map,
                               "--raw", server.file("many.raw")});
    expectInOneAttempt([&, &wanted = weights] {
      Microphone heard;
      void* microphone = vlm_audio_in_start("manymic", Microphone::onSamples, &heard);
      ASSERT_NE(microphone, nullptr);
      sleepFor(milliseconds(300));
      const auto samples = heardIn(heard, milliseconds(300));
      vlm_audio_in_stop(microphone);
      double sum = 0;
      for (const double weight : wanted) sum += weight;
      for (std::size_t i = 0; i < wanted.size(); ++i) {
        EXPECT_NEAR(toneIn(samples, 1, 0, frequencies[i]).amplitude, 0.5 * wanted[i] / sum, 0.02)
            << "channel " << i;
      }
    });
    outputOf({"pactl", "unload-module", source});
    outputOf({"pactl", "unload-module", sink});
  }
}

}  // namespace
}  // namespace vlm::test
