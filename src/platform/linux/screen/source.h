#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/linux/x11/rectangle.h"
#include "platform/portable/plane.h"

namespace vlm::platform::screen {

using Clock = std::chrono::steady_clock;
using x11::Rectangle;
using x11::Size;

// Pixels as the services keep them: blue, green, red and a byte that means nothing, but in a
// translucent window how much it hides of what is behind; its colours are weighed by that already.
inline constexpr std::size_t kBytesPerPixel = 4;
// The depths of windows with such pixels.
inline constexpr int kOpaqueDepth = 24;
inline constexpr int kTranslucentDepth = 32;

// What a stream shows, in its own pixels: it reports what changed and lends the pixels. Everything
// happens on the stream's thread.
class Source {
 public:
  virtual ~Source() = default;

  // True when takeChanges() would find something now.
  virtual bool hasChanges() const = 0;
  // Asks the service what changed and waits for the answers. Everything that came along with them
  // is dispatched before takeChanges() is called, so that it knows what the answers are worth.
  virtual void askChanges() = 0;
  // Where the content changed before askChanges(); everything after a change of size.
  virtual std::vector<Rectangle> takeChanges() = 0;
  // The content's size as of the last takeChanges(); empty while there is nothing to be seen.
  virtual Size size() const = 0;

  // Lends the pixels of each area, which lies within the content, for the time of a call. Areas
  // that the service refuses are left out: word of the reason is then on its way.
  using Receiver = std::function<void(std::size_t index, PlaneView pixels)>;
  virtual void read(std::span<const Rectangle> areas, const Receiver& receive) = 0;

  // True when what was read may not belong to the content: what came meanwhile puts its place in
  // doubt. The picture made of it must not be shown.
  virtual bool isDoubtful() const { return false; }

  // When hasChanges() can become true without word from the service.
  virtual std::optional<Clock::time_point> wakeAt() const { return std::nullopt; }
  // Why nothing can come any more.
  virtual std::optional<std::string> ended() const { return std::nullopt; }
};

}  // namespace vlm::platform::screen
