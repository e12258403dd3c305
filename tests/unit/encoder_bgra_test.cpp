#include <gtest/gtest.h>

#include "stage.h"

namespace vlm::test {
namespace {

struct BgraEncoding {
  Machine machine;
  void* handle = nullptr;
  std::vector<Ref<CVPixelBuffer>> images;
  BgraEncoding() {
    machine.video.compress = [this](const platform::scripted::FrameIn& frame) {
      images.push_back(frame.image);
      return platform::scripted::compressFrame(frame);
    };
    handle = vlm_enc_create(2, 2, 30, 1, false, noteEncoded, &machine);
    machine.journal.take();
  }
  ~BgraEncoding() { vlm_enc_destroy(handle); }
};

TEST(EncoderBgra, CopiesRowsWithoutTheirPadding) {
  BgraEncoding encoding;
  auto& machine = encoding.machine;
  std::vector<uint8_t> source(16 + 8);  // the padding of the last row is not there
  for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i);
  EXPECT_TRUE(vlm_enc_encode_bgra(encoding.handle, source.data(), 2, 2, 16, 15, true));
  std::fill(source.begin(), source.end(), uint8_t{0});
  machine.run();
  EXPECT_EQ(only({"CV", "VT", "encoded"}, machine.journal.take()),
            (Lines{"CVPixelBufferCreate(2, 2, BGRA, {IOSurfaceProperties: {}})",
                   "VTCompressionSessionEncodeFrame(BGRA 2x2, 15/1000000000, 1/30, "
                   "{ForceKeyFrame: true})",
                   "encoded key @14: 67 68 65"}));
  ASSERT_EQ(encoding.images.size(), 1U);
  const auto& image = *encoding.images.front();
  const auto* base = CVPixelBufferGetBaseAddress(image);
  for (std::size_t row = 0; row < 2; ++row) {
    for (std::size_t i = 0; i < 8; ++i) {
      EXPECT_EQ(base[row * CVPixelBufferGetBytesPerRow(image) + i], row * 16 + i);
    }
  }
  EXPECT_TRUE(encoding.images.front()->uniquelyReferenced());
}

TEST(EncoderBgra, RefusesWhatItCannotCopy) {
  BgraEncoding encoding;
  auto& machine = encoding.machine;
  const std::vector<uint8_t> pixels(64);
  const auto encode = [&](void* handle, const uint8_t* data, int32_t width, int32_t height) {
    return vlm_enc_encode_bgra(handle, data, width, height, 16, 1, false);
  };
  EXPECT_FALSE(encode(nullptr, pixels.data(), 2, 2));
  EXPECT_FALSE(encode(encoding.handle, nullptr, 2, 2));
  EXPECT_FALSE(encode(encoding.handle, pixels.data(), 0, 2));
  EXPECT_FALSE(encode(encoding.handle, pixels.data(), 2, -1));
  EXPECT_EQ(machine.journal.take(), Lines{});
  machine.refuse("CVPixelBufferCreate", -6662);
  EXPECT_FALSE(encode(encoding.handle, pixels.data(), 2, 2));
  machine.answerNothing("CVPixelBufferCreate");
  EXPECT_FALSE(encode(encoding.handle, pixels.data(), 2, 2));
  EXPECT_EQ(only({"VT", "NSLog"}, machine.journal.take()), Lines{});
  // Another size goes the way of every frame.
  EXPECT_TRUE(encode(encoding.handle, pixels.data(), 4, 3));
  EXPECT_EQ(machine.takeLog(),
            Lines{"[vlm] encoder input resized 2x2 → 4x3; rebuilding VT session"});
}

}  // namespace
}  // namespace vlm::test
