// Owners of the library's handles.
#pragma once

#include <VelmoraMacNative.h>

#include <memory>

namespace remote {

template <auto end>
struct HandleEnd {
  void operator()(void* handle) const { end(handle); }
};
template <auto end>
using Handle = std::unique_ptr<void, HandleEnd<end>>;

using CaptureHandle = Handle<vlm_capture_stop>;
using EncoderHandle = Handle<vlm_enc_destroy>;
using DecoderHandle = Handle<vlm_dec_destroy>;
using PresenterHandle = Handle<vlm_present_destroy>;
using PlaybackHandle = Handle<vlm_audio_out_stop>;
using PixelBuffer = Handle<vlm_pixbuf_release>;

// Keeps a buffer that a callback only lends.
inline PixelBuffer retained(void* pixbuf) {
  vlm_pixbuf_retain(pixbuf);
  return PixelBuffer(pixbuf);
}

}  // namespace remote
