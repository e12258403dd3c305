#pragma once

#include <memory>

#include "platform/avf_audio.h"
#include "platform/linux/pulse/sound_file.h"

namespace vlm::platform::pulse {

std::shared_ptr<AVAudioPlayer> makePlayer(Sound sound);

}  // namespace vlm::platform::pulse
