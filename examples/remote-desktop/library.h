// Owners of the library's handles.
#pragma once

#include <VelmoraMacNative.h>

#include "owner.h"

namespace remote {

using CaptureHandle = Owner<void, vlm_capture_stop>;
using EncoderHandle = Owner<void, vlm_enc_destroy>;
using DecoderHandle = Owner<void, vlm_dec_destroy>;
using PresenterHandle = Owner<void, vlm_present_destroy>;
using PlaybackHandle = Owner<void, vlm_audio_out_stop>;
using PixelBuffer = Owner<void, vlm_pixbuf_release>;

// Keeps a buffer that a callback only lends.
inline PixelBuffer retained(void* pixbuf) {
  vlm_pixbuf_retain(pixbuf);
  return PixelBuffer(pixbuf);
}

}  // namespace remote
