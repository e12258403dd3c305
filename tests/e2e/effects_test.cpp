// Sound effects.
#include "e2e/sounds.h"

namespace vlm::test {
namespace {

// Where `part` begins in the left channel of a recording, sample by sample; -1 when nowhere.
std::ptrdiff_t find(const Samples& recorded, std::span<const float> part, std::size_t from = 0) {
  const auto at = std::search(recorded.begin() + static_cast<std::ptrdiff_t>(from), recorded.end(),
                              part.begin(), part.end());
  return at == recorded.end() ? -1 : at - recorded.begin();
}

bool hasEnded(void* sound) {
  return eventually([&] { return !vlm_sfx_is_playing(sound); });
}

void playThrice() {
  PrivateSoundServer server;
  const Samples samples = noise(24000);
  void* sound = vlm_sfx_create(soundFile(server, "noise.wav", samples).c_str());
  ASSERT_NE(sound, nullptr);
  EXPECT_EQ(vlm_sfx_duration(sound), 0.5);
  EXPECT_FALSE(vlm_sfx_is_playing(sound));
  SoundRecorder recorder(server, "spk.monitor");
  const auto start = std::chrono::steady_clock::now();
  vlm_sfx_play(sound, 5, 2);
  EXPECT_TRUE(vlm_sfx_is_playing(sound));
  sleepFor(milliseconds(700));
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  EXPECT_NEAR(vlm_sfx_position(sound), passed.count() - 0.5, 0.1);
  EXPECT_TRUE(hasEnded(sound));
  EXPECT_EQ(vlm_sfx_position(sound), 0);
  sleepFor(milliseconds(100));
  const auto looped = recorder.finish();
  // The server passes floats as they are.
  Samples thrice;
  for (int i = 0; i < 3; ++i) thrice.insert(thrice.end(), samples.begin(), samples.end());
  const auto begin = find(looped, std::span(samples).first(64));
  ASSERT_GE(begin, 0);
  const std::span heard(looped.begin() + begin, looped.end());
  ASSERT_GE(heard.size(), thrice.size());
  EXPECT_TRUE(std::ranges::equal(heard.first(thrice.size()), thrice));
  EXPECT_TRUE(std::ranges::all_of(heard.subspan(thrice.size()), [](float s) { return s == 0; }));
  vlm_sfx_destroy(sound);
}

TEST(SoundEffects, PlayEverySampleOnceInOrderAndLoopWithoutAGap) {
  expectInOneAttempt(playThrice);
}

void playAndSeek() {
  PrivateSoundServer server;
  const Samples samples = noise(96000);
  const std::span all(samples);
  void* sound = vlm_sfx_create(soundFile(server, "noise.flac", samples).c_str());
  ASSERT_NE(sound, nullptr);
  SoundRecorder recorder(server, "spk.monitor");
  vlm_sfx_play_from(sound, 1, 1);
  EXPECT_NEAR(vlm_sfx_position(sound), 1, 0.05);
  sleepFor(milliseconds(300));
  vlm_sfx_seek(sound, 0.25);
  EXPECT_EQ(vlm_sfx_position(sound), 0.25);
  sleepFor(milliseconds(300));
  vlm_sfx_stop(sound);
  const double stopped = vlm_sfx_position(sound);
  EXPECT_NEAR(stopped, 0.5, 0.1);
  EXPECT_FALSE(vlm_sfx_is_playing(sound));
  sleepFor(milliseconds(100));
  vlm_sfx_seek(sound, 1.9);
  EXPECT_TRUE(vlm_sfx_is_playing(sound));
  EXPECT_TRUE(hasEnded(sound));
  const auto recorded = recorder.finish();
  const auto first = find(recorded, all.subspan(2 * 48000, 64));
  const auto second = find(recorded, all.subspan(2 * 12000, 64));
  const auto third = find(recorded, all.subspan(2 * 91200, 64));
  ASSERT_TRUE(first >= 0 && second > first && third > second);
  const auto place = [&](std::ptrdiff_t from) { return recorded.begin() + from; };
  EXPECT_TRUE(std::equal(place(first), place(second), samples.begin() + 2 * 48000))
      << "nothing between the two places";
  EXPECT_TRUE(std::equal(place(third), place(third) + 2 * 4800, samples.begin() + 2 * 91200));
  const auto silence = std::find(place(second), recorded.end(), 0.0F);
  EXPECT_NEAR(static_cast<double>(silence - place(second)) / 2 / 48000 + 0.25, stopped, 0.05);

  SoundRecorder half(server, "spk.monitor");
  vlm_sfx_play(sound, 0.5, 0);
  sleepFor(milliseconds(300));
  vlm_sfx_destroy(sound);
  Samples halved(samples.begin(), samples.begin() + 9600);
  for (float& sample : halved) sample *= 0.5F;
  EXPECT_GE(find(half.finish(), halved), 0);
}

TEST(SoundEffects, GoWhereTheyAreToldExactly) {
  expectInOneAttempt(playAndSeek);
}

void repeatAClick() {
  PrivateSoundServer server;
  const Samples click = noise(960);
  void* sound = vlm_sfx_create(soundFile(server, "click.wav", click).c_str());
  ASSERT_NE(sound, nullptr);
  SoundRecorder recorder(server, "spk.monitor");
  vlm_sfx_play(sound, 1, 0);
  sleepFor(milliseconds(5));  // all of it is with the server by now
  vlm_sfx_play(sound, 1, 19);
  EXPECT_TRUE(hasEnded(sound));
  sleepFor(milliseconds(100));
  const auto recorded = recorder.finish();
  Samples repeated;
  for (int i = 0; i < 20; ++i) repeated.insert(repeated.end(), click.begin(), click.end());
  EXPECT_GE(find(recorded, repeated), 0);
  vlm_sfx_destroy(sound);
}

TEST(SoundEffects, KeepTheirRepeatsWhenTheyAreTriggeredAgain) {
  expectInOneAttempt(repeatAClick);
}

TEST(SoundEffects, LeaveNothingBehindWhenTheyHaveEnded) {
  PrivateSoundServer server;
  // Some servers suspend without it.
  runCommand({"pactl", "load-module", "module-suspend-on-idle", "timeout=1"});
  const auto clients = timesListed("clients", "Client #");
  const auto file = soundFile(server, "short.wav", sine(1.5, {997, 997}, 0.02));
  std::vector<void*> sounds;
  for (int i = 0; i < 200; ++i) {
    sounds.push_back(vlm_sfx_create(file.c_str()));
    vlm_sfx_play(sounds.back(), 1, 40);  // for a minute: slow machines take seconds to start all
  }
  // The server mixes 32 streams at most.
  EXPECT_EQ(timesListed("sink-inputs", "Sink Input #"), 1U);
  EXPECT_EQ(timesListed("clients", "Client #"), clients + 1) << "one connection for all";
  SoundRecorder recorder(server, "spk.monitor");
  sleepFor(milliseconds(300));
  // Each has another phase.
  EXPECT_GT(toneIn(recorder.finish(), 2, 0, 997).loudest, 0.1);
  for (void* sound : sounds) EXPECT_TRUE(vlm_sfx_is_playing(sound));
  for (void* sound : sounds) vlm_sfx_play_from(sound, 1.4, 1);
  EXPECT_TRUE(eventually([] { return timesListed("sink-inputs", "Sink Input #") == 0; }));
  for (void* sound : sounds) EXPECT_FALSE(vlm_sfx_is_playing(sound));
  EXPECT_TRUE(eventually([] {
    return outputOf({"pactl", "list", "short", "sinks"}).find("RUNNING") == std::string::npos;
  })) << "the handles are still open";
  for (void* sound : sounds) vlm_sfx_destroy(sound);
  EXPECT_TRUE(eventually([&] { return timesListed("clients", "Client #") == clients; }));
}

void playEveryFormat() {
  PrivateSoundServer server;
  testing::internal::CaptureStderr();
  for (const auto* name : {"a.wav", "a.flac", "a.ogg", "a.mp3", "a.m4a"}) {
    SCOPED_TRACE(name);
    void* sound = vlm_sfx_create(soundFile(server, name, sine(1, {997, 1499}, 0.5)).c_str());
    ASSERT_NE(sound, nullptr);
    EXPECT_NEAR(vlm_sfx_duration(sound), 1, 0.03);
    if (std::string(name) == "a.mp3" || std::string(name) == "a.m4a") {
      SoundRecorder recorder(server, "spk.monitor");
      vlm_sfx_play(sound, 1, 0);
      EXPECT_TRUE(hasEnded(sound));
      const auto recorded = recorder.finish();
      EXPECT_NEAR(toneIn(recorded, 2, 0, 997).frequency, 997, 0.1);
      EXPECT_NEAR(toneIn(recorded, 2, 1, 1499).loudest, 0.5, 0.2);
    }
    vlm_sfx_destroy(sound);
  }
  // Lengths that have to be guessed, junk, a file that is cut off.
  const auto tone = sine(1, {997, 1499}, 0.5);
  auto bytes = contentsOf(soundFile(server, "a.mp3", tone));
  writeFile(server.file("junk.mp3"), "some junk" + bytes.substr(bytes.find("Info") + 3000));
  bytes = contentsOf(soundFile(server, "a.m4a", tone));
  writeFile(server.file("cut.m4a"), bytes.substr(0, bytes.size() / 2));
  bytes = contentsOf(soundFile(server, "a.flac", tone));
  writeFile(server.file("hole.flac"), bytes.replace(bytes.size() / 2, 50, 50, '?'));
  for (const auto* name : {"junk.mp3", "cut.m4a", "hole.flac"}) {
    vlm_sfx_destroy(vlm_sfx_create(server.file(name).c_str()));
  }
  writeFile(server.file("text.wav"), std::string("no sound at all"));
  writeFile(server.file("empty.wav"), std::string());
  for (const auto* name : {"text.wav", "empty.wav", "missing.wav", ""}) {
    EXPECT_EQ(vlm_sfx_create(server.file(name).c_str()), nullptr) << name;
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(SoundEffects, AreReadFromEveryUsualFormat) {
  expectInOneAttempt(playEveryFormat);
}

}  // namespace
}  // namespace vlm::test
