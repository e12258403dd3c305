#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/avf_audio.h"

namespace vlm::platform::media {

// Where a channel belongs, as far as it matters when all are folded into one.
enum class ChannelPlace : std::uint8_t { nowhere, centre, front, other };
using ChannelPlaces = std::vector<ChannelPlace>;

// What each channel counts for in the one that all are folded into; in all 1, so that full scale
// stays full scale. None counts for nothing: on a device with several inputs a microphone may be at
// any of them, also at one that carries the name of a subwoofer.
inline std::vector<double> weightsInMono(std::span<const ChannelPlace> places) {
  std::vector<double> weights;
  double sum = 0;
  for (const auto place : places) {
    // The usual ones, each half the power of the one before.
    constexpr double kWeights[] = {1, 1, 0.7071, 0.5};
    weights.push_back(kWeights[static_cast<std::size_t>(place)]);
    sum += weights.back();
  }
  for (double& weight : weights) weight /= sum;
  return weights;
}

// A buffer that knows where its channels belong, which its format does not say.
class PlacedBuffer final : public AVAudioPCMBuffer {
 public:
  PlacedBuffer(std::shared_ptr<AVAudioPCMBuffer> buffer, const ChannelPlaces& places)
      : buffer_(std::move(buffer)), places_(places) {}

  const ChannelPlaces& places() const { return places_; }

  const AVAudioFormat& format() const override { return buffer_->format(); }
  std::uint32_t frameCapacity() const override { return buffer_->frameCapacity(); }
  std::uint32_t frameLength() const override { return buffer_->frameLength(); }
  void setFrameLength(std::uint32_t frames) override { buffer_->setFrameLength(frames); }
  float* floatChannelData(std::uint32_t channel) override {
    return buffer_->floatChannelData(channel);
  }

 private:
  const std::shared_ptr<AVAudioPCMBuffer> buffer_;
  const ChannelPlaces places_;
};

}  // namespace vlm::platform::media
