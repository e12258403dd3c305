#include "platform/avf_audio.h"

#include <utility>

#include "platform/linux/media/audio_converter.h"
#include "platform/linux/pulse/engine.h"
#include "platform/linux/pulse/engine_nodes.h"
#include "platform/linux/pulse/player.h"
#include "platform/linux/pulse/sound_file.h"

namespace vlm::platform {

std::shared_ptr<AVAudioConverter> AVAudioConverter::initFromFormat(const AVAudioFormat& from,
                                                                   const AVAudioFormat& to) {
  return media::makeAudioConverter(from, to);
}

std::shared_ptr<AVAudioSourceNode> AVAudioSourceNode::initWithFormat(
    const AVAudioFormat& format, AVAudioSourceNodeRenderBlock block) {
  return std::make_shared<pulse::SourceNode>(format, std::move(block));
}

std::shared_ptr<AVAudioEngine> AVAudioEngine::make() {
  return pulse::makeEngine();
}

std::shared_ptr<AVAudioPlayer> AVAudioPlayer::initWithContentsOfFile(std::string_view path) {
  auto sound = pulse::readSound(path);
  return sound ? pulse::makePlayer(std::move(*sound)) : nullptr;
}

}  // namespace vlm::platform
