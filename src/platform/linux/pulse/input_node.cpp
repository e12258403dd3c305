#include <algorithm>
#include <utility>

#include "platform/linux/pulse/engine_nodes.h"
#include "platform/portable/audio_format.h"

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

AVAudioFormatPtr InputNode::inputFormatForBus(std::uint32_t) {
  auto device = choice_.device();
  if (!device) {
    if (const auto connection = Connection::open()) device = defaultInput(*connection);
    default_ = device;
  }
  PcmShape format{AVAudioCommonFormat::pcmFloat32, 0, 0, true};
  if (device) {
    format.sampleRate = device->format.rate;
    format.channelCount = device->format.channels;
  }
  return makeAudioFormat(format);
}

std::optional<NSError> InputNode::installTapOnBus(std::uint32_t, std::uint32_t bufferSize,
                                                  AVAudioFormatPtr format,
                                                  AVAudioNodeTapBlock block) {
  if (!format || !format->isInterleaved() || format->channelCount() == 0) {
    return NSError{"the format is not that of the input"};
  }
  tap_ = {std::max(bufferSize, 1U), std::move(format), std::move(block)};
  return std::nullopt;
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
