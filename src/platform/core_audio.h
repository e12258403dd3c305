#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/foundation.h"

namespace vlm::platform {

// One buffer of audio.
struct AudioBuffer {
  std::uint32_t mNumberChannels = 0;
  std::uint32_t mDataByteSize = 0;
  void* mData = nullptr;
};
using AudioBufferList = std::span<const AudioBuffer>;

using AudioObjectID = std::uint32_t;
using AudioDeviceID = AudioObjectID;
inline constexpr AudioObjectID kAudioObjectSystemObject = 1;

struct AudioObjectPropertyAddress {
  std::uint32_t mSelector = 0;
  std::uint32_t mScope = 0;
  std::uint32_t mElement = 0;
  friend bool operator==(const AudioObjectPropertyAddress&,
                         const AudioObjectPropertyAddress&) = default;
};

inline constexpr std::uint32_t kAudioObjectPropertyScopeGlobal = 0x676C6F62;  // 'glob'
inline constexpr std::uint32_t kAudioObjectPropertyScopeInput = 0x696E7074;   // 'inpt'
inline constexpr std::uint32_t kAudioObjectPropertyScopeOutput = 0x6F757470;  // 'outp'
inline constexpr std::uint32_t kAudioObjectPropertyElementMain = 0;

// Array of device numbers, of the system object.
inline constexpr std::uint32_t kAudioHardwarePropertyDevices = 0x64657623;  // 'dev#'
// The channels of a device in one direction: see helpers::streamChannels().
inline constexpr std::uint32_t kAudioDevicePropertyStreamConfiguration = 0x736C6179;  // 'slay'
// Texts: the display name, and the identifier that stays the same from run to run. See
// helpers::propertyText().
inline constexpr std::uint32_t kAudioObjectPropertyName = 0x6C6E616D;       // 'lnam'
inline constexpr std::uint32_t kAudioDevicePropertyDeviceUID = 0x75696420;  // 'uid '

// Properties of audio objects that are plain numbers. Any thread. What is written is written only
// on success.
OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object,
                                        const AudioObjectPropertyAddress& address,
                                        std::uint32_t& size);
// Fills at most `data` and sets `size` to the bytes written. Devices are 32-bit numbers.
OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress& address,
                                    std::span<std::byte> data, std::uint32_t& size);

// Ours, on top of the two operations above, for properties of other types.
namespace helpers {

// kAudioDevicePropertyStreamConfiguration: mNumberChannels of each buffer of the AudioBufferList.
OSStatus streamChannels(AudioDeviceID device, const AudioObjectPropertyAddress& address,
                        std::vector<std::uint32_t>& channels);
// A property that is text; nothing where the object has none.
OSStatus propertyText(AudioObjectID object, const AudioObjectPropertyAddress& address,
                      std::optional<std::string>& text);

}  // namespace helpers

// The device that an input or output unit works with; 32-bit device number, global scope.
inline constexpr std::uint32_t kAudioOutputUnitProperty_CurrentDevice = 2000;
inline constexpr std::uint32_t kAudioUnitScope_Global = 0;

class AudioUnit {
 public:
  virtual ~AudioUnit() = default;
  virtual OSStatus setProperty(std::uint32_t property, std::uint32_t scope, std::uint32_t element,
                               std::uint32_t value) = 0;
};

}  // namespace vlm::platform
