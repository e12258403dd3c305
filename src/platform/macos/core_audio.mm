#include "platform/core_audio.h"

#import <AudioToolbox/AudioToolbox.h>
#import <CoreAudio/CoreAudio.h>
#import <CoreAudioTypes/CoreAudioTypes.h>
#include <algorithm>
#include <cstring>
#include <vector>

#include "platform/macos/bridge/owned.h"
#include "platform/macos/bridge/values.h"

namespace vlm::platform {

namespace {

static_assert(kAudioObjectSystemObject == ::kAudioObjectSystemObject);
static_assert(kAudioObjectPropertyScopeGlobal == ::kAudioObjectPropertyScopeGlobal);
static_assert(kAudioObjectPropertyScopeInput == ::kAudioObjectPropertyScopeInput);
static_assert(kAudioObjectPropertyScopeOutput == ::kAudioObjectPropertyScopeOutput);
static_assert(kAudioObjectPropertyElementMain == ::kAudioObjectPropertyElementMain);
static_assert(kAudioHardwarePropertyDevices == ::kAudioHardwarePropertyDevices);
static_assert(kAudioDevicePropertyStreamConfiguration ==
              ::kAudioDevicePropertyStreamConfiguration);
static_assert(kAudioObjectPropertyName == ::kAudioObjectPropertyName);
static_assert(kAudioDevicePropertyDeviceUID == ::kAudioDevicePropertyDeviceUID);
static_assert(kAudioOutputUnitProperty_CurrentDevice == ::kAudioOutputUnitProperty_CurrentDevice);
static_assert(kAudioUnitScope_Global == ::kAudioUnitScope_Global);

::AudioObjectPropertyAddress toNative(const AudioObjectPropertyAddress& address) {
  return {address.mSelector, address.mScope, address.mElement};
}

OSStatus sizeOf(AudioObjectID object, const ::AudioObjectPropertyAddress& address,
                ::UInt32& size) {
  return ::AudioObjectGetPropertyDataSize(object, &address, 0, nullptr, &size);
}

// The framework's list has a count in front of its records; the header's has records alone.
OSStatus streamConfiguration(AudioObjectID object, const ::AudioObjectPropertyAddress& address,
                             std::vector<AudioBuffer>& buffers) {
  ::UInt32 size = 0;
  if (const auto status = sizeOf(object, address, size); status != noErr) return status;
  // In words, for the alignment of the records.
  std::vector<std::uint64_t> memory(size / sizeof(std::uint64_t) + 1);
  const auto status =
      ::AudioObjectGetPropertyData(object, &address, 0, nullptr, &size, memory.data());
  if (status != noErr) return status;
  const auto* const list = reinterpret_cast<const ::AudioBufferList*>(memory.data());
  constexpr auto kHead = offsetof(::AudioBufferList, mBuffers);
  // A list that is shorter than its count says ends where its bytes do.
  const auto room = size < kHead ? 0 : (size - kHead) / sizeof(::AudioBuffer);
  const auto count = size < sizeof list->mNumberBuffers
                         ? 0
                         : std::min<std::size_t>(list->mNumberBuffers, room);
  for (std::size_t i = 0; i < count; ++i) {
    buffers.push_back({list->mBuffers[i].mNumberChannels, list->mBuffers[i].mDataByteSize, nullptr});
  }
  return noErr;
}

}  // namespace

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object,
                                        const AudioObjectPropertyAddress& address,
                                        std::uint32_t& size) {
  const auto native = toNative(address);
  ::UInt32 bytes = 0;
  const auto status = sizeOf(object, native, bytes);
  if (status != noErr) return status;
  if (address.mSelector != kAudioDevicePropertyStreamConfiguration) {
    size = bytes;
    return status;
  }
  std::vector<AudioBuffer> buffers;
  const auto listStatus = streamConfiguration(object, native, buffers);
  if (listStatus == noErr) size = static_cast<std::uint32_t>(buffers.size() * sizeof(AudioBuffer));
  return listStatus;
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress& address,
                                    std::span<std::byte> data, std::uint32_t& size) {
  const auto native = toNative(address);
  if (address.mSelector == kAudioDevicePropertyStreamConfiguration) {
    std::vector<AudioBuffer> buffers;
    const auto status = streamConfiguration(object, native, buffers);
    if (status != noErr) return status;
    const auto count = std::min(buffers.size(), data.size() / sizeof(AudioBuffer));
    size = static_cast<std::uint32_t>(count * sizeof(AudioBuffer));
    if (count > 0) std::memcpy(data.data(), buffers.data(), size);
    return noErr;
  }
  auto bytes = static_cast<::UInt32>(data.size());
  const auto status =
      ::AudioObjectGetPropertyData(object, &native, 0, nullptr, &bytes, data.data());
  if (status == noErr) size = bytes;
  return status;
}

OSStatus AudioObjectGetPropertyText(AudioObjectID object, const AudioObjectPropertyAddress& address,
                                    std::optional<std::string>& text) {
  const auto native = toNative(address);
  bridge::Owned<CFTypeRef> string;
  ::UInt32 size = sizeof(CFTypeRef);
  const auto status =
      ::AudioObjectGetPropertyData(object, &native, 0, nullptr, &size, string.out());
  if (status != noErr) return status;
  const auto value = bridge::fromCF(string.get());
  const auto* const words = value.as<std::string>();
  text = words == nullptr ? std::nullopt : std::optional(*words);
  return noErr;
}

}  // namespace vlm::platform
