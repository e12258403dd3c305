#include "platform/core_audio.h"

#include <algorithm>
#include <cstring>

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

template <class Record>
std::vector<std::byte> bytesOf(const std::vector<Record>& records) {
  std::vector<std::byte> bytes(records.size() * sizeof(Record));
  if (!bytes.empty()) std::memcpy(bytes.data(), records.data(), bytes.size());
  return bytes;
}

OSStatus content(AudioObjectID object, const AudioObjectPropertyAddress& address,
                 std::vector<std::byte>& bytes) {
  if (object == kAudioObjectSystemObject) {
    if (address.mSelector != kAudioHardwarePropertyDevices)
      return kAudioHardwareUnknownPropertyError;
    std::vector<AudioDeviceID> numbers;
    for (const auto& device : Machine::current().audio.devices) numbers.push_back(device.number);
    bytes = bytesOf(numbers);
    return noErr;
  }
  const auto* device = deviceOf(object);
  if (device == nullptr) return kAudioHardwareBadObjectError;
  if (address.mSelector != kAudioDevicePropertyStreamConfiguration) {
    return kAudioHardwareUnknownPropertyError;
  }
  std::vector<AudioBuffer> buffers;
  const bool isInput = address.mScope == kAudioObjectPropertyScopeInput;
  for (const auto channels : isInput ? device->inputs : device->outputs) {
    buffers.push_back({channels, 0, nullptr});
  }
  bytes = bytesOf(buffers);
  return noErr;
}

}  // namespace

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object,
                                        const AudioObjectPropertyAddress& address,
                                        std::uint32_t& size) {
  const auto fault = enter("AudioObjectGetPropertyDataSize", object, address);
  if (fault.fails()) return fault.status;
  std::vector<std::byte> bytes;
  const auto status = content(object, address, bytes);
  if (status == noErr) size = fault.nothing ? 0 : static_cast<std::uint32_t>(bytes.size());
  return status;
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress& address,
                                    std::span<std::byte> data, std::uint32_t& size) {
  const auto fault = enter("AudioObjectGetPropertyData", object, address);
  if (fault.fails()) return fault.status;
  std::vector<std::byte> bytes;
  const auto status = content(object, address, bytes);
  if (status != noErr) return status;
  bytes.resize(std::min(bytes.size(), data.size()));
  std::ranges::copy(bytes, data.begin());
  size = static_cast<std::uint32_t>(bytes.size());
  return noErr;
}

OSStatus AudioObjectGetPropertyText(AudioObjectID object, const AudioObjectPropertyAddress& address,
                                    std::optional<std::string>& text) {
  const auto fault = enter("AudioObjectGetPropertyText", object, address);
  if (fault.fails()) return fault.status;
  const auto* device = deviceOf(object);
  if (device == nullptr) return kAudioHardwareBadObjectError;
  const auto& value = address.mSelector == kAudioObjectPropertyName ? device->name : device->uid;
  const auto* string = value.as<std::string>();
  text = string != nullptr && !fault.nothing ? std::optional(*string) : std::nullopt;
  return noErr;
}

}  // namespace vlm::platform
