#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "platform/portable/fallible.h"

#ifdef VLM_TEST_HIGHWAY
#include <hwy/highway.h>
#endif

namespace vlm::test {
namespace {

using namespace platform;
using Bytes = std::vector<std::uint8_t>;

constexpr std::array<std::uint8_t, 4> kBgra{3, 2, 1, 0};
constexpr std::size_t kGuard = 64;

vImage_YpCbCrToARGB conversionFor(std::int32_t black) {
  const vImage_YpCbCrPixelRange range{.Yp_bias = black,
                                      .CbCr_bias = 128,
                                      .YpRangeMax = 255,
                                      .CbCrRangeMax = 255,
                                      .YpMax = 255,
                                      .YpMin = black,
                                      .CbCrMax = 255,
                                      .CbCrMin = 1};
  vImage_YpCbCrToARGB conversion;
  EXPECT_EQ(kvImageNoError, portable::generateConversion(kvImage_YpCbCrToARGBMatrix_ITU_R_601_4,
                                                         range, conversion));
  return conversion;
}

// A picture of noise whose planes are as long as what is described of them and not a byte longer,
// so that an address sanitizer sees every read beyond.
struct Picture {
  std::size_t width, height, stride, chromaWidth, chromaHeight, chromaStride;
  Bytes luma, chroma;

  Picture(std::size_t w, std::size_t h, std::size_t padding, unsigned seed)
      : width(w),
        height(h),
        stride(w + padding),
        chromaWidth(w / 2),
        chromaHeight(h / 2),
        chromaStride(2 * chromaWidth + padding),
        luma(stride * (h - 1) + w),
        chroma(chromaHeight == 0 ? 0 : chromaStride * (chromaHeight - 1) + 2 * chromaWidth) {
    std::mt19937 random(seed);
    for (auto* plane : {&luma, &chroma}) {
      for (auto& byte : *plane) byte = static_cast<std::uint8_t>(random());
    }
  }

