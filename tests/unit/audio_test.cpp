#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "audio/devices.h"
#include "platform/portable/media.h"
#include "stage.h"

namespace vlm::test {
namespace {

using platform::AVAudioPCMBuffer;
using Samples = std::vector<float>;

std::string devices(bool input) {
  const int32_t length = ~vlm_audio_devices_json(input ? 1 : 0, nullptr, 100);
  std::string text(static_cast<std::size_t>(length) + 1, '.');
  EXPECT_EQ(vlm_audio_devices_json(input ? -5 : 0, text.data(), length), ~length);
  EXPECT_EQ(text, std::string(text.size(), '.')) << "a buffer without room for the NUL is refused";
  EXPECT_EQ(vlm_audio_devices_json(input ? 1 : 0, text.data(), length + 1), length);
  EXPECT_EQ(text.back(), '\0');
  text.pop_back();
  return text;
}

TEST(AudioDevices, AreThoseWithChannelsAndAName) {
  Machine machine;
  EXPECT_EQ(devices(true), "[]");
  machine.audio.devices = {{5, {}, {2}, "Speakers", "spk"},
                           {6, {0, 1}, {}, "Mic \"1\"", 42},
                           {7, {1}, {1, 1}, "Headset", "head"},
                           {8, {0}, {0}, "nothing in it", "none"},
                           {9, {2}, {2}, CFValue(), "nameless"}};
  const std::string outputs =
      R"([{"name":"Speakers","uid":"spk"},{"name":"Headset","uid":"head"}])";
  const std::string inputs = R"([{"name":"Mic \"1\"","uid":""},{"name":"Headset","uid":"head"}])";
  EXPECT_EQ(devices(false), outputs);
  EXPECT_EQ(devices(true), inputs);
  EXPECT_EQ(audio::channelCount(7, audio::Direction::output), 2);

  constexpr const char* kHeadset = R"([{"name":"Headset","uid":"head"}])";
  const struct {
    const char* fault;
    const char* expected;
  } cases[] = {
      {"AudioObjectGetPropertyDataSize(1, dev#, glob)", "[]"},
      {"AudioObjectGetPropertyData(1, dev#, glob)", "[]"},
      {"AudioObjectGetPropertyDataSize(5, slay, outp)", kHeadset},
      {"AudioObjectGetPropertyData(5, slay, outp)", kHeadset},
      {"AudioObjectGetPropertyData(5, lnam, glob)", kHeadset},
      {"AudioObjectGetPropertyData(5, uid , glob)",
       R"([{"name":"Speakers","uid":""},{"name":"Headset","uid":"head"}])"},
  };
  for (const auto& [fault, expected] : cases) {
    machine.refuse(fault, -50);
    std::array<char, 200> out{};
    EXPECT_EQ(vlm_audio_devices_json(0, out.data(), 200), int32_t(std::string(expected).size()));
    EXPECT_EQ(std::string(out.data()), expected) << fault;
  }
  machine.answerNothing("dataWithJSONObject");
  EXPECT_EQ(vlm_audio_devices_json(0, nullptr, 0), 0);
  EXPECT_TRUE(machine.takeLog().empty());
}

TEST(AudioDevices, AreFoundByTheFirstEqualUidOfTheDirection) {
  Machine machine;
  machine.audio.devices = {{5, {}, {2}, "a", "same"},
                           {6, {1}, {}, "b", "same"},
                           {7, {1}, {}, "c", "same"},
                           {8, {1}, {}, "d", "e\xCC\x81"},
                           {9, {1}, {}, "e", CFValue()}};
  using audio::Direction;
  using audio::findDevice;
  EXPECT_EQ(findDevice("same", Direction::input), 6U);
  EXPECT_EQ(findDevice("same", Direction::output), 5U);
  EXPECT_EQ(findDevice("\xC3\xA9", Direction::input), 8U) << "the same letter, composed";
  EXPECT_EQ(findDevice("Same", Direction::input), std::nullopt);
  machine.refuse("AudioObjectGetPropertyData(6, uid ", -50);
  EXPECT_EQ(findDevice("same", Direction::input), 7U);
  machine.journal.take();
  EXPECT_EQ(findDevice("", Direction::input), std::nullopt);
  EXPECT_EQ(findDevice(std::nullopt, Direction::input), std::nullopt);
  EXPECT_TRUE(machine.journal.take().empty());
}

void noteBlock(const float* samples, int32_t count, void* user) {
  static_cast<Machine*>(user)->journal.note("mic " + std::to_string(count) + " from " +
                                            std::to_string(samples[0]));
}

