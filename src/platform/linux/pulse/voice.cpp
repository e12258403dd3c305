#include "platform/linux/pulse/voice.h"

#include <algorithm>

namespace vlm::platform::pulse {

void Voice::moveTo(std::size_t frame, std::uint64_t mixed) {
  next_ = place_ = frame;
  placeInMixture_ = end_ = mixed;
  isMixed_ = false;
}

std::size_t Voice::addTo(std::span<float> piece, std::uint64_t mixed) {
  const std::size_t frames = piece.size() / sound_.channels;
  std::size_t added = 0;
  while (added < frames && !isMixed_) {
    if (next_ >= sound_.frames() && !rewindForLoop()) {
      isMixed_ = true;
      break;
    }
    const auto count = std::min(frames - added, sound_.frames() - next_);
    const auto* from = sound_.samples.data() + next_ * sound_.channels;
    float* to = piece.data() + added * sound_.channels;
    for (std::size_t i = 0; i < count * sound_.channels; ++i) to[i] += from[i] * volume_;
    next_ += count;
    added += count;
  }
  if (added > 0) end_ = mixed + added;
  return added;
}

std::size_t Voice::frameAt(std::uint64_t heard) const {
  const auto since = std::min(heard, end_) - std::min({heard, end_, placeInMixture_});
  const auto frame = place_ + static_cast<std::size_t>(since);
  return frame < sound_.frames() ? frame : frame % sound_.frames();
}

// The next repetition follows without a gap; false when there is none.
bool Voice::rewindForLoop() {
  if (loops_ == 0 || sound_.frames() == 0) return false;
  if (loops_ > 0) --loops_;
  next_ = 0;
  return true;
}

}  // namespace vlm::platform::pulse
