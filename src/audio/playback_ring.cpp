#include "audio/playback_ring.h"

#include <algorithm>

namespace vlm::audio {
namespace {

using platform::AudioBufferList;

float* samplesOf(const platform::AudioBuffer& buffer) {
  return static_cast<float*>(buffer.mData);
}

float* samplesOf(AudioBufferList buffers, std::size_t channel) {
  return channel < buffers.size() ? samplesOf(buffers[channel]) : nullptr;
}

void takeApart(const float* from, std::size_t sampleFrames, float* left, float* right) {
  for (std::size_t i = 0; i < sampleFrames; ++i) {
    left[i] = from[2 * i];
    right[i] = from[2 * i + 1];
  }
}

// One channel of sample frames that lie in one piece.
void pick(const float* from, std::size_t sampleFrames, std::size_t channels, float* to) {
  for (std::size_t i = 0; i < sampleFrames; ++i) to[i] = from[channels * i];
}

// Sample frames that lie in one piece, from interleaved samples to one buffer a channel, from
// `at` on.
void deinterleave(const float* from, std::size_t sampleFrames, std::size_t channels,
                  AudioBufferList buffers, std::size_t at) {
  float* first = samplesOf(buffers, 0);
  float* second = channels == 2 ? samplesOf(buffers, 1) : nullptr;
  if (first != nullptr && second != nullptr) {
    takeApart(from, sampleFrames, first + at, second + at);
  } else if (first != nullptr) {
    pick(from, sampleFrames, channels, first + at);
  } else if (second != nullptr) {
    pick(from + 1, sampleFrames, channels, second + at);
  }
}

}  // namespace

PlaybackRing::PlaybackRing(std::size_t channels)
    : channels_(channels), ring_(channels * kFrames, 0.0F) {}

std::size_t PlaybackRing::available() const {
  return writeIdx_ >= readIdx_ ? writeIdx_ - readIdx_ : writeIdx_ + ring_.size() - readIdx_;
}

void PlaybackRing::write(std::span<const float> samples) {
  const platform::MutexLock lock(ringLock_);
  const std::size_t free = ring_.size() - 1 - available();
  samples = samples.first(std::min(samples.size(), free));
  const auto first = samples.first(std::min(samples.size(), ring_.size() - writeIdx_));
  const auto second = samples.subspan(first.size());
  std::ranges::copy(first, ring_.begin() + static_cast<std::ptrdiff_t>(writeIdx_));
  std::ranges::copy(second, ring_.begin());
  writeIdx_ += samples.size();
  if (writeIdx_ >= ring_.size()) writeIdx_ -= ring_.size();
}

void PlaybackRing::render(std::uint32_t sampleFrames, AudioBufferList buffers) {
  const std::size_t played = take(sampleFrames, buffers);
  for (const auto& buffer : buffers.first(std::min(channels_, buffers.size()))) {
    float* samples = samplesOf(buffer);
    if (samples != nullptr) std::fill(samples + played, samples + sampleFrames, 0.0F);
  }
}

// The sample frames copied: none while the cushion builds up.
std::size_t PlaybackRing::take(std::size_t sampleFrames, AudioBufferList buffers) {
  const platform::MutexLock lock(ringLock_);
  const std::size_t there = available() / channels_;
  if (!primed_ && there < kPrimeFrames) return 0;
  const std::size_t count = std::min(there, sampleFrames);
  copyOut(count, buffers);
  primed_ = there >= sampleFrames;
  return count;
}

void PlaybackRing::copyOut(std::size_t sampleFrames, AudioBufferList buffers) {
  // The ring holds a whole number of sample frames, and these start at their multiples: none is
  // split.
  std::size_t done = 0;
  while (done < sampleFrames) {
    const std::size_t piece = std::min(sampleFrames - done, (ring_.size() - readIdx_) / channels_);
    deinterleave(ring_.data() + readIdx_, piece, channels_, buffers, done);
    readIdx_ += piece * channels_;
    if (readIdx_ == ring_.size()) readIdx_ = 0;
    done += piece;
  }
}

}  // namespace vlm::audio
