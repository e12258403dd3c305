#pragma once

#include <cstdint>
#include <span>

#include "platform/linux/pulse/sound_file.h"

namespace vlm::platform::pulse {

// One sound on its way through a mixture, from a place in it to its end or to the end of its
// repetitions. The mixture's frames are counted from its beginning.
class Voice {
 public:
  explicit Voice(const Sound& sound) : sound_(sound) {}

  const Sound& sound() const { return sound_; }
  void setVolume(float volume) { volume_ = volume; }
  void setLoops(std::int64_t loops) { loops_ = loops; }

  // What is added next comes from this frame of the sound.
  void moveTo(std::size_t frame, std::uint64_t mixed);
  // Adds what comes next to a piece of the mixture; how many frames there were to add.
  std::size_t addTo(std::span<float> piece, std::uint64_t mixed);
  // All has been added, the last frame before this one of the mixture.
  bool isMixed() const { return isMixed_; }
  std::uint64_t end() const { return end_; }
  // The frame of the sound that is heard with this one of the mixture.
  std::size_t frameAt(std::uint64_t heard) const;

 private:
  bool rewindForLoop();

  const Sound& sound_;
  float volume_ = 1;
  std::int64_t loops_ = 0;  // that have not been begun
  std::size_t next_ = 0;    // the frame to be added next
  // A place in the sound, and where in the mixture it is.
  std::size_t place_ = 0;
  std::uint64_t placeInMixture_ = 0;
  std::uint64_t end_ = 0;
  bool isMixed_ = false;
};

}  // namespace vlm::platform::pulse
