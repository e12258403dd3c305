#include "platform/core_audio.h"

#include <algorithm>

#include "platform/scripted/machine/machine.h"

namespace vlm::platform {
namespace {

using scripted::AudioStage;
using scripted::Fault;
using scripted::fourCharacters;
using scripted::Machine;

constexpr OSStatus kAudioHardwareBadObjectError = 0x216F626A;        // '!obj'
constexpr OSStatus kAudioHardwareUnknownPropertyError = 0x77686F3F;  // 'who?'

Fault enter(const char* operation, AudioObjectID object,
            const AudioObjectPropertyAddress& address) {
  return Machine::current().journal.enter(
      operation, {object, fourCharacters(address.mSelector), fourCharacters(address.mScope)});
}

const AudioStage::Device* deviceOf(AudioObjectID object) {
  const auto& devices = Machine::current().audio.devices;
  const auto device = std::ranges::find(devices, object, &AudioStage::Device::number);
  return device == devices.end() ? nullptr : &*device;
}

OSStatus deviceNumbers(AudioObjectID object, const AudioObjectPropertyAddress& address,
                       std::vector<std::byte>& bytes) {
  if (object != kAudioObjectSystemObject || address.mSelector != kAudioHardwarePropertyDevices) {
    return kAudioHardwareUnknownPropertyError;
  }
  bytes.clear();
  for (const auto& device : Machine::current().audio.devices) {
    const auto number = std::as_bytes(std::span(&device.number, 1));
    bytes.insert(bytes.end(), number.begin(), number.end());
  }
  return noErr;
}

}  // namespace

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object,
                                        const AudioObjectPropertyAddress& address,
                                        std::uint32_t& size) {
  const auto fault = enter("AudioObjectGetPropertyDataSize", object, address);
  if (fault.fails()) return fault.status;
  std::vector<std::byte> bytes;
  const auto status = deviceNumbers(object, address, bytes);
  if (status == noErr) size = fault.nothing ? 0 : static_cast<std::uint32_t>(bytes.size());
  return status;
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress& address,
                                    std::span<std::byte> data, std::uint32_t& size) {
  const auto fault = enter("AudioObjectGetPropertyData", object, address);
  if (fault.fails()) return fault.status;
  std::vector<std::byte> bytes;
  const auto status = deviceNumbers(object, address, bytes);
  if (status != noErr) return status;
  bytes.resize(std::min(bytes.size(), data.size()));
  std::ranges::copy(bytes, data.begin());
  size = static_cast<std::uint32_t>(bytes.size());
  return noErr;
}

OSStatus helpers::streamChannels(AudioDeviceID number, const AudioObjectPropertyAddress& address,
                                 std::vector<std::uint32_t>& channels) {
  for (const char* operation : {"AudioObjectGetPropertyDataSize", "AudioObjectGetPropertyData"}) {
    const auto fault = enter(operation, number, address);
    if (fault.fails()) return fault.status;
  }
  const auto* device = deviceOf(number);
  if (device == nullptr) return kAudioHardwareBadObjectError;
  channels = address.mScope == kAudioObjectPropertyScopeInput ? device->inputs : device->outputs;
  return noErr;
}

OSStatus helpers::propertyText(AudioObjectID object, const AudioObjectPropertyAddress& address,
                               std::optional<std::string>& text) {
  const auto fault = enter("AudioObjectGetPropertyData", object, address);
  if (fault.fails()) return fault.status;
  const auto* device = deviceOf(object);
  if (device == nullptr) return kAudioHardwareBadObjectError;
  const auto& value = address.mSelector == kAudioObjectPropertyName ? device->name : device->uid;
  const auto* string = value.as<std::string>();
  text = string != nullptr && !fault.nothing ? std::optional(*string) : std::nullopt;
  return noErr;
}

}  // namespace vlm::platform
