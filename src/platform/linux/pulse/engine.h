#pragma once

#include <memory>

#include "platform/avf_audio.h"

namespace vlm::platform::pulse {

std::shared_ptr<AVAudioEngine> makeEngine();

}  // namespace vlm::platform::pulse
