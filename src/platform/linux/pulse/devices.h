#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/core_audio.h"
#include "platform/linux/pulse/connection.h"

namespace vlm::platform::pulse {

// A sink, or a source that is no monitor of a sink.
struct Device {
  AudioDeviceID number = 0;
  bool isInput = false;
  std::string name;         // stays the same from run to run
  std::string description;  // for a person
  pa_sample_spec format{};
  pa_channel_map channels{};
};
using Devices = std::vector<Device>;

// Asks the server for all devices. Null when there is no server.
std::shared_ptr<const Devices> refreshDevices();

// The devices of the last answer, or of a new one when the server was not asked before.
std::shared_ptr<const Devices> knownDevices();

// A device of the last answer; the server is asked again when it is not known.
std::optional<Device> deviceByNumber(AudioDeviceID number);

// The input that the server takes when none is named; nothing when there is none but monitors.
std::optional<Device> defaultInput(Connection& connection);

}  // namespace vlm::platform::pulse
