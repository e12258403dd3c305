#include "bench/quality/contents.h"

#include <utility>

#include "bench/quality/painting.h"
#include "bench/quality/random.h"

namespace vlm::bench {
namespace {

constexpr int kSlideFrames = 3 * Content::kFramesPerSecond;

// Where a point is that moves to and fro between 0 and `range`.
std::size_t toAndFro(int frame, std::size_t step, std::size_t range) {
  const auto way = static_cast<std::size_t>(frame) * step % (2 * range);
  return way < range ? way : 2 * range - way;
}

class Still final : public Content {
 public:
  explicit Still(void (*paint)(Canvas&)) : paint_(paint) {}
  bool draw(int frame, Canvas& canvas) override {
    if (frame == 0) paint_(canvas);
    return frame == 0;
  }
  bool standsStill() const override { return true; }

 private:
  void (*paint_)(Canvas&);
};

class Slides final : public Content {
 public:
  bool draw(int frame, Canvas& canvas) override {
    const bool next = beginsStill(frame);
    if (next) paintSlide(canvas, frame / kSlideFrames);
    return next;
  }
  bool beginsStill(int frame) const override { return frame % kSlideFrames == 0; }
  bool standsStill() const override { return true; }
};

// Ten lines a second.
class Terminal final : public Content {
 public:
  bool draw(int frame, Canvas& canvas) override {
    if (frame % 3 != 0) return false;
    paintTerminal(canvas, static_cast<std::size_t>(frame / 3));
    return true;
  }
};

// A small window over a still page: what it shows and where it is depend on the frame.
class OverPage final : public Content {
 public:
  using Window = void (*)(int frame, const Canvas& page, Canvas& canvas);
  OverPage(void (*page)(Canvas&), Window window) : paint_(page), window_(window) {}

  bool draw(int frame, Canvas& canvas) override {
    if (frame == 0) {
      page_ = Canvas(canvas.width, canvas.height);
      paint_(page_);
    }
    canvas.pixels = page_.pixels;
    window_(frame, page_, canvas);
    return true;
  }

 private:
  void (*paint_)(Canvas&);
  Window window_;
  Canvas page_;
};

void movingWindow(int frame, const Canvas& page, Canvas& canvas) {
  Canvas window(page.width / 4, page.height / 4);
  paintTerminal(window, 40);
  put(window, canvas, toAndFro(frame, 5, page.width - window.width),
      toAndFro(frame, 3, page.height - window.height));
}

void filmWindow(int frame, const Canvas& page, Canvas& canvas) {
  Canvas window(page.width / 3, page.height / 3);
  paintFilm(window, frame);
  put(window, canvas, page.width / 2, page.height / 3);
}

class Moving final : public Content {
 public:
  explicit Moving(void (*paint)(Canvas&, int)) : paint_(paint) {}
  bool draw(int frame, Canvas& canvas) override {
    paint_(canvas, frame);
    return true;
  }

 private:
  void (*paint_)(Canvas&, int);
};

void paintNoise(Canvas& canvas, int frame) {
  Random random(static_cast<std::uint32_t>(frame) + 1);
  for (auto& pixel : canvas.pixels) pixel = random.next() & 0xFFFFFF;
}

template <typename Kind, typename... Arguments>
ContentKind kind(std::string name, Arguments... arguments) {
  return {std::move(name), [=] { return std::make_unique<Kind>(arguments...); }};
}

}  // namespace

const std::vector<ContentKind>& contentKinds() {
  static const std::vector<ContentKind> kinds{
      kind<Still>("code", paintCode),
      kind<Still>("document", paintDocument),
      kind<Slides>("slides"),
      kind<Terminal>("terminal"),
      kind<OverPage>("window", paintDocument, movingWindow),
      kind<Moving>("film", paintFilm),
      kind<OverPage>("film-window", paintCode, filmWindow),
      kind<Moving>("noise", paintNoise),
  };
  return kinds;
}

}  // namespace vlm::bench
