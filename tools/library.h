#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>

#include "VelmoraMacNative.h"

namespace vlm::tools {

// Owns one handle of the library and makes the call that ends it.
template <auto EndHandle>
struct HandleEnd {
  void operator()(void* handle) const { EndHandle(handle); }
};
template <auto EndHandle>
using Handle = std::unique_ptr<void, HandleEnd<EndHandle>>;

using Capture = Handle<vlm_capture_stop>;
using Encoder = Handle<vlm_enc_destroy>;
using Decoder = Handle<vlm_dec_destroy>;
using Presenter = Handle<vlm_present_destroy>;
using Microphone = Handle<vlm_audio_in_stop>;
using Playback = Handle<vlm_audio_out_stop>;
using Sound = Handle<vlm_sfx_destroy>;
using PixelBuffer = Handle<vlm_pixbuf_release>;

// Keeps a buffer that a callback only lends.
inline PixelBuffer retained(void* pixbuf) {
  vlm_pixbuf_retain(pixbuf);
  return PixelBuffer(pixbuf);
}

// One frame's worth of a stream, in whose bytes it lies.
struct AccessUnit {
  std::span<const std::uint8_t> bytes;
  bool keyframe = false;
};

// Now, in nanoseconds on the clock that a capture's time stamps are taken from.
inline std::int64_t monotonicNow() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace vlm::tools