std::shared_ptr<AVAudioPCMBuffer> tapped(double rate, std::uint32_t channels,
                                         std::uint32_t frames) {
  auto buffer = AVAudioPCMBuffer::initWithPCMFormat(
      platform::makeAudioFormat({platform::AVAudioCommonFormat::pcmFloat32, rate, channels, false}),
      frames);
  buffer->setFrameLength(frames);
  for (std::uint32_t channel = 0; channel < channels; ++channel) {
    std::fill_n(buffer->floatChannelData(channel), frames, static_cast<float>(channel));
  }
  return buffer;
}

TEST(Microphone, IsSetUpOnTheChosenDeviceAndTakenDownInOrder) {
  Machine machine;
  machine.audio.devices = {{7, {1}, {}, "c", "mic"}};
  machine.audio.inputFormat.sampleRate = 44100;
  const Lines chosen{"AudioUnitSetProperty(input, 2000, 0, 0, 7)"};
  const Lines setUp{"inputFormatForBus(0)",
                    "AVAudioConverter initFromFormat(44100.0 x 2, 48000.0 x 1 interleaved)",
                    "installTapOnBus(0, 960, 44100.0 x 2)", "AVAudioEngine prepare()",
                    "AVAudioEngine start()"};
  const std::initializer_list<std::string_view> calls{"AudioUnit", "input", "AVAudio", "install"};
  for (const auto& [uid, hasUnits, isChosen] : {std::tuple{"mic", true, true},
                                                {"mic", false, false},
                                                {"other", true, false},
                                                {"", true, false},
                                                {static_cast<const char*>(nullptr), true, false}}) {
    machine.audio.hasUnits = hasUnits;
    machine.refuse("AudioUnitSetProperty", -50);  // which is not looked at
    machine.journal.take();
    void* mic = vlm_audio_in_start(uid, noteBlock, &machine);
    ASSERT_NE(mic, nullptr);
    Lines expected{"AVAudioEngine init()"};
    if (isChosen) expected.insert(expected.end(), chosen.begin(), chosen.end());
    expected.insert(expected.end(), setUp.begin(), setUp.end());
    EXPECT_EQ(only(calls, machine.journal.take()), expected);
    vlm_audio_in_stop(mic);
    EXPECT_EQ(machine.journal.take(), (Lines{"removeTapOnBus(0)", "AVAudioEngine stop()"}));
    EXPECT_TRUE(machine.audio.engines.back().expired());
  }
}

TEST(Microphone, DeliversWhatEveryTappedBufferGives) {
  const struct {
    double rate;
    std::uint32_t channels, frames;
    Lines expected;
  } cases[] = {
      {48000, 1, 480, {"convertToBuffer(544)", "input 1", "mic 480 from 0.000000"}},
      {44100, 2, 960, {"convertToBuffer(1108)", "input 1", "mic 1044 from 0.500000"}},
      {96000, 3, 961, {"convertToBuffer(544)", "input 1", "mic 480 from 1.000000"}},
      {48000, 1, 0, {"convertToBuffer(64)", "input 1"}},
  };
  for (const auto& each : cases) {
    Machine machine;
    machine.audio.inputFormat = {platform::AVAudioCommonFormat::pcmFloat32, each.rate,
                                 each.channels, false};
    void* mic = vlm_audio_in_start(nullptr, noteBlock, &machine);
    const auto engine = machine.audio.engines.back().lock();
    machine.journal.take();
    engine->tap(tapped(each.rate, each.channels, each.frames));
    EXPECT_EQ(machine.journal.take(), each.expected);

    machine.refuse("convertToBuffer", "broken");
    machine.answerNothing("convertToBuffer");
    machine.throwFrom("convertToBuffer");
    for (int i = 0; i < 3; ++i) engine->tap(tapped(each.rate, each.channels, 960));
    EXPECT_EQ(only({"mic", "NSLog"}, machine.journal.take()), Lines{}) << "skipped in silence";
    engine->tap(tapped(each.rate, each.channels, 960));
    EXPECT_EQ(only({"mic"}, machine.journal.take()).size(), 1U) << "and it goes on";
    const auto late = engine->tapBlock();
    vlm_audio_in_stop(mic);
    machine.journal.take();
    late(tapped(each.rate, each.channels, 960));
    EXPECT_TRUE(machine.journal.take().empty());
  }
}