  // The pixels, `outPadding` bytes after each row, behind kGuard + `shift` untouched ones.
  Bytes convert(const vImage_YpCbCrToARGB& conversion, std::size_t outPadding = 0,
                std::size_t shift = 0, std::array<std::uint8_t, 4> map = kBgra) {
    const std::size_t row = 4 * width + outPadding;
    Bytes out(kGuard + shift + row * height + kGuard, 0xA5);
    EXPECT_EQ(kvImageNoError,
              portable::convertToARGB({luma.data(), height, width, stride},
                                      {chroma.data(), chromaHeight, chromaWidth, chromaStride},
                                      {out.data() + kGuard + shift, height, width, row}, conversion,
                                      map, 255));
    return out;
  }
};

// One pixel as the definition of the conversion has it, in real numbers.
std::array<double, 3> exactBgr(int y, int cb, int cr, int black) {
  const double yp = 255.0 * (std::max(y, black) - black) / (255 - black);
  const double u = 255.0 * (std::max(cb, 1) - 128) / 254;
  const double v = 255.0 * (std::max(cr, 1) - 128) / 254;
  return {yp + 1.772 * u, yp - 0.3441363 * u - 0.7141363 * v, yp + 1.402 * v};
}

bool within1(double exact, std::uint8_t result) {
  return std::abs(std::clamp(exact, 0.0, 255.0) - result) <= 1.0;
}

TEST(Conversion, IsWithinOneOfTheExactValueForEveryInput) {
  // Two rows for each Cr, one picture for each Cb: every luma of both halves meets every pair.
  constexpr std::size_t kWidth = 128;
  Picture picture(kWidth, 512, 0, 0);
  for (std::size_t i = 0; i < picture.luma.size(); ++i) {
    picture.luma[i] = static_cast<std::uint8_t>(i % 256);
  }
  for (const int black : {16, 0}) {
    const auto conversion = conversionFor(black);
    std::size_t wrong = 0;
    for (int cb = 0; cb < 256; ++cb) {
      for (std::size_t i = 0; i < picture.chroma.size(); i += 2) {
        picture.chroma[i] = static_cast<std::uint8_t>(cb);
        picture.chroma[i + 1] = static_cast<std::uint8_t>(i / kWidth);
      }
      const Bytes out = picture.convert(conversion);
      const auto* pixel = out.data() + kGuard;
      for (std::size_t i = 0; i < picture.luma.size(); ++i, pixel += 4) {
        const auto exact =
            exactBgr(static_cast<int>(i % 256), cb, static_cast<int>(i / 256), black);
        wrong += !(within1(exact[0], pixel[0]) && within1(exact[1], pixel[1]) &&
                   within1(exact[2], pixel[2]) && pixel[3] == 255);
      }
    }
    EXPECT_EQ(0u, wrong) << "of 2^24 inputs with black at " << black;
  }
}

// What a size, padding and address must not change: each pixel depends on its own luma and on the
// pair nearest to it, and nothing else is written.
void expectEveryPixelRight(Picture& picture, std::size_t outPadding, std::size_t shift) {
  const Bytes out = picture.convert(conversionFor(16), outPadding, shift);
  Bytes expected(out.size(), 0xA5);
  for (std::size_t y = 0; y < picture.height; ++y) {
    for (std::size_t x = 0; x < picture.width; ++x) {
      std::array<std::uint8_t, 2> pair{128, 128};
      if (picture.chromaWidth > 0 && picture.chromaHeight > 0) {
        const auto* from = picture.chroma.data() +
                           std::min(y / 2, picture.chromaHeight - 1) * picture.chromaStride +
                           2 * std::min(x / 2, picture.chromaWidth - 1);
        pair = {from[0], from[1]};
      }
      const auto exact = exactBgr(picture.luma[y * picture.stride + x], pair[0], pair[1], 16);
      const std::size_t at = kGuard + shift + y * (4 * picture.width + outPadding) + 4 * x;
      for (std::size_t i = 0; i < 3; ++i) {
        ASSERT_TRUE(within1(exact[i], out[at + i])) << "at " << x << ", " << y;
        expected[at + i] = out[at + i];
      }
      expected[at + 3] = 255;
    }
  }
  EXPECT_EQ(expected, out) << "alpha or bytes outside of the picture";
}

// Runs `check` once with each instruction set that this processor has and the conversion was
// compiled for, and once with none of them. Without vectors in the build only the latter.
void forEachInstructionSet(const std::function<void(const std::string& name)>& check) {
#ifdef VLM_TEST_HIGHWAY
  auto targets = hwy::SupportedAndGeneratedTargets();
  targets.push_back(HWY_STATIC_TARGET);
  for (const auto target : targets) {
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    check(hwy::TargetName(target));
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().DeInit();
#else
  check("plain");
#endif
}

TEST(Conversion, HoldsForEverySizePaddingAndInstructionSet) {
  forEachInstructionSet([](const std::string& name) {
    for (const std::size_t height : {1, 2, 3, 5}) {
      for (std::size_t width = 1; width <= 140; width += width < 70 ? 1 : 23) {
        SCOPED_TRACE(name + " " + std::to_string(width) + " x " + std::to_string(height));
        Picture picture(width, height, width % 3 * 17, 1);
        expectEveryPixelRight(picture, width % 4 * 5, width % 5);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  });
}

TEST(Conversion, GivesTheSameBytesWithEveryInstructionSetAtEveryAddress) {
  // Large enough for streaming stores where rows allow them; the odd size for those that don't.
  for (const std::size_t width : {1040, 1043}) {
    Picture picture(width, 1100, 3, 2);
    const auto conversion = conversionFor(0);
    // In another order no vectors serve: these bytes are the loop's.
    Bytes expected = picture.convert(conversion, 0, 0, {0, 1, 2, 3});
    for (std::size_t i = 0; i < expected.size(); i += 4) {
      std::reverse(expected.data() + i, expected.data() + i + 4);
    }
    forEachInstructionSet([&](const std::string& name) {
      for (const std::size_t shift : {0, 1, 4, 8, 16, 60}) {
        const Bytes out = picture.convert(conversion, 0, shift);
        EXPECT_TRUE(
            std::equal(expected.begin() + kGuard, expected.end(), out.begin() + kGuard + shift))
            << name << ", " << width << " wide, shifted by " << shift;
      }
    });
  }
}

}  // namespace
}  // namespace vlm::test
