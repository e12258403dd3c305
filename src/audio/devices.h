#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/core_audio.h"

// The machine's audio devices. Nothing is kept between calls. Any thread.
namespace vlm::audio {

enum class Direction { output, input };

// Every device, in the platform's order; empty when they can't be read.
std::vector<platform::AudioDeviceID> audioDeviceIDs();

// Channels of the device in one direction; 0 when unknown.
std::int64_t channelCount(platform::AudioDeviceID device, Direction direction);

// The first device with channels in the direction and this identifier; nothing for an identifier
// that is absent, empty or unknown: then the system's default device is meant.
std::optional<platform::AudioDeviceID> findDevice(const std::optional<std::string>& uid,
                                                  Direction direction);

// The devices of one direction as JSON: an array of objects with "name" and "uid". Nothing when it
// can't be made.
std::optional<std::string> devicesJson(Direction direction);

// Sets the device that an engine's unit works with, when there are both. What the platform says to
// it is not looked at: then the default device stays.
void chooseDevice(platform::AudioUnit* unit, std::optional<platform::AudioDeviceID> device);

}  // namespace vlm::audio
