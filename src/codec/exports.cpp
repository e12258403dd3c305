#include <memory>
#include <utility>

#include "VelmoraMacNative.h"
#include "capture/pixel_buffer.h"
#include "codec/bgra_input.h"
#include "codec/decoder.h"
#include "codec/encoder.h"
#include "frame/guard.h"

using vlm::capture::borrowPixelBuffer;
using vlm::codec::VlmDecoder;
using vlm::codec::VlmEncoder;
using vlm::frame::guarded;

void* vlm_enc_create(int32_t width, int32_t height, int32_t fps, int32_t bitrateBps,
                     bool lowLatency, vlm_encoded_cb cb, void* user) {
  return guarded<void*>(nullptr, [&]() -> void* {
    if (cb == nullptr) return nullptr;
    auto encoder = std::make_shared<VlmEncoder>(
        VlmEncoder::Settings{width, height, fps, bitrateBps, lowLatency}, cb, user);
    if (!encoder->buildSession()) return nullptr;
    return VlmEncoder::give(std::move(encoder));
  });
}

bool vlm_enc_encode(void* handle, void* pixbuf, int64_t ptsNs, bool forceKeyframe) {
  return guarded(false, [&] {
    const auto encoder = VlmEncoder::borrow(handle);
    auto buffer = borrowPixelBuffer(pixbuf);
    if (!encoder || !buffer) return false;
    return encoder->encode(std::move(buffer), ptsNs, forceKeyframe);
  });
}

bool vlm_enc_encode_bgra(void* handle, const uint8_t* bgra, int32_t width, int32_t height,
                         int32_t stride, int64_t ptsNs, bool forceKeyframe) {
  return guarded(false, [&] {
    const auto encoder = VlmEncoder::borrow(handle);
    if (!encoder || bgra == nullptr || width < 1 || height < 1) return false;
    auto buffer = vlm::codec::copyToPixelBuffer({bgra, width, height, stride});
    if (!buffer) return false;
    return encoder->encode(std::move(buffer), ptsNs, forceKeyframe);
  });
}

void vlm_enc_set_bitrate(void* handle, int32_t bitrateBps) {
  guarded([&] {
    if (const auto encoder = VlmEncoder::borrow(handle)) encoder->setBitrate(bitrateBps);
  });
}

void vlm_enc_destroy(void* handle) {
  guarded([&] {
    if (const auto encoder = VlmEncoder::takeBack(handle)) encoder->destroy();
  });
}

namespace {

void* createDecoder(bool outputBgra, vlm_frame_cb cb, void* user) {
  return guarded<void*>(nullptr, [&]() -> void* {
    if (cb == nullptr) return nullptr;
    return VlmDecoder::give(std::make_shared<VlmDecoder>(outputBgra, cb, user));
  });
}

}  // namespace

void* vlm_dec_create(vlm_frame_cb cb, void* user) {
  return createDecoder(false, cb, user);
}

void* vlm_dec_create_bgra(vlm_frame_cb cb, void* user) {
  return createDecoder(true, cb, user);
}

bool vlm_dec_decode(void* handle, const uint8_t* data, int32_t size, int64_t ptsNs) {
  return guarded(false, [&] {
    const auto decoder = VlmDecoder::borrow(handle);
    if (!decoder || data == nullptr || size < 1) return false;
    return decoder->decode({data, static_cast<std::size_t>(size)}, ptsNs);
  });
}

void vlm_dec_flush(void* handle) {
  guarded([&] {
    if (const auto decoder = VlmDecoder::borrow(handle)) decoder->flush();
  });
}

void vlm_dec_destroy(void* handle) {
  guarded([&] {
    if (const auto decoder = VlmDecoder::takeBack(handle)) decoder->destroy();
  });
}
