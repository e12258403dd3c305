#include <stdexcept>

#include "VelmoraMacNative.h"
#include "bench/latency/paths.h"

namespace vlm::bench {
namespace {

// Capture, encoder and decoder of one host, each called from the callback of the one before.
struct Loop {
  explicit Loop(std::int64_t warm) : sightings(warm) {}

  int fps = 0;
  void* encoder = nullptr;
  void* decoder = nullptr;
  Sightings sightings;
};

void onDecoded(void* image, std::int32_t, std::int32_t height, std::int64_t, void* user) {
  std::uint8_t* luma = nullptr;
  std::int32_t bytesPerRow = 0;
  if (!vlm_pixbuf_lock(image, &luma, &bytesPerRow, nullptr, nullptr)) return;
  const auto stride = static_cast<std::size_t>(bytesPerRow);
  static_cast<Loop*>(user)->sightings.add({luma, stride * static_cast<std::size_t>(height)},
                                          stride);
  vlm_pixbuf_unlock(image);
}

void onEncoded(const std::uint8_t* data, std::int32_t size, bool, std::int64_t pts, void* user) {
  vlm_dec_decode(static_cast<Loop*>(user)->decoder, data, size, pts);
}

void onFrame(void* image, std::int32_t width, std::int32_t height, std::int64_t pts, void* user) {
  auto& loop = *static_cast<Loop*>(user);
  if (loop.encoder == nullptr) {
    loop.encoder = vlm_enc_create(width, height, loop.fps, kBitrate, true, onEncoded, &loop);
  }
  vlm_enc_encode(loop.encoder, image, pts, false);
}

}  // namespace

Latencies measureOurs(int fps, double seconds) {
  const auto warm = warmAt();
  Loop loop(warm);
  loop.fps = fps;
  loop.decoder = vlm_dec_create(onDecoded, &loop);
  void* capture = vlm_capture_start_display(0, fps, 0, 0, onFrame, nullptr, &loop);
  if (capture == nullptr) {
    vlm_dec_destroy(loop.decoder);
    throw std::runtime_error("the display can't be captured");
  }
  watch(warm, seconds);
  vlm_capture_stop(capture);
  vlm_enc_destroy(loop.encoder);
  vlm_dec_destroy(loop.decoder);
  return loop.sightings.summary();
}

}  // namespace vlm::bench
