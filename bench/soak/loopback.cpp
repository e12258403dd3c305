#include "bench/soak/loopback.h"

#include <stdexcept>

#include "VelmoraMacNative.h"

namespace vlm::bench {
namespace {

constexpr int kFps = 30;
constexpr int kBitrate = 8'000'000;
// A viewer that covers part of what is shared, and is shared itself.
constexpr xcb_rectangle_t kViewer{900, 500, 960, 540};

}  // namespace

Loopback::Loopback() : presenter_(vlm_present_create()) {
  placeView(server_, vlm_present_view(presenter_), kViewer);
  decoder_ = vlm_dec_create(onDecoded, this);
  capture_ = vlm_capture_start_display(0, kFps, 0, 0, onFrame, nullptr, this);
  if (capture_ == nullptr) throw std::runtime_error("the display can't be captured");
}

Loopback::~Loopback() {
  vlm_capture_stop(capture_);
  vlm_enc_destroy(encoder_);
  vlm_dec_destroy(decoder_);
  vlm_present_destroy(presenter_);
}

void Loopback::onFrame(void* image, std::int32_t width, std::int32_t height, std::int64_t pts,
                       void* user) {
  auto& self = *static_cast<Loopback*>(user);
  ++self.captured_;
  if (self.encoder_ == nullptr) {
    self.encoder_ = vlm_enc_create(width, height, kFps, kBitrate, true, onEncoded, user);
  }
  vlm_enc_encode(self.encoder_, image, pts, false);
}

void Loopback::onEncoded(const std::uint8_t* data, std::int32_t size, bool, std::int64_t pts,
                         void* user) {
  vlm_dec_decode(static_cast<Loopback*>(user)->decoder_, data, size, pts);
}

void Loopback::onDecoded(void* image, std::int32_t, std::int32_t, std::int64_t pts, void* user) {
  auto& self = *static_cast<Loopback*>(user);
  ++self.decoded_;
  if (vlm_present_enqueue(self.presenter_, image, pts) == VLM_PRESENT_OK) ++self.shown_;
}

}  // namespace vlm::bench
