// A small host for the first run on a Mac: each command uses one family as an application would, in
// an application of AppKit with a window. scripts/try-on-mac calls them one after the other.
#import <AppKit/AppKit.h>
#import <Foundation/Foundation.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "VelmoraMacNative.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kWidth = 960;
constexpr int kHeight = 540;

NSApplication* application() {
  NSApplication* const app = [NSApplication sharedApplication];
  [app setActivationPolicy:NSApplicationActivationPolicyRegular];
  [app finishLaunching];
  return app;
}

// Turns of the main run loop, as an application has them.
void runFor(double seconds) {
  NSApplication* const app = application();
  const auto end = Clock::now() + std::chrono::duration<double>(seconds);
  while (Clock::now() < end) {
    @autoreleasepool {
      NSEvent* const event = [app nextEventMatchingMask:NSEventMaskAny
                                              untilDate:[NSDate dateWithTimeIntervalSinceNow:0.05]
                                                 inMode:NSDefaultRunLoopMode
                                                dequeue:YES];
      if (event != nil) [app sendEvent:event];
    }
  }
}

int permissions() {
  std::printf("screen recording %d, capture ready %d, accessibility %d\n",
              vlm_perm_screen_recording(false), vlm_screen_capture_ready(),
              vlm_perm_accessibility(false));
  return 0;
}

int ask(const std::string& kind) {
  const bool has = kind == "screen" ? vlm_perm_screen_recording(true) : vlm_perm_accessibility(true);
  std::printf("answered %d\n", has);
  runFor(2);
  return 0;
}

// What a frame passes on its way: the display, the encoder, the decoder and the view.
struct Loop {
  void* encoder = nullptr;
  void* decoder = nullptr;
  void* presenter = nullptr;
  std::atomic<int> captured = 0;
  std::atomic<int> encoded = 0;
  std::atomic<int> decoded = 0;
  std::atomic<int> shown = 0;
};

void onCaptured(void* pixbuf, std::int32_t, std::int32_t, std::int64_t ptsNs, void* user) {
  auto& loop = *static_cast<Loop*>(user);
  ++loop.captured;
  vlm_enc_encode(loop.encoder, pixbuf, ptsNs, false);
}

void onEncoded(const std::uint8_t* data, std::int32_t size, bool, std::int64_t ptsNs, void* user) {
  auto& loop = *static_cast<Loop*>(user);
  ++loop.encoded;
  vlm_dec_decode(loop.decoder, data, size, ptsNs);
}

void onDecoded(void* pixbuf, std::int32_t, std::int32_t, std::int64_t ptsNs, void* user) {
  auto& loop = *static_cast<Loop*>(user);
  ++loop.decoded;
  if (vlm_present_enqueue(loop.presenter, pixbuf, ptsNs) == VLM_PRESENT_OK) ++loop.shown;
}

int loopback(double seconds) {
  application();
  Loop loop;
  loop.presenter = vlm_present_create();
  if (loop.presenter == nullptr) return 1;
  NSWindow* const window =
      [[NSWindow alloc] initWithContentRect:NSRect{{100, 100}, {kWidth, kHeight}}
                                  styleMask:NSWindowStyleMaskTitled
                                    backing:NSBackingStoreBuffered
                                      defer:NO];
  [window setTitle:@"VelmoraMacNative"];
  [window setContentView:static_cast<NSView*>(vlm_present_view(loop.presenter))];
  [window makeKeyAndOrderFront:nil];
  loop.decoder = vlm_dec_create(onDecoded, &loop);
  loop.encoder = vlm_enc_create(kWidth, kHeight, 30, 4'000'000, true, onEncoded, &loop);
  void* const capture =
      vlm_capture_start_display(0, 30, kWidth, kHeight, onCaptured, nullptr, &loop);
  runFor(capture == nullptr ? 0 : seconds);
  if (capture != nullptr) vlm_capture_stop(capture);
  if (loop.encoder != nullptr) vlm_enc_destroy(loop.encoder);
  if (loop.decoder != nullptr) vlm_dec_destroy(loop.decoder);
  [window close];
  vlm_present_destroy(loop.presenter);
  runFor(0.2);
  std::printf("captured %d, encoded %d, decoded %d, shown %d\n", loop.captured.load(),
              loop.encoded.load(), loop.decoded.load(), loop.shown.load());
  return loop.shown > 0 ? 0 : 1;
}

