#include "bench/soak/cycles.h"

#include <glib.h>

#include <semaphore>
#include <stdexcept>
#include <vector>

#include "VelmoraMacNative.h"

namespace vlm::bench {
namespace {

constexpr std::int32_t kWidth = 640;
constexpr std::int32_t kHeight = 360;

using AccessUnit = std::vector<std::uint8_t>;

void expect(bool done, const char* what) {
  if (!done) throw std::runtime_error(what);
}

void onFirstFrame(void*, std::int32_t, std::int32_t, std::int64_t, void* user) {
  static_cast<std::counting_semaphore<>*>(user)->release();
}

void liveCapture() {
  std::counting_semaphore<> frames(0);
  void* capture = vlm_capture_start_display(0, 30, 0, 0, onFirstFrame, nullptr, &frames);
  expect(capture != nullptr, "no capture");
  frames.acquire();
  vlm_capture_stop(capture);
}

void keepUnit(const std::uint8_t* data, std::int32_t size, bool, std::int64_t, void* user) {
  static_cast<AccessUnit*>(user)->assign(data, data + size);
}

AccessUnit encodeOne() {
  const std::vector<std::uint8_t> grey(std::size_t{kWidth} * kHeight * 4, 0x80);
  AccessUnit unit;
  void* encoder = vlm_enc_create(kWidth, kHeight, 30, 1'000'000, true, keepUnit, &unit);
  expect(vlm_enc_encode_bgra(encoder, grey.data(), kWidth, kHeight, kWidth * 4, 0, true),
         "no encoding");
  vlm_enc_destroy(encoder);
  expect(!unit.empty(), "no access unit");
  return unit;
}

void liveEncoder() {
  encodeOne();
}

void countFrame(void*, std::int32_t, std::int32_t, std::int64_t, void* user) {
  ++*static_cast<int*>(user);
}

void liveDecoder() {
  static const AccessUnit unit = encodeOne();
  int frames = 0;
  void* decoder = vlm_dec_create(countFrame, &frames);
  vlm_dec_decode(decoder, unit.data(), static_cast<std::int32_t>(unit.size()), 0);
  vlm_dec_destroy(decoder);
  expect(frames == 1, "no decoded frame");
}

void livePresenter() {
  void* presenter = vlm_present_create();
  expect(presenter != nullptr, "no presenter");
  vlm_present_clear(presenter);
  vlm_present_destroy(presenter);
  settleMainLoop();
}

}  // namespace

const Cycle kCycles[4] = {{"capture", liveCapture},
                          {"encoder", liveEncoder},
                          {"decoder", liveDecoder},
                          {"presenter", livePresenter}};

void settleMainLoop() {
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
}

}  // namespace vlm::bench
