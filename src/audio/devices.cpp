#include "audio/devices.h"

#include <cstddef>
#include <span>
#include <utility>

#include "platform/json.h"

namespace vlm::audio {
namespace {

using platform::AudioBuffer;
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

// The property as an array of records, as many as fit into its size; empty when it can't be read.
template <class Record>
std::vector<Record> records(platform::AudioObjectID object,
                            const AudioObjectPropertyAddress& address) {
  std::uint32_t size = 0;
  if (platform::AudioObjectGetPropertyDataSize(object, address, size) != noErr) return {};
  std::vector<Record> result(size / sizeof(Record));
  if (result.empty()) return {};
  const auto bytes = std::as_writable_bytes(std::span(result));
  if (platform::AudioObjectGetPropertyData(object, address, bytes, size) != noErr) return {};
  return result;
}

std::optional<std::string> text(AudioDeviceID device, std::uint32_t selector) {
  std::optional<std::string> value;
  if (platform::AudioObjectGetPropertyText(device, globalProperty(selector), value) != noErr) {
    return std::nullopt;
  }
  return value;
}

}  // namespace

std::vector<AudioDeviceID> audioDeviceIDs() {
  return records<AudioDeviceID>(platform::kAudioObjectSystemObject,
                                globalProperty(platform::kAudioHardwarePropertyDevices));
}

std::int64_t channelCount(AudioDeviceID device, Direction direction) {
  std::int64_t channels = 0;
  for (const auto& buffer : records<AudioBuffer>(device, configurationOf(direction))) {
    channels += buffer.mNumberChannels;
  }
  return channels;
}

std::optional<AudioDeviceID> findDevice(const std::optional<std::string>& uid,
                                        Direction direction) {
  if (!uid || uid->empty()) return std::nullopt;
  for (const auto device : audioDeviceIDs()) {
    if (channelCount(device, direction) <= 0) continue;
    const auto candidate = text(device, platform::kAudioDevicePropertyDeviceUID);
    if (candidate && platform::canonicallyEqual(*candidate, *uid)) return device;
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
