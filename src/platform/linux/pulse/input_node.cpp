#include <algorithm>
#include <utility>

#include "platform/linux/pulse/engine_nodes.h"

namespace vlm::platform::pulse {
namespace {

constexpr OSStatus kAudioUnitErr_InvalidProperty = -10879;
constexpr OSStatus kAudioUnitErr_InvalidPropertyValue = -10851;

}  // namespace

OSStatus DeviceChoice::setProperty(std::uint32_t property, std::uint32_t, std::uint32_t,
                                   std::uint32_t value) {
  if (property != kAudioOutputUnitProperty_CurrentDevice) return kAudioUnitErr_InvalidProperty;
  auto device = deviceByNumber(value);
  if (!device || device->isInput != isInput_) return kAudioUnitErr_InvalidPropertyValue;
  device_ = std::move(device);
  return noErr;
}

AVAudioFormat InputNode::inputFormatForBus(std::uint32_t) {
  auto device = choice_.device();
  if (!device) {
    if (const auto connection = Connection::shared()) device = defaultInput(*connection);
    default_ = device;
  }
  AVAudioFormat format{AVAudioCommonFormat::pcmFloat32, 0, 0, true};
  if (device) {
    format.sampleRate = device->format.rate;
    format.channelCount = device->format.channels;
  }
  return format;
}

void InputNode::installTapOnBus(std::uint32_t, std::uint32_t bufferSize,
                                const AVAudioFormat& format, AVAudioNodeTapBlock block) {
  tap_ = {std::max(bufferSize, 1U), format, std::move(block)};
}

void InputNode::removeTapOnBus(std::uint32_t) {
  stop();
  tap_.block = nullptr;
}

bool InputNode::start(Connection& connection) {
  const auto& chosen = choice_.device();
  const auto& device = chosen ? chosen : default_;
  if (!device) return false;
  recording_ = Recording::start(connection, {chosen ? device->name : "", device->channels}, tap_);
  return recording_ != nullptr;
}

void InputNode::stop() {
  if (recording_) recording_->end();
  recording_ = nullptr;
}

}  // namespace vlm::platform::pulse
