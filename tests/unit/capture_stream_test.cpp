#include <gtest/gtest.h>

#include <limits>

#include "stage.h"

namespace vlm::test {
namespace {

using platform::CMTimeMake;
using platform::SCStreamOutputType;
using platform::scripted::makeScreenSample;

void ignoreAudio(const float*, int32_t, int32_t, int32_t, void*) {}

struct Screen {
  Machine machine;
  explicit Screen(double width = 64, double height = 48, double scale = 1) {
    machine.screen.addDisplay(1, {{5, 6}, {width, height}});
    machine.screen.pointPixelScale = scale;
  }
  void* start(int32_t fps = 30, int32_t maxW = 0, int32_t maxH = 0, vlm_audio_cb audio = nullptr) {
    return vlm_capture_start_display(0, fps, maxW, maxH, noteFrame, audio, &machine);
  }
  std::shared_ptr<platform::scripted::ScriptedStream> stream() {
    return machine.screen.streams.back().lock();
  }
};

TEST(CaptureStream, IsSetUpInOrder) {
  const Lines screenOnly{
      "getShareableContent(false, true)",
      "initWithDisplayExcludingWindows(1, [])",
      "dispatch_queue_create(vlm.capture, userInteractive)",
      "SCStream initWithFilter({capturesAudio: null, channelCount: null, "
      "excludesCurrentProcessAudio: null, height: 48, minimumFrameInterval: 1/30, "
      "pixelFormat: 420v, queueDepth: 5, sampleRate: null, showsCursor: false, width: 64})",
      "addStreamOutput(screen, vlm.capture)",
      "startCapture()"};
  Lines withAudio = screenOnly;
  withAudio[3] =
      "SCStream initWithFilter({capturesAudio: true, channelCount: 2, "
      "excludesCurrentProcessAudio: true, height: 48, minimumFrameInterval: 1/30, "
      "pixelFormat: 420v, queueDepth: 5, sampleRate: 48000, showsCursor: false, width: 64})";
  withAudio.insert(withAudio.end() - 1, "addStreamOutput(audio, vlm.capture)");
  for (const bool audio : {false, true}) {
    Screen screen;
    void* handle = screen.start(30, 0, 0, audio ? ignoreAudio : nullptr);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(screen.machine.journal.take(), audio ? withAudio : screenOnly);
    vlm_capture_stop(handle);
    EXPECT_EQ(screen.machine.journal.take(), Lines{"stopCapture()"});
    EXPECT_EQ(screen.stream(), nullptr);
  }
}

TEST(CaptureStream, FramesAreLimitedInRateAndSize) {
  const struct {
    double width, height, scale;
    int32_t fps, maxW, maxH;
    int32_t timescale;
    std::size_t outWidth, outHeight;
  } cases[] = {
      {1920, 1080, 2, 60, 1280, 720, 60, 1280, 720},
      {1920, 1080, 2, 1, 0, 0, 1, 3840, 2160},
      {1920, 1080, 1, 0, 4000, 4000, 1, 1920, 1080},
      {1920, 1080, 1, -5, 640, 0, 1, 1920, 1080},
      {1281, 721, 1, 2, 0, 0, 2, 1280, 720},
      {1000, 500, 1, 30, 333, 333, 30, 332, 166},
      {0.9, 1.5, 1, 30, 0, 0, 30, 2, 2},
      {3, 5000, 1, 30, 100, 100, 30, 2, 100},
      {640.75, 480.5, 1.5, 30, 0, 0, 30, 960, 720},
      {500, 1000, 1, 30, 1000, 999, 30, 498, 998},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(::testing::Message() << each.width << "x" << each.height << " in " << each.maxW);
    Screen screen(each.width, each.height, each.scale);
    void* handle = screen.start(each.fps, each.maxW, each.maxH);
    const auto& configuration = screen.stream()->configuration();
    EXPECT_EQ(configuration.minimumFrameInterval, CMTimeMake(1, each.timescale));
    EXPECT_EQ(configuration.width, each.outWidth);
    EXPECT_EQ(configuration.height, each.outHeight);
    vlm_capture_stop(handle);
  }
}

TEST(CaptureStream, AStartThatFailsKeepsNothing) {
  const std::pair<const char*, const char*> cases[] = {
      {"addStreamOutput(screen", "[vlm] addStreamOutput failed: no"},
      {"addStreamOutput(audio", "[vlm] addStreamOutput failed: no"},
      {"startCapture", "[vlm] startCapture failed: no"}};
  for (const auto& [operation, log] : cases) {
    Screen screen;
    screen.machine.refuse(operation, "no");
    EXPECT_EQ(screen.start(30, 0, 0, ignoreAudio), nullptr);
    EXPECT_EQ(screen.machine.takeLog(), Lines{log});
    EXPECT_EQ(screen.stream(), nullptr);
  }
}

TEST(CaptureStream, OnlyNewPicturesReachTheHost) {
  Screen screen;
  auto& machine = screen.machine;
  void* handle = screen.start();
  const Lines delivered{"frame 420v 64x48 (64x48) @14"};
  const auto deliver = [&](const Ref<platform::CMSampleBuffer>& sample, SCStreamOutputType type) {
    machine.journal.take();
    screen.stream()->deliver(sample, type);
    machine.run();
    return machine.journal.take();
  };
  const struct {
    CFValue status;
    bool isNew;
  } statuses[] = {{CFValue(), true}, {0, true},  {1, false},  {2, false},     {3, false},
                  {4, false},        {5, false}, {-1, false}, {"idle", true}, {true, true}};
  const auto time = CMTimeMake(15, 1'000'000'000);
  for (const auto& [status, isNew] : statuses) {
    EXPECT_EQ(deliver(makeScreenSample(64, 48, time, status), SCStreamOutputType::screen),
              isNew ? delivered : Lines{})
        << platform::scripted::describe(status);
  }
  for (const CFValue& odd : {CFValue(CFArray{}), CFValue(CFArray{1}), CFValue(CFDictionary{})}) {
    auto sample = makeScreenSample(64, 48, time);
    sample->attachments = odd;
    EXPECT_EQ(deliver(sample, SCStreamOutputType::screen), delivered);
    EXPECT_TRUE(sample->image->uniquelyReferenced());
  }
  auto invalid = makeScreenSample(64, 48, time);
  invalid->valid = false;
  EXPECT_EQ(deliver(invalid, SCStreamOutputType::screen), Lines{});
  auto empty = makeScreenSample(64, 48, time);
  empty->image = nullptr;
  EXPECT_EQ(deliver(empty, SCStreamOutputType::screen), Lines{});
  // By way of a double number of seconds, cut toward zero.
  EXPECT_EQ(deliver(makeScreenSample(3, 5, CMTimeMake(1, 3)), SCStreamOutputType::screen),
            Lines{"frame 420v 3x5 (3x5) @333333333"});
  vlm_capture_stop(handle);

  handle = screen.start(30, 0, 0, ignoreAudio);
  EXPECT_EQ(deliver(makeScreenSample(64, 48, time), SCStreamOutputType::audio), Lines{});
  vlm_capture_stop(handle);
}

TEST(CaptureStream, WhatComesAfterTheEndIsDropped) {
  Screen screen;
  auto& machine = screen.machine;
  void* handle = screen.start();
  const auto stream = screen.stream();
  machine.journal.take();
  // The platform ends the stream: logged, and the host stops it as ever. It can't stop again.
  stream->end({"the display is gone"});
  machine.run();
  EXPECT_EQ(machine.takeLog(),
            Lines{"[vlm] capture stream stopped with error: the display is gone"});
  machine.refuse("stopCapture", "was not running");
  vlm_capture_stop(handle);
  EXPECT_EQ(machine.takeLog(), Lines{});
  EXPECT_FALSE(stream->hasDelegate());
  stream->deliverLate();
  stream->deliver(makeScreenSample(64, 48, CMTimeMake(1, 1)));
  stream->end({"late"});
  machine.run();
  EXPECT_EQ(machine.journal.take(), Lines{});
}

TEST(CaptureStream, StopWaitsForTheLastCallbackAndEndsInsideOne) {
  Screen screen;
  void* handle = screen.start();
  screen.stream()->deliver(makeScreenSample(64, 48, CMTimeMake(1, 1)));
  vlm_capture_stop(handle);
  EXPECT_EQ(only({"frame"}, screen.machine.journal.take()),
            Lines{"frame 420v 64x48 (64x48) @1000000000"});
  static void* own = nullptr;
  own = vlm_capture_start_display(
      0, 30, 0, 0, [](void*, int32_t, int32_t, int64_t, void*) { vlm_capture_stop(own); }, nullptr,
      nullptr);
  screen.stream()->deliver(makeScreenSample(64, 48, CMTimeMake(1, 1)));
  screen.machine.run();
  EXPECT_EQ(screen.stream(), nullptr);
}

TEST(CaptureStream, BoundsAreThoseOfTheStart) {
  Screen screen(64, 48, 2);
  void* handle = screen.start();
  double x = -1, y = -1, width = -1, height = -1;
  EXPECT_TRUE(vlm_capture_bounds(handle, &x, nullptr, nullptr, &height));
  EXPECT_TRUE(vlm_capture_bounds(handle, nullptr, &y, &width, nullptr));
  EXPECT_EQ((std::vector{x, y, width, height}), (std::vector<double>{5, 6, 64, 48}));
  vlm_capture_stop(handle);
  for (const auto& [emptyWidth, emptyHeight] : {std::pair{0.0, 9.0}, std::pair{9.0, 0.0}}) {
    Screen empty(emptyWidth, emptyHeight);
    handle = empty.start();
    EXPECT_FALSE(vlm_capture_bounds(handle, &x, &y, &width, &height));
    EXPECT_EQ(x, 5);
    vlm_capture_stop(handle);
  }
}

}  // namespace
}  // namespace vlm::test
