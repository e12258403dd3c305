#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "platform/core_media.h"
#include "platform/core_video.h"
#include "stage.h"

namespace vlm::platform {
namespace {

constexpr OSType kVideoRange = kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange;

TEST(Media, PixelBuffersAreLaidOutForEverySize) {
  test::Stage stage;
  const struct {
    OSType format;
    std::size_t width, height, planes, chromaWidth;
  } cases[] = {{kVideoRange, 64, 48, 2, 32},
               {kVideoRange, 1, 1, 2, 1},
               {kCVPixelFormatType_420YpCbCr8BiPlanarFullRange, 1921, 3, 2, 961},
               {kCVPixelFormatType_32BGRA, 63, 5, 0, 0}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.width);
    Ref<CVPixelBuffer> buffer;
    ASSERT_EQ(CVPixelBufferCreate(each.width, each.height, each.format, CFValue(), buffer), 0);
    EXPECT_EQ(CVPixelBufferGetPixelFormatType(*buffer), each.format);
    EXPECT_EQ(CVPixelBufferGetWidth(*buffer), each.width);
    EXPECT_EQ(CVPixelBufferGetHeight(*buffer), each.height);
    EXPECT_EQ(CVPixelBufferGetPlaneCount(*buffer), each.planes);
    ASSERT_EQ(CVPixelBufferLockBaseAddress(*buffer, 0), 0);
    if (each.planes == 0) {
      const auto stride = CVPixelBufferGetBytesPerRow(*buffer);
      EXPECT_GE(stride, each.width * 4);
      CVPixelBufferGetBaseAddress(*buffer)[stride * each.height - 1] = 1;
      EXPECT_EQ(CVPixelBufferGetBaseAddressOfPlane(*buffer, 0), nullptr);
    } else {
      const auto* end = CVPixelBufferGetBaseAddressOfPlane(*buffer, 0) +
                        CVPixelBufferGetBytesPerRowOfPlane(*buffer, 0) * each.height;
      auto* chroma = CVPixelBufferGetBaseAddressOfPlane(*buffer, 1);
      const auto stride = CVPixelBufferGetBytesPerRowOfPlane(*buffer, 1);
      EXPECT_GE(chroma, end);
      EXPECT_GE(stride, each.chromaWidth * 2);
      chroma[stride * ((each.height + 1) / 2) - 1] = 1;
      EXPECT_EQ(CVPixelBufferGetBaseAddressOfPlane(*buffer, 2), nullptr);
      EXPECT_EQ(CVPixelBufferGetBytesPerRowOfPlane(*buffer, 2), 0U);
    }
    EXPECT_EQ(CVPixelBufferUnlockBaseAddress(*buffer, 0), 0);
  }
  const struct {
    std::size_t width, height;
    OSType format;
  } refused[] = {{0, 4, kVideoRange}, {4, 0, kVideoRange}, {4, 4, 0x79343230}};
  for (const auto& each : refused) {
    Ref<CVPixelBuffer> buffer;
    EXPECT_NE(CVPixelBufferCreate(each.width, each.height, each.format, CFValue(), buffer), 0);
    EXPECT_FALSE(buffer);
  }
}

TEST(Media, BlocksKeepBytesWithinTheirBounds) {
  test::Stage stage;
  Ref<CMBlockBuffer> block;
  ASSERT_EQ(CMBlockBufferCreateWithMemoryBlock(6, block), noErr);
  const std::array<std::uint8_t, 4> bytes{1, 2, 3, 4};
  EXPECT_EQ(CMBlockBufferReplaceDataBytes(bytes, *block, 2), noErr);
  EXPECT_NE(CMBlockBufferReplaceDataBytes(bytes, *block, 3), noErr);
  EXPECT_EQ(CMBlockBufferGetDataLength(*block), 6U);
  std::span<const std::uint8_t> piece;
  ASSERT_EQ(CMBlockBufferGetDataPointer(*block, 3, piece), noErr);
  EXPECT_EQ(std::vector(piece.begin(), piece.end()), (std::vector<std::uint8_t>{2, 3, 4}));
  EXPECT_NE(CMBlockBufferGetDataPointer(*block, 6, piece), noErr);
}

TEST(Media, SamplesHoldWhatTheyAreMadeOf) {
  test::Stage stage;
  const std::vector<std::uint8_t> sps{0x67, 0x4D, 0x40, 0x1F, 0x96, 0x54, 0x05, 0x01, 0xED, 0x80};
  const std::vector<std::uint8_t> pps{0x68, 0xEF, 0x0E, 0xC8};
  const std::array<std::span<const std::uint8_t>, 2> sets{sps, pps};
  Ref<CMFormatDescription> description;
  ASSERT_EQ(CMVideoFormatDescriptionCreateFromH264ParameterSets(sets, 4, description), noErr);
  std::size_t count = 0;
  EXPECT_EQ(CMVideoFormatDescriptionGetH264ParameterSetCount(*description, count), noErr);
  EXPECT_EQ(count, 2U);
  std::span<const std::uint8_t> set;
  ASSERT_EQ(CMVideoFormatDescriptionGetH264ParameterSetAtIndex(*description, 1, set), noErr);
  EXPECT_EQ(std::vector(set.begin(), set.end()), pps);
  EXPECT_NE(CMVideoFormatDescriptionGetH264ParameterSetAtIndex(*description, 2, set), noErr);
  Ref<CMFormatDescription> none;
  EXPECT_NE(CMVideoFormatDescriptionCreateFromH264ParameterSets({}, 4, none), noErr);
  EXPECT_FALSE(none);

  Ref<CMBlockBuffer> block;
  ASSERT_EQ(CMBlockBufferCreateWithMemoryBlock(4, block), noErr);
  const CMSampleTimingInfo timing[] = {{{}, CMTimeMake(7, 10), {}}};
  const std::size_t sizes[] = {4};
  Ref<CMSampleBuffer> sample;
  ASSERT_EQ(CMSampleBufferCreateReady(block, description, timing, sizes, sample), noErr);
  EXPECT_EQ(CMSampleBufferGetPresentationTimeStamp(*sample), CMTimeMake(7, 10));
  EXPECT_TRUE(std::isnan(CMTimeGetSeconds(kCMTimeInvalid)));
  EXPECT_EQ(CMSampleBufferGetSampleAttachmentsArray(*sample, false), nullptr);
  auto* attachments = CMSampleBufferGetSampleAttachmentsArray(*sample, true);
  ASSERT_NE(attachments, nullptr);
  EXPECT_EQ(*attachments, CFValue(CFArray{CFDictionary{}}));
  EXPECT_EQ(CMSampleBufferGetSampleAttachmentsArray(*sample, false), attachments);
}

TEST(Log, LinesAreWrittenAsTheyStand) {
  test::Stage stage;
  EXPECT_EQ(stage.loggedBy([] {
    NSLog("[vlm] 100 %s %n → done");
    NSLog("");
  }),
            "[vlm] 100 %s %n → done\n\n");
}

TEST(Text, ContainmentIgnoresCaseAndTheEmptyPart) {
  EXPECT_TRUE(localizedCaseInsensitiveContains("Notes of Today", "TODAY"));
  EXPECT_FALSE(localizedCaseInsensitiveContains("tod", "today"));
  EXPECT_FALSE(localizedCaseInsensitiveContains("Today", ""));
}

}  // namespace
}  // namespace vlm::platform
