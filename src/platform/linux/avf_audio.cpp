#include "platform/avf_audio.h"

#include <utility>

#include "platform/linux/media/audio_converter.h"
#include "platform/linux/pulse/engine.h"
#include "platform/linux/pulse/engine_nodes.h"
#include "platform/linux/pulse/player.h"
#include "platform/linux/pulse/sound_file.h"

namespace vlm::platform {

std::shared_ptr<AVAudioConverter> AVAudioConverter::initFromFormat(AVAudioFormatPtr from,
                                                                   AVAudioFormatPtr to) {
  return from && to ? media::makeAudioConverter(*from, *to) : nullptr;
}

std::shared_ptr<AVAudioSourceNode> AVAudioSourceNode::initWithFormat(
    AVAudioFormatPtr format, AVAudioSourceNodeRenderBlock block) {
  if (!format) return nullptr;
  return std::make_shared<pulse::SourceNode>(std::move(format), std::move(block));
}

std::shared_ptr<AVAudioEngine> AVAudioEngine::make() {
  return pulse::makeEngine();
}

std::shared_ptr<AVAudioPlayer> helpers::audioPlayerOfFile(std::string_view path) {
  auto sound = pulse::readSound(path);
  return sound ? pulse::makePlayer(std::move(*sound)) : nullptr;
}

}  // namespace vlm::platform
