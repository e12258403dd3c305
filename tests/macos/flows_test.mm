// What a host does with the library, from its own functions down to the frameworks.
#import <AVFoundation/AVFoundation.h>
#import <CoreMedia/CoreMedia.h>
#import <ScreenCaptureKit/ScreenCaptureKit.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "VelmoraMacNative.h"
#include "standin/allocations.h"
#include "standin/objects.h"
#include "standin/stage.h"

namespace {

using standin::stage;
using Strings = std::vector<std::string>;

CVPixelBufferRef picture(std::uint8_t luma) {
  CVPixelBufferRef buffer = nullptr;
  CVPixelBufferCreate(nullptr, 64, 48, kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange, nullptr, &buffer);
  std::uint8_t *rows = nullptr, *chroma = nullptr;
  std::int32_t stride = 0, chromaStride = 0;
  EXPECT_TRUE(vlm_pixbuf_lock(buffer, &rows, &stride, &chroma, &chromaStride));
  std::memset(rows, luma, static_cast<std::size_t>(stride) * 48);
  std::memset(chroma, 128, static_cast<std::size_t>(chromaStride) * 24);
  vlm_pixbuf_unlock(buffer);
  return buffer;
}

int lumaOf(void* pixbuf) {
  std::uint8_t *rows = nullptr, *chroma = nullptr;
  std::int32_t stride = 0, chromaStride = 0;
  if (!vlm_pixbuf_lock(pixbuf, &rows, &stride, &chroma, &chromaStride)) return -1;
  const int luma = rows[stride * 24 + 32];
  vlm_pixbuf_unlock(pixbuf);
  return luma;
}

void showDesktop() {
  @autoreleasepool {
    SCRunningApplication* const notes = standin::makeApplication(@"org.example.notes", 42);
    stage().content = standin::makeContent(
        [NSArray arrayWithObject:standin::makeWindow(9, @"Notes", notes)],
        [NSArray arrayWithObject:notes], [NSArray arrayWithObject:[[[SCDisplay alloc] init] autorelease]]);
  }
}

// Captured, encoded, decoded and shown.
struct Session {
  void *encoder = nullptr, *decoder = nullptr, *presenter = nullptr;
  std::atomic<int> captured = 0, decoded = 0, refused = 0;
  static void onCaptured(void* pixbuf, std::int32_t, std::int32_t, std::int64_t ptsNs, void* user) {
    auto& self = *static_cast<Session*>(user);
    ++self.captured;
    self.refused += !vlm_enc_encode(self.encoder, pixbuf, ptsNs, false);
  }
  static void onEncoded(const std::uint8_t* data, std::int32_t size, bool, std::int64_t ptsNs, void* user) {
    auto& self = *static_cast<Session*>(user);
    self.refused += !vlm_dec_decode(self.decoder, data, size, ptsNs);
  }
  static void onDecoded(void* pixbuf, std::int32_t, std::int32_t, std::int64_t ptsNs, void* user) {
    auto& self = *static_cast<Session*>(user);
    self.refused += vlm_present_enqueue(self.presenter, pixbuf, ptsNs) != VLM_PRESENT_OK;
    ++self.decoded;
  }
};

TEST(Flows, ACapturedPictureIsEncodedDecodedAndShown) {
  showDesktop();
  Session session;
  session.presenter = vlm_present_create();
  ASSERT_NE(session.presenter, nullptr);
  session.decoder = vlm_dec_create(Session::onDecoded, &session);
  session.encoder = vlm_enc_create(64, 48, 30, 1'000'000, true, Session::onEncoded, &session);
  ASSERT_NE(session.encoder, nullptr);
  void* const capture =
      vlm_capture_start_window(9, 30, 0, 0, Session::onCaptured, nullptr, &session);
  ASSERT_NE(capture, nullptr);
  for (const int luma : {60, 120, 200}) {
    const auto image = picture(static_cast<std::uint8_t>(luma));
    standin::deliverSample(0, image);
    vlm_pixbuf_release(image);
    const auto wanted = session.captured.load();
    while (session.decoded < wanted) std::this_thread::yield();
    ASSERT_EQ(standin::shown().size(), static_cast<std::size_t>(wanted));
    EXPECT_NEAR(lumaOf(standin::shown().back()), luma, 3);
  }
  EXPECT_EQ(session.captured, 3);
  standin::deliverSample(1, nullptr);  // an idle frame brings no picture
  vlm_capture_stop(capture);
  standin::deliverSample(0, nullptr);
  vlm_enc_destroy(session.encoder);
  vlm_dec_destroy(session.decoder);
  EXPECT_EQ(session.captured, 3);
  EXPECT_EQ(session.refused, 0);
  vlm_present_clear(session.presenter);
  EXPECT_TRUE(standin::shown().empty());
  vlm_present_destroy(session.presenter);
}

// Between the framework's call and the host's: no copy of the picture, and few allocations.
TEST(Flows, ACapturedPictureReachesTheHostAsItIs) {
  showDesktop();
  struct Seen {
    void* pixbuf = nullptr;
    std::size_t allocations = 0;
  } seen;
  const auto note = [](void* pixbuf, std::int32_t, std::int32_t, std::int64_t, void* user) {
    *static_cast<Seen*>(user) = {pixbuf, standin::allocations()};
  };
  void* const capture = vlm_capture_start_window(9, 30, 0, 0, note, nullptr, &seen);
  const auto image = picture(100);
  for (int i = 0; i < 2; ++i) {  // the first one may fill caches
    standin::deliverSample(0, image);
    EXPECT_EQ(seen.pixbuf, image);
  }
  EXPECT_LE(seen.allocations, 6U);
  vlm_pixbuf_release(image);
  vlm_capture_stop(capture);
}

TEST(Flows, PicturesBecomeColours) {
  const auto image = picture(235);
  std::vector<std::uint8_t> bgra(64 * 48 * 4);
  ASSERT_TRUE(vlm_pixbuf_to_bgra(image, bgra.data(), static_cast<std::int32_t>(bgra.size())));
  for (const std::size_t i : {0U, 1U, 2U}) EXPECT_NEAR(bgra[i], bgra[0], 1);
  EXPECT_GT(bgra[0], 200);
  EXPECT_EQ(bgra[3], 255);
  vlm_pixbuf_release(image);
}

TEST(Flows, WhatBelongsToTheMainThreadRunsThere) {
  // Made and let go of on another thread: the main one does the work for it.
  std::atomic<bool> over = false;
  std::thread other([&] {
    @autoreleasepool {
      void* const presenter = vlm_present_create();
      EXPECT_NE(vlm_present_view(presenter), nullptr);
      vlm_present_clear(presenter);
      vlm_present_destroy(presenter);
    }
    over = true;
  });
  while (!over) standin::runMainQueue();
  other.join();

  void* const presenter = vlm_present_create();
  const auto image = picture(1);
  stage().layerIsBusy = true;
  EXPECT_EQ(vlm_present_enqueue(presenter, image, 0), VLM_PRESENT_BUSY);
  stage().layerIsBusy = false;
  stage().layerHasFailed = true;
  for (int i = 0; i < 61; ++i) EXPECT_EQ(vlm_present_enqueue(presenter, image, 0), VLM_PRESENT_BUSY);
  stage().layerHasFailed = false;
  standin::runMainQueue();  // the layer is built anew
  stage().windowScale = 3;
  standin::moveViews();
  EXPECT_EQ(vlm_present_enqueue(presenter, image, 0), VLM_PRESENT_OK);
  EXPECT_EQ(standin::shown(), std::vector<CVPixelBufferRef>{image});
  stage().throws = true;  // an exception of the framework is the host's no more than the library's
  EXPECT_EQ(vlm_present_enqueue(presenter, image, 0), VLM_PRESENT_OK);
  stage().throws = false;
  vlm_present_destroy(presenter);
  vlm_pixbuf_release(image);
}

std::vector<int> keys;

TEST(Flows, HotKeysAreReportedFromBothMonitorsUntilTheStop) {
  keys.clear();
  ASSERT_TRUE(vlm_hotkey_monitor_start([](std::int32_t key) { keys.push_back(key); }));
  standin::press(0, true);
  standin::press(11, false);
  vlm_hotkey_monitor_stop();
  standin::press(0, true);
  EXPECT_EQ(keys, (std::vector<int>{'A', 'B'}));
}

TEST(Flows, ATrackerHearsOfItsProcessUntilTheEnd) {
  std::vector<int> events;
  void* const tracker = vlm_window_track(
      42,
      [](std::int32_t event, double, double, double, double, void* user) {
        static_cast<std::vector<int>*>(user)->push_back(event);
      },
      &events);
  ASSERT_NE(tracker, nullptr);
  for (const char* name : {"AXWindowMoved", "AXWindowResized", "AXUIElementDestroyed"}) standin::notify(name);
  vlm_window_untrack(tracker);
  standin::notify("AXWindowMoved");
  EXPECT_EQ(events, (std::vector<int>{0, 1, 4}));
}

TEST(Flows, TheMicrophoneIsMixedToOneChannel) {
  char list[256] = "";
  ASSERT_GT(vlm_audio_devices_json(1, list, sizeof list), 0);
  EXPECT_NE(std::string(list).find("mic"), std::string::npos) << list;
  EXPECT_EQ(std::string(list).find("speakers"), std::string::npos) << list;
  std::vector<float> heard;
  const auto note = [](const float* samples, std::int32_t count, void* user) {
    static_cast<std::vector<float>*>(user)->assign(samples, samples + count);
  };
  for (const double rate : {48000.0, 24000.0}) {
    stage().inputRate = rate;
    void* const microphone = vlm_audio_in_start("mic", note, &heard);
    ASSERT_NE(microphone, nullptr);
    EXPECT_EQ(stage().chosenDevice, 7U);
    standin::tap(480, 0.25F);
    EXPECT_EQ(heard, std::vector<float>(rate == 48000 ? 480 : 960, 0.25F));
    stage().throws = true;
    standin::tap(480, 0.5F);
    stage().throws = false;
    vlm_audio_in_stop(microphone);
    standin::tap(480, 1.0F);
    EXPECT_EQ(heard.front(), 0.25F);
  }
  stage().refusesOutputs = true;
  EXPECT_EQ(vlm_audio_in_start(nullptr, note, &heard), nullptr);
  stage().refusesOutputs = false;
  stage().inputChannels = 3;  // the framework has no such format
  EXPECT_EQ(vlm_audio_in_start(nullptr, note, &heard), nullptr);
}

TEST(Flows, WhatIsWrittenIsPlayed) {
  void* const playback = vlm_audio_out_start("speakers", 1);
  ASSERT_NE(playback, nullptr);
  EXPECT_EQ(stage().chosenDevice, 8U);
  const std::vector<float> written(20000, 0.5F);
  vlm_audio_out_write(playback, written.data(), static_cast<std::int32_t>(written.size()));
  const auto played = standin::render(480, 1);
  EXPECT_EQ(played.back(), 0.5F);
  vlm_audio_out_stop(playback);
  EXPECT_EQ(vlm_sfx_create("/there is no such file"), nullptr);
}

TEST(Flows, EventsArePostedAsTheFrameworkNamesThem) {
  vlm_input_mouse_button(1, true, 3, 4);
  vlm_input_mouse_move(5, 6);
  vlm_input_key(11, true, 1 << 17);
  vlm_input_warp_cursor(7, 8);
  EXPECT_TRUE(vlm_perm_open_settings("accessibility"));
  double x = 0, y = 0;
  ASSERT_TRUE(vlm_input_cursor_pos(&x, &y));
  EXPECT_EQ(x + y, 46);
  EXPECT_EQ(vlm_frontmost_pid(), 42);
  EXPECT_EQ(stage().posted,
            (Strings{"mouse 3 3,4 1", "mouse 5 5,6 0", "key 11 1 131072", "warp 7",
                     "open x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"}));
}

TEST(Flows, ASecretIsKeptUntilItIsDeleted) {
  const std::uint8_t secret[] = {1, 0, 2};
  std::uint8_t read[3] = {};
  ASSERT_TRUE(vlm_secret_set("service", "me", secret, 3));
  EXPECT_EQ(vlm_secret_get("service", "me", read, 2), -3);
  ASSERT_EQ(vlm_secret_get("service", "me", read, 3), 3);
  EXPECT_EQ(std::memcmp(read, secret, 3), 0);
  EXPECT_TRUE(vlm_secret_delete("service", "me"));
  EXPECT_EQ(vlm_secret_get("service", "me", read, 3), 0);
}

}  // namespace
