#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "recording.h"

namespace vlm::tools {

// A WAV file of 32-bit floats.
class WavFile {
 public:
  WavFile(std::string path, std::uint16_t channels, std::uint32_t sampleRate);

  // Interleaved.
  void write(std::span<const float> samples);
  // Nothing is written afterwards.
  void finish();

 private:
  void writeHeader();

  Recording file_;
  const std::uint16_t channels_;
  const std::uint32_t sampleRate_;
  std::uint32_t dataBytes_ = 0;
};

}  // namespace vlm::tools
