#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/core_audio.h"
#include "platform/mutex.h"

namespace vlm::audio {

// Interleaved samples between the host, which writes when it has some, and the platform's render
// thread, which takes what it needs. Half a second long. Rendering begins once a cushion has built
// up and begins anew after it ran dry; a full ring drops the newest samples.
class PlaybackRing {
 public:
  static constexpr std::size_t kFrames = 24000;
  static constexpr std::size_t kPrimeFrames = 2880;  // 60 ms at 48 kHz

  explicit PlaybackRing(std::size_t channels);

  std::size_t channels() const { return channels_; }

  // Takes as many samples as fit; the rest is lost. Any thread.
  void write(std::span<const float> samples) VLM_EXCLUDES(ringLock_);

  // Fills that many sample frames, one buffer a channel; what there is not is silence. Buffers
  // without memory are left out. The render thread: nothing is allocated.
  void render(std::uint32_t sampleFrames, platform::AudioBufferList buffers)
      VLM_EXCLUDES(ringLock_);

 private:
  std::size_t take(std::size_t sampleFrames, platform::AudioBufferList buffers)
      VLM_EXCLUDES(ringLock_);
  std::size_t available() const VLM_REQUIRES(ringLock_);
  void copyOut(std::size_t sampleFrames, platform::AudioBufferList buffers) VLM_REQUIRES(ringLock_);

  const std::size_t channels_;
  platform::Mutex ringLock_;
  // One place stays empty, so that full and empty differ.
  std::vector<float> ring_ VLM_GUARDED_BY(ringLock_);
  std::size_t readIdx_ VLM_GUARDED_BY(ringLock_) = 0;
  std::size_t writeIdx_ VLM_GUARDED_BY(ringLock_) = 0;
  bool primed_ VLM_GUARDED_BY(ringLock_) = false;
};

}  // namespace vlm::audio