int track(double seconds) {
  const std::int32_t pid = vlm_frontmost_pid();
  std::vector<VlmWindowEntry> windows(32);
  const auto count = vlm_window_enumerate(pid, windows.data(), 32);
  std::printf("process %d in front, %d windows\n", pid, count);
  const auto tell = [](std::int32_t event, double x, double y, double width, double height, void*) {
    std::printf("event %d %gx%g at %g,%g\n", event, width, height, x, y);
  };
  void* const tracker = vlm_window_track(pid, tell, nullptr);
  if (tracker == nullptr) return 1;
  runFor(seconds);
  vlm_window_untrack(tracker);
  return 0;
}

int keys(double seconds) {
  application();
  vlm_hotkey_monitor_start([](std::int32_t key) { std::printf("key %d\n", key); });
  runFor(seconds);
  vlm_hotkey_monitor_stop();
  return 0;
}

// Moves the pointer in a circle, and back.
int pointer(double) {
  double x = 0;
  double y = 0;
  if (!vlm_input_cursor_pos(&x, &y)) return 1;
  for (int step = 0; step <= 60; ++step) {
    const double angle = step * 6.2831853 / 60;
    vlm_input_mouse_move(x + 50 * std::sin(angle), y + 50 - 50 * std::cos(angle));
    runFor(0.03);
  }
  return 0;
}

int microphone(double seconds) {
  char devices[4096] = "";
  if (vlm_audio_devices_json(1, devices, sizeof devices) > 0) std::printf("%s\n", devices);
  static std::atomic<int> blocks = 0;
  static std::atomic<float> loudest = 0;
  const auto listen = [](const float* samples, std::int32_t count, void*) {
    ++blocks;
    for (std::int32_t i = 0; i < count; ++i) loudest = std::max(loudest.load(), std::fabs(samples[i]));
  };
  void* const handle = vlm_audio_in_start(nullptr, listen, nullptr);
  if (handle == nullptr) return 1;
  runFor(seconds);
  vlm_audio_in_stop(handle);
  std::printf("blocks %d, loudest sample %g\n", blocks.load(), static_cast<double>(loudest.load()));
  return blocks > 0 ? 0 : 1;
}

int tone(double seconds) {
  void* const handle = vlm_audio_out_start(nullptr, 1);
  if (handle == nullptr) return 1;
  std::vector<float> block(2400);
  double phase = 0;
  for (int i = 0; i < seconds * 20; ++i) {
    for (float& sample : block) {
      sample = static_cast<float>(0.2 * std::sin(phase += 440 * 6.2831853 / 48000));
    }
    vlm_audio_out_write(handle, block.data(), static_cast<std::int32_t>(block.size()));
    runFor(0.05);
  }
  vlm_audio_out_stop(handle);
  return 0;
}

int secret(double) {
  const std::uint8_t kept[] = {1, 0, 2};
  std::uint8_t read[3] = {};
  const bool works = vlm_secret_set("vlm.try", "me", kept, 3) &&
                     vlm_secret_get("vlm.try", "me", read, 3) == 3 &&
                     std::memcmp(kept, read, 3) == 0 && vlm_secret_delete("vlm.try", "me");
  char machine[64] = "";
  vlm_machine_id(machine, sizeof machine);
  std::printf("secret %d, machine %s\n", works, machine[0] == '\0' ? "unknown" : "known");
  return works ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  const std::string command = count > 1 ? arguments[1] : "";
  const std::string argument = count > 2 ? arguments[2] : "";
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  @autoreleasepool {
    if (command == "permissions") return permissions();
    if (command == "ask") return ask(argument);
    if (command == "settings") return vlm_perm_open_settings(argument.c_str()) ? 0 : 1;
    const std::pair<const char*, int (*)(double)> timed[] = {
        {"loopback", loopback}, {"track", track}, {"keys", keys},    {"pointer", pointer},
        {"microphone", microphone}, {"tone", tone}, {"secret", secret}};
    for (const auto& [name, run] : timed) {
      if (command == name) return run(argument.empty() ? 5 : std::atof(argument.c_str()));
    }
  }
  std::fprintf(stderr, "vlm-try: no such command\n");
  return 2;
}
