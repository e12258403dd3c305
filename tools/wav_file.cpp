#include "wav_file.h"

#include <array>
#include <cstring>
#include <limits>
#include <utility>

#include "failure.h"

namespace vlm::tools {
namespace {

constexpr std::uint16_t kFloats = 3;

// The beginning of the file, as it lies in it on machines whose numbers begin with the low byte.
struct Header {
  std::array<char, 4> riff{'R', 'I', 'F', 'F'};
  std::uint32_t riffBytes = 0;
  std::array<char, 4> wave{'W', 'A', 'V', 'E'};
  std::array<char, 4> formatName{'f', 'm', 't', ' '};
  std::uint32_t formatBytes = 16;
  std::uint16_t format = kFloats;
  std::uint16_t channels = 0;
  std::uint32_t sampleRate = 0;
  std::uint32_t bytesPerSecond = 0;
  std::uint16_t frameBytes = 0;
  std::uint16_t sampleBits = 32;
  std::array<char, 4> dataName{'d', 'a', 't', 'a'};
  std::uint32_t dataBytes = 0;
};
static_assert(sizeof(Header) == 44);

}  // namespace

WavFile::WavFile(std::string path, std::uint16_t channels, std::uint32_t sampleRate)
    : file_(std::move(path)), channels_(channels), sampleRate_(sampleRate) {}

void WavFile::write(std::span<const float> samples) {
  const auto bytes = std::as_bytes(samples);
  if (bytes.empty()) return;
  // The format has no sizes above 4 GiB.
  if (bytes.size() > std::numeric_limits<std::uint32_t>::max() - sizeof(Header) - dataBytes_) {
    throw Failure("the WAV file is full");
  }
  if (dataBytes_ == 0) writeHeader();
  file_.write({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  dataBytes_ += static_cast<std::uint32_t>(bytes.size());
}

void WavFile::finish() {
  file_.rewind();
  writeHeader();
  file_.finish();
}

void WavFile::writeHeader() {
  Header header;
  header.channels = channels_;
  header.sampleRate = sampleRate_;
  header.frameBytes = static_cast<std::uint16_t>(channels_ * sizeof(float));
  header.bytesPerSecond = sampleRate_ * header.frameBytes;
  header.dataBytes = dataBytes_;
  header.riffBytes = static_cast<std::uint32_t>(sizeof header - 8 + dataBytes_);
  file_.write({reinterpret_cast<const std::uint8_t*>(&header), sizeof header});
}

}  // namespace vlm::tools
