#include "platform/core_audio.h"

#import <AudioToolbox/AudioToolbox.h>
#import <CoreAudio/CoreAudio.h>
#import <CoreAudioTypes/CoreAudioTypes.h>
#include <algorithm>
#include <cstddef>
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

}  // namespace

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object,
                                        const AudioObjectPropertyAddress& address,
                                        std::uint32_t& size) {
  ::UInt32 bytes = 0;
  const auto status = sizeOf(object, toNative(address), bytes);
  if (status == noErr) size = bytes;
  return status;
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress& address,
                                    std::span<std::byte> data, std::uint32_t& size) {
  const auto native = toNative(address);
  auto bytes = static_cast<::UInt32>(data.size());
  const auto status =
      ::AudioObjectGetPropertyData(object, &native, 0, nullptr, &bytes, data.data());
  if (status == noErr) size = bytes;
  return status;
}

namespace helpers {

OSStatus streamChannels(AudioDeviceID device, const AudioObjectPropertyAddress& address,
                        std::vector<std::uint32_t>& channels) {
  const auto native = toNative(address);
  ::UInt32 size = 0;
  if (const auto status = sizeOf(device, native, size); status != noErr) return status;
  // In words, for the alignment of the records.
  std::vector<std::uint64_t> memory(size / sizeof(std::uint64_t) + 1);
  const auto status =
      ::AudioObjectGetPropertyData(device, &native, 0, nullptr, &size, memory.data());
  if (status != noErr) return status;
  const auto* const list = reinterpret_cast<const ::AudioBufferList*>(memory.data());
  // A list that is shorter than its count says ends where its bytes do. An empty one is all zeros.
  constexpr auto kHead = offsetof(::AudioBufferList, mBuffers);
  const auto room = size < kHead ? 0 : (size - kHead) / sizeof(::AudioBuffer);
  channels.clear();
  for (std::size_t i = 0; i < std::min<std::size_t>(list->mNumberBuffers, room); ++i) {
    channels.push_back(list->mBuffers[i].mNumberChannels);
  }
  return noErr;
}

OSStatus propertyText(AudioObjectID object, const AudioObjectPropertyAddress& address,
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

}  // namespace helpers

}  // namespace vlm::platform
