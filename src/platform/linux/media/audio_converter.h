#pragma once

#include <memory>

#include "platform/avf_audio.h"

namespace vlm::platform::media {

// Null for formats between which there is no conversion.
std::shared_ptr<AVAudioConverter> makeAudioConverter(const AVAudioFormat& from,
                                                     const AVAudioFormat& to);

}  // namespace vlm::platform::media
