#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace vlm::platform::pulse {

// A sound in memory, in interleaved frames: every place in it can be reached exactly and at once.
struct Sound {
  std::uint32_t sampleRate = 0;
  std::uint32_t channels = 0;
  std::vector<float> samples;

  std::size_t frames() const { return samples.size() / channels; }
};

// Decodes a whole file. Nothing for one that can't be opened, holds no sound that can be decoded,
// or would take more than a gibibyte of memory.
std::optional<Sound> readSound(std::string_view path);

}  // namespace vlm::platform::pulse
