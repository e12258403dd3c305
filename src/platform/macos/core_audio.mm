#include "platform/core_audio.h"

#import <AudioToolbox/AudioToolbox.h>
#import <CoreAudio/CoreAudio.h>

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

}  // namespace

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object,
                                        const AudioObjectPropertyAddress& address,
                                        std::uint32_t& size) {
  const auto native = toNative(address);
  ::UInt32 bytes = 0;
  const auto status = ::AudioObjectGetPropertyDataSize(object, &native, 0, nullptr, &bytes);
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

}  // namespace vlm::platform