TEST(Microphone, ThatCannotRunIsNullInSilence) {
  Machine machine;
  for (const auto& [rate, channels] : {std::pair{0.0, 1U}, {-1.0, 1U}, {48000.0, 0U}}) {
    machine.audio.inputFormat.sampleRate = rate;
    machine.audio.inputFormat.channelCount = channels;
    EXPECT_EQ(vlm_audio_in_start(nullptr, noteBlock, &machine), nullptr);
  }
  machine.audio.inputFormat = {platform::AVAudioCommonFormat::pcmFloat32, 48000, 1, false};
  for (const char* refused : {"AVAudioEngine start", "installTapOnBus"}) {
    machine.refuse(refused, "busy");
    EXPECT_EQ(vlm_audio_in_start(nullptr, noteBlock, &machine), nullptr) << refused;
  }
  for (const char* refused : {"AVAudioEngine start", "connect to mainMixerNode"}) {
    machine.refuse(refused, "busy");
    EXPECT_EQ(vlm_audio_out_start(nullptr, 2), nullptr) << refused;
  }
  machine.answerNothing("inputFormatForBus");
  EXPECT_EQ(vlm_audio_in_start(nullptr, noteBlock, &machine), nullptr);
  machine.answerNothing("AVAudioSourceNode");
  EXPECT_EQ(vlm_audio_out_start(nullptr, 2), nullptr);
  for (const auto& engine : machine.audio.engines) EXPECT_TRUE(engine.expired());
  EXPECT_TRUE(machine.takeLog().empty());

  machine.answerNothing("AVAudioConverter");
  void* mic = vlm_audio_in_start(nullptr, noteBlock, &machine);
  ASSERT_NE(mic, nullptr) << "a missing converter is no reason not to start";
  machine.journal.take();
  machine.audio.engines.back().lock()->tap(tapped(48000, 1, 960));
  EXPECT_TRUE(machine.journal.take().empty());
  vlm_audio_in_stop(mic);
}

TEST(Playback, IsSetUpOnTheChosenDeviceAndFedThroughItsHandleAlone) {
  Machine machine;
  machine.audio.devices = {{9, {}, {2}, "c", "spk"}};
  for (const auto& [channels, planes] : {std::pair{-5, 1}, {0, 1}, {1, 1}, {2, 2}, {8, 2}}) {
    machine.journal.take();
    void* playback = vlm_audio_out_start("spk", channels);
    const std::string format = "48000.0 x " + std::to_string(planes);
    EXPECT_EQ(only({"AV", "attach", "connect", "AudioUnit"}, machine.journal.take()),
              (Lines{"AVAudioEngine init()", "AVAudioSourceNode initWithFormat(" + format + ")",
                     "attachNode()", "connect to mainMixerNode(" + format + ")",
                     "AudioUnitSetProperty(output, 2000, 0, 0, 9)", "AVAudioEngine prepare()",
                     "AVAudioEngine start()"}));
    const Samples samples(6000, 0.25F);
    const auto count = 2880 * planes;
    vlm_audio_out_write(playback, samples.data(), count - 1);
    vlm_audio_out_write(playback, nullptr, 1);
    vlm_audio_out_write(playback, samples.data(), 0);
    vlm_audio_out_write(playback, samples.data(), -1);
    float left = 1, right = 1;
    const platform::AudioBuffer list[] = {{1, 4, &left}, {1, 4, &right}};
    const auto engine = machine.audio.engines.back().lock();
    EXPECT_TRUE(engine->render(1, list));
    EXPECT_EQ(left, 0);
    vlm_audio_out_write(playback, samples.data(), 1);
    EXPECT_TRUE(engine->render(1, list));
    EXPECT_EQ(left, 0.25F);
    EXPECT_EQ(right, planes == 2 ? 0.25F : 1.0F) << "mono has one buffer";
    machine.journal.take();
    vlm_audio_out_stop(playback);
    EXPECT_EQ(machine.journal.take(), Lines{"AVAudioEngine stop()"});
    vlm_audio_out_write(playback, samples.data(), 1);
  }
}

TEST(SoundEffects, ClampWhatThePlayerIsTold) {
  Machine machine;
  machine.audio.files["/a.wav"] = 2.5;
  void* effect = vlm_sfx_create("/a.wav");
  EXPECT_EQ(machine.journal.take(),
            (Lines{"AVAudioPlayer initWithContentsOfURL(/a.wav)", "prepareToPlay()"}));
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto told = [&](const char* volume, const char* loops, const char* time) {
    return Lines{std::string("setVolume(") + volume + ")",
                 std::string("setNumberOfLoops(") + loops + ")",
                 std::string("setCurrentTime(") + time + ")", "play()"};
  };
  const struct {
    double volume;
    int32_t loops;
    Lines expected;
  } plays[] = {{1.7, 0, told("1.0", "0", "0.0")},
               {-0.3, 2, told("0.0", "2", "0.0")},
               {0.5, -1, told("0.5", "-1", "0.0")},
               {nan, -100, told("1.0", "-1", "0.0")},
               {0.0, 1 << 30, told("0.0", "1073741824", "0.0")}};
  for (const auto& each : plays) {
    vlm_sfx_play(effect, each.volume, each.loops);
    EXPECT_EQ(machine.journal.take(), each.expected);
  }
  const auto player = machine.audio.players.back().lock();
  for (const auto& [start, time] :
       {std::pair{9.0, "2.5"}, {-1.0, "0.0"}, {1.25, "1.25"}, {2.5, "2.5"}}) {
    vlm_sfx_play_from(effect, start, 0.5);
    EXPECT_EQ(machine.journal.take(), told("0.5", "0", time));
    const Lines moved{std::string("setCurrentTime(") + time + ")"};
    vlm_sfx_seek(effect, start);
    EXPECT_EQ(machine.journal.take(), moved) << "it plays already";
    player->playing = false;
    vlm_sfx_seek(effect, start);
    EXPECT_EQ(machine.journal.take(), (Lines{moved[0], "play()"}));
    EXPECT_EQ(vlm_sfx_position(effect), std::stod(time));
  }
  EXPECT_EQ(vlm_sfx_duration(effect), 2.5);
  EXPECT_TRUE(vlm_sfx_is_playing(effect));
  vlm_sfx_stop(effect);
  EXPECT_FALSE(vlm_sfx_is_playing(effect));
  machine.journal.take();
  vlm_sfx_destroy(effect);
  EXPECT_EQ(machine.journal.take(), Lines{"stop()"});
}

