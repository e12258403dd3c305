#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "stage.h"

// Real threads, for the thread sanitizer to watch.
namespace vlm::test {
namespace {

constexpr int kRounds = 40;

// Counts what a callback brings, and what it brings after the object has ended.
struct Receiver {
  std::atomic<int> count = 0;
  std::atomic<bool> ended = false;
  std::atomic<int> late = 0;
  std::atomic<int64_t> ptsNs = 0;
  std::atomic<int> disordered = 0;
  void take() {
    ++count;
    if (ended) ++late;
  }
};

void receiveFrame(void* pixbuf, int32_t, int32_t, int64_t ptsNs, void* user) {
  vlm_pixbuf_retain(pixbuf);
  auto& receiver = *static_cast<Receiver*>(user);
  receiver.take();
  if (receiver.ptsNs.exchange(ptsNs) > ptsNs) ++receiver.disordered;
  vlm_pixbuf_release(pixbuf);
}

void receiveUnit(const uint8_t*, int32_t, bool, int64_t, void* user) {
  static_cast<Receiver*>(user)->take();
}

TEST(Threads, CodecsEndWhileTheirFramesArrive) {
  Machine machine(Machine::Queues::threads);
  const auto frame = picture(64, 48);
  const Bytes unit{0, 0, 1, 0x67, 0, 64, 0, 48, 0, 0, 1, 0x68, 0xEE, 0, 0, 1, 0x65, 0x88};
  for (int round = 0; round < kRounds; ++round) {
    Receiver encoded;
    Receiver decoded;
    void* encoder = vlm_enc_create(64, 48, 30, 1'000'000, true, receiveUnit, &encoded);
    void* decoder = vlm_dec_create(receiveFrame, &decoded);
    std::thread sharing([&] {
      for (int i = 0; i < 20; ++i) EXPECT_TRUE(vlm_enc_encode(encoder, frame.get(), i, i == 7));
      const auto other = picture(32, 16);
      EXPECT_TRUE(vlm_enc_encode(encoder, other.get(), 20, false));
      vlm_enc_destroy(encoder);
      encoded.ended = true;
    });
    for (int i = 0; i < 20; ++i) {
      // A stream that changes its size goes on in another session, on another thread.
      Bytes next = unit;
      next[5] = i % 3 == 0 ? 32 : 64;
      EXPECT_TRUE(vlm_dec_decode(decoder, next.data(), static_cast<int32_t>(next.size()), i));
    }
    vlm_dec_destroy(decoder);
    decoded.ended = true;
    sharing.join();
    EXPECT_EQ(encoded.count, 21);
    EXPECT_EQ(decoded.count, 20);
    EXPECT_EQ(encoded.late + decoded.late, 0);
    EXPECT_EQ(decoded.disordered, 0);
  }
  EXPECT_TRUE(frame->uniquelyReferenced());
}

TEST(Threads, CaptureStopsWhileFramesArrive) {
  Machine machine(Machine::Queues::threads);
  machine.screen.addDisplay(1, {{0, 0}, {64, 48}});
  for (int round = 0; round < kRounds; ++round) {
    Receiver receiver;
    void* handle = vlm_capture_start_display(0, 30, 0, 0, receiveFrame, nullptr, &receiver);
    ASSERT_NE(handle, nullptr);
    const auto stream = machine.screen.streams.back().lock();
    std::atomic<bool> stopped = false;
    std::thread screen([&] {
      const auto sample = platform::scripted::makeScreenSample(64, 48, platform::CMTimeMake(1, 1));
      while (!stopped) stream->deliver(sample);
      stream->end({"gone"});
    });
    while (receiver.count < 3) std::this_thread::yield();
    double width = 0;
    EXPECT_TRUE(vlm_capture_bounds(handle, nullptr, nullptr, &width, nullptr));
    vlm_capture_stop(handle);
    receiver.ended = true;
    stopped = true;
    screen.join();
    EXPECT_FALSE(stream->hasDelegate());
    EXPECT_EQ(receiver.late, 0);
  }
}

TEST(Threads, PresenterTakesFramesWhileItsLayerIsReplacedAndCleared) {
  Machine machine(Machine::Queues::threads);
  void* handle = vlm_present_create();
  ASSERT_NE(handle, nullptr);
  platform::scripted::ScriptedLayer::Condition failed;
  failed.status = failed.afterEnqueue = platform::AVQueuedSampleBufferRenderingStatus::failed;
  const auto frame = picture(16, 16);
  std::atomic<int> answers = 0;
  const auto handOver = [&] {
    for (int i = 0; i < 2000; ++i) {
      const auto answer = vlm_present_enqueue(handle, frame.get(), i);
      answers += answer == VLM_PRESENT_OK || answer == VLM_PRESENT_BUSY ? 1 : 0;
    }
  };
  std::thread first(handOver);
  std::thread second(handOver);
  for (int round = 0; round < kRounds; ++round) {
    machine.mainQueue()->sync([&] { machine.display.layers.back()->become(failed); });
    vlm_present_clear(handle);
    EXPECT_NE(vlm_present_view(handle), nullptr);
  }
  first.join();
  second.join();
  EXPECT_EQ(answers, 4000);
  // The last layer has failed and is replaced: frames are shown again.
  int32_t answer = VLM_PRESENT_BUSY;
  while (answer != VLM_PRESENT_OK) answer = vlm_present_enqueue(handle, frame.get(), 0);
  vlm_present_destroy(handle);
  machine.mainQueue()->sync([] {});
  EXPECT_GT(machine.display.layers.size(), 1U);
  EXPECT_EQ(only({"off the main thread"}, machine.journal.take()), Lines{});
}

void receiveEvent(int32_t, double, double, double width, double, void* user) {
  EXPECT_EQ(width, 30);
  static_cast<Receiver*>(user)->take();
}

TEST(Threads, TrackersEndWhileNotificationsArrive) {
  Machine machine(Machine::Queues::threads);
  machine.desktop.applications[7]["AXFocusedWindow"] = platform::makeRef<platform::AXUIElement>(
      "w",
      CFDictionary{{"AXPosition", platform::CGPoint{1, 2}}, {"AXSize", platform::CGSize{30, 40}}});
  for (int round = 0; round < kRounds; ++round) {
    Receiver receiver;
    void* tracker = vlm_window_track(7, receiveEvent, &receiver);
    std::atomic<bool> ended = false;
    std::thread desktop([&] {
      while (!ended) {
        machine.desktop.notify("AXWindowMoved");
        std::this_thread::yield();
      }
    });
    while (receiver.count < 3) std::this_thread::yield();
    vlm_window_untrack(tracker);
    receiver.ended = true;
    ended = true;
    desktop.join();
    machine.mainQueue()->sync([] {});
    EXPECT_EQ(receiver.late, 0);
  }
}

void receiveSamples(const float*, int32_t, void* user) {
  static_cast<Receiver*>(user)->take();
}

TEST(Threads, SoundIsWrittenRenderedTappedAndStoppedAtOnce) {
  Machine machine(Machine::Queues::threads);
  for (int round = 0; round < kRounds; ++round) {
    Receiver receiver;
    void* playback = vlm_audio_out_start(nullptr, 2);
    const auto output = machine.audio.engines.back().lock();
    void* microphone = vlm_audio_in_start(nullptr, receiveSamples, &receiver);
    const auto input = machine.audio.engines.back().lock();
    std::atomic<bool> started = false;
    std::thread writer([&] {
      const std::vector<float> samples(961, 0.5F);
      for (int i = 0; i < 60; ++i) vlm_audio_out_write(playback, samples.data(), 961);
    });
    std::thread platformThread([&] {
      std::vector<float> left(512), right(512);
      const platform::AudioBuffer list[] = {{1, 2048, left.data()}, {1, 2048, right.data()}};
      const auto tapped = platform::AVAudioPCMBuffer::initWithPCMFormat(
          platform::makeAudioFormat(machine.audio.inputFormat), 960);
      tapped->setFrameLength(960);
      for (int i = 0; i < 40; ++i) {
        output->render(512, list);
        input->tap(tapped);
        started = true;
      }
    });
    while (!started) std::this_thread::yield();
    vlm_audio_out_stop(playback);
    vlm_audio_in_stop(microphone);
    receiver.ended = true;
    writer.join();
    platformThread.join();
    EXPECT_GT(receiver.count, 0);
    EXPECT_EQ(receiver.late, 0);
  }
}

}  // namespace
}  // namespace vlm::test
