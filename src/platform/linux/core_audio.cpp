#include "platform/core_audio.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "platform/linux/pulse/devices.h"

namespace vlm::platform {
namespace {

constexpr OSStatus kAudioHardwareNotRunningError = 0x73746F70;       // 'stop'
constexpr OSStatus kAudioHardwareBadObjectError = 0x216F626A;        // '!obj'
constexpr OSStatus kAudioHardwareUnknownPropertyError = 0x77686F3F;  // 'who?'

OSStatus deviceNumbers(const std::shared_ptr<const pulse::Devices>& devices,
                       std::vector<std::byte>& content) {
  if (!devices) return kAudioHardwareNotRunningError;
  std::vector<AudioDeviceID> numbers;
  for (const auto& device : *devices) numbers.push_back(device.number);
  const auto bytes = std::as_bytes(std::span(numbers));
  content.assign(bytes.begin(), bytes.end());
  return noErr;
}

using AskForDevices = std::shared_ptr<const pulse::Devices>();

OSStatus contentOf(AudioObjectID object, const AudioObjectPropertyAddress& address,
                   AskForDevices* devices, std::vector<std::byte>& content) {
  if (object == kAudioObjectSystemObject && address.mSelector == kAudioHardwarePropertyDevices) {
    return deviceNumbers(devices(), content);
  }
  return kAudioHardwareUnknownPropertyError;
}

}  // namespace

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object,
                                        const AudioObjectPropertyAddress& address,
                                        std::uint32_t& size) {
  std::vector<std::byte> content;
  // A caller that lists all devices asks for the size first, and means those of now.
  const auto status = contentOf(object, address, pulse::refreshDevices, content);
  if (status == noErr) size = static_cast<std::uint32_t>(content.size());
  return status;
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress& address,
                                    std::span<std::byte> data, std::uint32_t& size) {
  std::vector<std::byte> content;
  const auto status = contentOf(object, address, pulse::knownDevices, content);
  if (status != noErr) return status;
  content.resize(std::min(content.size(), data.size()));
  std::ranges::copy(content, data.begin());
  size = static_cast<std::uint32_t>(content.size());
  return noErr;
}

// A device of the server has one direction, and in it one stream of all its channels.
OSStatus helpers::streamChannels(AudioDeviceID number, const AudioObjectPropertyAddress& address,
                                 std::vector<std::uint32_t>& channels) {
  const auto device = pulse::deviceByNumber(number);
  if (!device) return kAudioHardwareBadObjectError;
  const auto own =
      device->isInput ? kAudioObjectPropertyScopeInput : kAudioObjectPropertyScopeOutput;
  channels.assign(address.mScope == own ? 1 : 0, device->format.channels);
  return noErr;
}

OSStatus helpers::propertyText(AudioObjectID object, const AudioObjectPropertyAddress& address,
                               std::optional<std::string>& text) {
  const auto device = pulse::deviceByNumber(object);
  if (!device) return kAudioHardwareBadObjectError;
  if (address.mSelector == kAudioObjectPropertyName) {
    text = device->description;
  } else if (address.mSelector == kAudioDevicePropertyDeviceUID) {
    text = device->name;
  } else {
    return kAudioHardwareUnknownPropertyError;
  }
  return noErr;
}

}  // namespace vlm::platform