struct Received {
  Samples samples;
  const float* address = nullptr;
  std::array<int32_t, 3> shape{};
  int count = 0;
};

void receiveAudio(const float* samples, int32_t frames, int32_t channels, int32_t rate,
                  void* user) {
  auto& received = *static_cast<Received*>(user);
  received.address = samples;
  received.samples.assign(samples, samples + frames * channels);
  received.shape = {frames, channels, rate};
  ++received.count;
}

struct AudioCapture {
  Machine machine;
  Received received;
  void* capture;
  AudioCapture() {
    machine.screen.addDisplay(1, {{0, 0}, {64, 48}});
    capture = vlm_capture_start_display(
        0, 30, 0, 0, [](auto...) {}, receiveAudio, &received);
  }
  ~AudioCapture() { vlm_capture_stop(capture); }
  void deliver(const Ref<platform::CMSampleBuffer>& sample) {
    machine.screen.streams.back().lock()->deliver(sample, platform::SCStreamOutputType::audio);
    machine.run();
  }
};

Ref<platform::CMSampleBuffer> sampleOf(const Samples& samples, double rate,
                                       std::uint32_t channels) {
  return platform::makeAudioSample(samples, {rate, channels}, {});
}

TEST(CaptureAudio, InterleavedAudioIsHandedOverInPlace) {
  AudioCapture stage;
  const auto sample = sampleOf({1, 2, 3, 4, 5, 6}, 48000.9, 2);
  stage.deliver(sample);
  EXPECT_EQ(stage.received.address, sample->audio[0].mData);
  EXPECT_EQ(stage.received.samples, (Samples{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(stage.received.shape, (std::array{3, 2, 48000}));
}

TEST(CaptureAudio, PlanarAudioIsWovenTogether) {
  Samples first{1, 2, 3}, second{4, 5, 6}, third{7, 8, 9};
  const struct {
    std::vector<float*> planes;
    Samples expected;
  } cases[] = {{{first.data(), second.data()}, {1, 4, 2, 5, 3, 6}},
               {{first.data(), nullptr}, {1, 0, 2, 0, 3, 0}},
               {{nullptr, second.data()}, {0, 4, 0, 5, 0, 6}},
               {{first.data(), second.data(), third.data()}, {1, 4, 2, 5, 3, 6}},
               {{nullptr}, {}},
               {{}, {}}};
  for (const auto& [planes, expected] : cases) {
    AudioCapture stage;
    const auto sample = sampleOf(Samples(6), 48000, 2);
    sample->audio.clear();
    for (float* plane : planes) sample->audio.push_back({1, 12, plane});
    stage.deliver(sample);
    EXPECT_EQ(stage.received.samples, expected);
    EXPECT_EQ(stage.received.count, expected.empty() ? 0 : 1);
  }
}

TEST(CaptureAudio, WhatCannotBeReadIsLeftOutInSilence) {
  AudioCapture stage;
  stage.machine.takeLog();
  const auto formatless = sampleOf({1, 2}, 48000, 2);
  formatless->description = nullptr;
  stage.deliver(formatless);
  const auto video = sampleOf({1, 2}, 48000, 2);
  video->description->audio.reset();
  stage.deliver(video);
  stage.machine.refuse("CMSampleBufferGetAudioBufferList", -12731);
  stage.deliver(sampleOf({1, 2}, 48000, 2));
  stage.machine.throwFrom("CMSampleBufferGetAudioBufferList");
  stage.deliver(sampleOf({1, 2}, 48000, 2));
  EXPECT_EQ(stage.received.count, 0);
  EXPECT_TRUE(stage.machine.takeLog().empty());
  stage.deliver(sampleOf({1, 2}, 48000, 2));
  EXPECT_EQ(stage.received.count, 1);
}

}  // namespace
}  // namespace vlm::test
