#include "audio/devices.h"

#include <cstddef>
#include <numeric>
#include <span>
#include <utility>

#include "platform/json.h"

namespace vlm::audio {
namespace {

using platform::AudioDeviceID;
using platform::AudioObjectPropertyAddress;
using platform::noErr;

AudioObjectPropertyAddress globalProperty(std::uint32_t selector) {
  return {selector, platform::kAudioObjectPropertyScopeGlobal,
          platform::kAudioObjectPropertyElementMain};
}

AudioObjectPropertyAddress configurationOf(Direction direction) {
  return {platform::kAudioDevicePropertyStreamConfiguration,
          direction == Direction::input ? platform::kAudioObjectPropertyScopeInput
                                        : platform::kAudioObjectPropertyScopeOutput,
          platform::kAudioObjectPropertyElementMain};
}

std::optional<std::string> text(AudioDeviceID device, std::uint32_t selector) {
  std::optional<std::string> value;
  if (platform::helpers::propertyText(device, globalProperty(selector), value) != noErr) {
    return std::nullopt;
  }
  return value;
}

}  // namespace

std::vector<AudioDeviceID> audioDeviceIDs() {
  const auto address = globalProperty(platform::kAudioHardwarePropertyDevices);
  constexpr auto kSystem = platform::kAudioObjectSystemObject;
  std::uint32_t size = 0;
  if (platform::AudioObjectGetPropertyDataSize(kSystem, address, size) != noErr) return {};
  std::vector<AudioDeviceID> devices(size / sizeof(AudioDeviceID));
  if (devices.empty()) return {};
  const auto bytes = std::as_writable_bytes(std::span(devices));
  if (platform::AudioObjectGetPropertyData(kSystem, address, bytes, size) != noErr) return {};
  return devices;
}

std::int64_t channelCount(AudioDeviceID device, Direction direction) {
  std::vector<std::uint32_t> streams;
  if (platform::helpers::streamChannels(device, configurationOf(direction), streams) != noErr) {
    return 0;
  }
  return std::accumulate(streams.begin(), streams.end(), std::int64_t{0});
}

std::optional<AudioDeviceID> findDevice(const std::optional<std::string>& uid,
                                        Direction direction) {
  if (!uid || uid->empty()) return std::nullopt;
  for (const auto device : audioDeviceIDs()) {
    if (channelCount(device, direction) <= 0) continue;
    const auto candidate = text(device, platform::kAudioDevicePropertyDeviceUID);
    if (candidate && platform::helpers::areCanonicallyEqual(*candidate, *uid)) return device;
  }
  return std::nullopt;
}

std::optional<std::string> devicesJson(Direction direction) {
  platform::CFArray devices;
  for (const auto device : audioDeviceIDs()) {
    if (channelCount(device, direction) <= 0) continue;
    const auto name = text(device, platform::kAudioObjectPropertyName);
    if (!name) continue;
    const auto uid = text(device, platform::kAudioDevicePropertyDeviceUID);
    devices.push_back(platform::CFDictionary{{"name", *name}, {"uid", uid.value_or("")}});
  }
  return platform::NSJSONSerializationData(std::move(devices));
}

void chooseDevice(platform::AudioUnit* unit, std::optional<AudioDeviceID> device) {
  if (unit == nullptr || !device) return;
  unit->setProperty(platform::kAudioOutputUnitProperty_CurrentDevice,
                    platform::kAudioUnitScope_Global, 0, *device);
}

}  // namespace vlm::audio
