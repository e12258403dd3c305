#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vlm::bench {

// A canvas of 32 bits a pixel, 0xRRGGBB.
struct Canvas {
  std::size_t width = 0;
  std::size_t height = 0;
  std::vector<std::uint32_t> pixels;

  Canvas() = default;
  Canvas(std::size_t wide, std::size_t high) : width(wide), height(high), pixels(wide * high) {}
};

// Something to share: pictures at 30 a second, the same in every run.
class Content {
 public:
  static constexpr int kFramesPerSecond = 30;

  virtual ~Content() = default;
  // Draws picture `frame`; false when it is the one before. Called for 0, 1, 2 and so on.
  virtual bool draw(int frame, Canvas& canvas) = 0;
  // Whether a new still picture begins with this frame.
  virtual bool beginsStill(int frame) const { return frame == 0; }
  virtual bool standsStill() const { return false; }
};

struct ContentKind {
  std::string name;
  std::function<std::unique_ptr<Content>()> make;
};

// code, document, slides, terminal, window, film, film-window, noise.
const std::vector<ContentKind>& contentKinds();

inline constexpr int kFps = Content::kFramesPerSecond;
inline constexpr std::int64_t kSecond = 1'000'000'000;  // in nanoseconds

}  // namespace vlm::bench
