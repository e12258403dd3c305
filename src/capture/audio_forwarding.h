#pragma once

#include "VelmoraMacNative.h"
#include "platform/core_media.h"

namespace vlm::capture {

// Hands one buffer of captured audio to the host as interleaved floats: in place when it comes
// interleaved, woven together when it comes as one buffer a channel. A buffer that can't be read
// is left out.
void forwardAudio(platform::CMSampleBuffer& sample, vlm_audio_cb audioCb, void* user);

}  // namespace vlm::capture
