#include <gtest/gtest.h>

#include <algorithm>

#include "stage.h"

namespace vlm::test {
namespace {

using platform::kCVPixelFormatType_32BGRA;
using platform::kCVPixelFormatType_420YpCbCr8BiPlanarFullRange;
using platform::kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange;
using platform::OSType;
using platform::PixelPlane;

// Counts the locks held and can refuse one.
class LockedBuffer final : public CVPixelBuffer {
 public:
  using CVPixelBuffer::CVPixelBuffer;
  platform::CVReturn lock(platform::CVPixelBufferLockFlags flags) override {
    EXPECT_EQ(flags, platform::kCVPixelBufferLock_ReadOnly);
    if (refuses) return -6660;
    ++locks;
    return 0;
  }
  platform::CVReturn unlock(platform::CVPixelBufferLockFlags flags) override {
    EXPECT_EQ(flags, platform::kCVPixelBufferLock_ReadOnly);
    --locks;
    return 0;
  }
  bool refuses = false;
  int locks = 0;
};

// A buffer of 5 x 3 pixels in rows of 32 bytes.
struct Image {
  std::vector<uint8_t> luma = std::vector<uint8_t>(96, 16);
  std::vector<uint8_t> chroma = std::vector<uint8_t>(64, 128);
  Ref<LockedBuffer> buffer;
  explicit Image(OSType format, bool withLuma = true, bool withChroma = true) {
    const bool biPlanar = format != kCVPixelFormatType_32BGRA;
    buffer = platform::makeRef<LockedBuffer>(
        5, 3, format,
        std::array{PixelPlane{{withLuma ? luma.data() : nullptr, 32}, 5, 3},
                   PixelPlane{{biPlanar && withChroma ? chroma.data() : nullptr, 32}, 3, 2}});
  }
};

constexpr int32_t kSize = 5 * 3 * 4;

TEST(PixelBuffer, LocksBiPlanarBuffersForTheHost) {
  Machine machine;
  Image image(kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange);
  uint8_t* luma = nullptr;
  uint8_t* chroma = nullptr;
  int32_t lumaStride = 0;
  int32_t chromaStride = 0;
  void* handle = image.buffer.get();
  EXPECT_TRUE(vlm_pixbuf_lock(handle, &luma, &lumaStride, &chroma, &chromaStride));
  EXPECT_TRUE(luma == image.luma.data() && chroma == image.chroma.data());
  EXPECT_TRUE(lumaStride == 32 && chromaStride == 32);
  EXPECT_TRUE(vlm_pixbuf_lock(handle, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(image.buffer->locks, 2);
  vlm_pixbuf_unlock(handle);
  vlm_pixbuf_unlock(handle);
  EXPECT_EQ(image.buffer->locks, 0);

  image.buffer->refuses = true;
  Image packed(kCVPixelFormatType_32BGRA);
  for (void* refused : {handle, static_cast<void*>(packed.buffer.get())}) {
    luma = chroma = nullptr;
    EXPECT_FALSE(vlm_pixbuf_lock(refused, &luma, &lumaStride, &chroma, &chromaStride));
    EXPECT_TRUE(luma == nullptr && chroma == nullptr);
  }
  EXPECT_EQ(packed.buffer->locks, 0);

  vlm_pixbuf_retain(handle);
  EXPECT_FALSE(image.buffer->uniquelyReferenced());
  vlm_pixbuf_release(handle);
  EXPECT_TRUE(image.buffer->uniquelyReferenced());
}

TEST(PixelBuffer, ExportIsSetUpByFormat) {
  const struct {
    OSType format;
    const char* range;
  } cases[] = {
      {kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange, "[16, 128, 255, 255, 255, 16, 255, 1]"},
      {kCVPixelFormatType_420YpCbCr8BiPlanarFullRange, "[0, 128, 255, 255, 255, 0, 255, 1]"}};
  for (const auto& each : cases) {
    Machine machine;
    Image image(each.format);
    std::fill(image.chroma.begin(), image.chroma.end(), uint8_t{128});
    image.chroma[1] = 255;  // red in the first block
    std::vector<uint8_t> out(kSize + 1, 0xAB);
    EXPECT_TRUE(vlm_pixbuf_to_bgra(image.buffer.get(), out.data(), kSize));
    EXPECT_EQ(machine.journal.take(),
              (Lines{"vImageConvert_YpCbCrToARGB_GenerateConversion([1.0, 1.402, -0.7141363, "
                     "-0.3441363, 1.772], " +
                         std::string(each.range) + ")",
                     "vImageConvert_420Yp8_CbCr8ToARGB8888([5, 3, 32], [2, 1, 32], [5, 3, 20], "
                     "[3, 2, 1, 0], 255)"}));
    EXPECT_GT(out[2], 150);  // blue, green, red, alpha
    EXPECT_LT(out[0], 20);
    EXPECT_EQ(out[3], 255);
    EXPECT_EQ(out[kSize], 0xAB);
    EXPECT_EQ(image.buffer->locks, 0);
  }
}

TEST(PixelBuffer, PackedRowsAreCopiedWithoutTheirPadding) {
  Machine machine;
  Image image(kCVPixelFormatType_32BGRA);
  for (std::size_t i = 0; i < image.luma.size(); ++i) image.luma[i] = static_cast<uint8_t>(i);
  std::vector<uint8_t> out(kSize);
  EXPECT_TRUE(vlm_pixbuf_to_bgra(image.buffer.get(), out.data(), kSize));
  for (std::size_t row = 0; row < 3; ++row) {
    EXPECT_TRUE(std::equal(out.begin() + row * 20, out.begin() + row * 20 + 20,
                           image.luma.begin() + row * 32));
  }
}

TEST(PixelBuffer, ExportRefusesAndUnlocks) {
  constexpr OSType kVideo = kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange;
  constexpr OSType kUnknown = 0x79343230;
  const struct {
    const char* name;
    OSType format;
    bool luma = true, chroma = true, refusesLock = false;
    int32_t capacity = kSize;
    const char* fault = nullptr;
  } cases[] = {
      {"one byte short", kVideo, true, true, false, kSize - 1, nullptr},
      {"negative capacity", kVideo, true, true, false, -1, nullptr},
      {"lock refused", kVideo, true, true, true, kSize, nullptr},
      {"no luma", kVideo, false, true, false, kSize, nullptr},
      {"no chroma", kVideo, true, false, false, kSize, nullptr},
      {"no pixels", kCVPixelFormatType_32BGRA, false, false, false, kSize, nullptr},
      {"unknown format", kUnknown, true, true, false, kSize, nullptr},
      {"no conversion", kVideo, true, true, false, kSize, "vImageConvert_YpCbCrToARGB"},
      {"conversion fails", kVideo, true, true, false, kSize, "vImageConvert_420Yp8"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Machine machine;
    Image image(each.format, each.luma, each.chroma);
    image.buffer->refuses = each.refusesLock;
    if (each.fault != nullptr) machine.refuse(each.fault, -21773);
    std::vector<uint8_t> out(kSize, 0xAB);
    EXPECT_FALSE(vlm_pixbuf_to_bgra(image.buffer.get(), out.data(), each.capacity));
    EXPECT_EQ(std::ranges::count(out, 0xAB), kSize);
    EXPECT_EQ(image.buffer->locks, 0);
    EXPECT_EQ(machine.takeLog(), Lines{});
  }
  Image image(kVideo);
  EXPECT_FALSE(vlm_pixbuf_to_bgra(image.buffer.get(), nullptr, kSize));
}

}  // namespace
}  // namespace vlm::test
