#include <libyuv/convert_argb.h>

#include <cstring>
#include <random>

#include "platform/portable/fallible.h"
#include "turns.h"

namespace vlm::bench {
namespace {

using platform::vImage_Buffer;
using Bytes = std::vector<std::uint8_t>;

// Together far beyond any cache, so that every turn reads and writes main memory.
constexpr std::size_t kWorkingSet = std::size_t{256} << 20;

struct Frame {
  Bytes nv12;
  Bytes bgra;
};

enum Content { kRandom, kCalm };

class Frames {
 public:
  Frames(std::size_t width, std::size_t height, Content content) : width_(width), height_(height) {
    const std::size_t pixels = width * height;
    frames_.resize(std::max<std::size_t>(kWorkingSet / (pixels * 11 / 2), 2));
    std::mt19937 random(1);
    for (auto& frame : frames_) {
      frame.nv12.assign(pixels * 3 / 2, 0x80);
      if (content == kRandom) std::ranges::generate(frame.nv12, std::ref(random));
      frame.bgra.assign(pixels * 4, 0);
    }
  }

  Frame& at(std::size_t turn) { return frames_[turn % frames_.size()]; }

  void convertByUs(std::size_t turn) {
    auto& frame = at(turn);
    constexpr std::array<std::uint8_t, 4> kBgra{3, 2, 1, 0};
    platform::portable::convertToARGB(
        {frame.nv12.data(), height_, width_, width_},
        {frame.nv12.data() + width_ * height_, height_ / 2, width_ / 2, width_},
        {frame.bgra.data(), height_, width_, 4 * width_}, conversion(), kBgra, 255);
    benchmark::ClobberMemory();
  }

  void convertByLibyuv(std::size_t turn) {
    auto& frame = at(turn);
    const int width = static_cast<int>(width_);
    libyuv::NV12ToARGB(frame.nv12.data(), width, frame.nv12.data() + width_ * height_, width,
                       frame.bgra.data(), 4 * width, width, static_cast<int>(height_));
    benchmark::ClobberMemory();
  }

  void copyImage(std::size_t turn) {
    std::memcpy(at(turn).bgra.data(), at(turn + 1).bgra.data(), at(turn).bgra.size());
    benchmark::ClobberMemory();
  }

 private:
  static const platform::vImage_YpCbCrToARGB& conversion() {
    static const auto made = [] {
      platform::vImage_YpCbCrToARGB out;
      platform::portable::generateConversion(platform::kvImage_YpCbCrToARGBMatrix_ITU_R_601_4,
                                             {16, 128, 255, 255, 255, 16, 255, 1}, out);
      return out;
    }();
    return made;
  }

  std::size_t width_;
  std::size_t height_;
  std::vector<Frame> frames_;
};

void exportBgra(benchmark::State& state, std::size_t width, std::size_t height, Content content) {
  Frames frames(width, height, content);
  Turns turns(state);
  turns.add("ours", [&](std::size_t turn) { frames.convertByUs(turn); });
  turns.add("libyuv", [&](std::size_t turn) { frames.convertByLibyuv(turn); });
  turns.add("memcpy", [&](std::size_t turn) { frames.copyImage(turn); });
  turns.run();
}

BENCHMARK_CAPTURE(exportBgra, 2160p_random, 3840, 2160, kRandom)->UseManualTime();
BENCHMARK_CAPTURE(exportBgra, 2160p_calm, 3840, 2160, kCalm)->UseManualTime();
BENCHMARK_CAPTURE(exportBgra, 1080p_random, 1920, 1080, kRandom)->UseManualTime();
BENCHMARK_CAPTURE(exportBgra, 1080p_calm, 1920, 1080, kCalm)->UseManualTime();
BENCHMARK_CAPTURE(exportBgra, 1366x768_random, 1366, 768, kRandom)->UseManualTime();
BENCHMARK_CAPTURE(exportBgra, 640x360_random, 640, 360, kRandom)->UseManualTime();

}  // namespace
}  // namespace vlm::bench
