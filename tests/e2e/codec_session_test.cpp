// Compression sessions fed with what does not cross the boundary: full-range pictures, accounts of
// what changed, property values of every kind.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "codec/bitstream.h"
#include "codec/compressed_sample.h"
#include "e2e/codec_streams.h"
#include "platform/portable/pixel_buffer.h"
#include "platform/video_toolbox.h"
#include "support/child_process.h"

namespace vlm::test {
namespace {

using namespace platform;

constexpr std::size_t kWidth = 320;
constexpr std::size_t kHeight = 192;
constexpr OSType kVideoRange = kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange;
constexpr OSType kFullRange = kCVPixelFormatType_420YpCbCr8BiPlanarFullRange;

Ref<VTCompressionSession> makeSession(std::size_t width = kWidth, std::size_t height = kHeight) {
  Ref<VTCompressionSession> session;
  EXPECT_EQ(VTCompressionSessionCreate(static_cast<std::int32_t>(width),
                                       static_cast<std::int32_t>(height), kCMVideoCodecType_H264,
                                       {}, session),
            noErr);
  return session;
}

Ref<CVPixelBuffer> grey(std::uint8_t luma, OSType format = kVideoRange) {
  auto buffer = CVPixelBuffer::make(kWidth, kHeight, format);
  std::memset(buffer->plane(0).pixels, luma, buffer->plane(0).stride * kHeight);
  std::memset(buffer->plane(1).pixels, 128, buffer->plane(1).stride * kHeight / 2);
  return buffer;
}

AccessUnit encode(VTCompressionSession& session, const Ref<CVPixelBuffer>& image, double seconds) {
  AccessUnit unit;
  const auto collect = [&](OSStatus status, VTEncodeInfoFlags, Ref<CMSampleBuffer> sample) {
    ASSERT_EQ(status, noErr);
    ASSERT_TRUE(sample);
    unit.keyFrame = codec::isKeyFrame(*sample);
    const auto bytes = codec::SampleBytes::of(*CMSampleBufferGetDataBuffer(*sample));
    unit.bytes =
        codec::buildAnnexBAccessUnit(unit.keyFrame, codec::parameterSetsOf(*sample), bytes->view());
  };
  EXPECT_EQ(VTCompressionSessionEncodeFrameWithOutputHandler(
                session, image, CMTimeMake(static_cast<std::int64_t>(seconds * 1000), 1000),
                kCMTimeInvalid, {}, collect),
            noErr);
  VTCompressionSessionCompleteFrames(session, kCMTimeInvalid);
  return unit;
}

TEST(CompressionSession, AnswersPropertiesItCantServe) {
  const auto session = makeSession();
  const struct {
    std::string_view key;
    CFValue value;
    OSStatus status;
  } cases[] = {
      {kVTCompressionPropertyKey_ExpectedFrameRate, 0, kVTParameterErr},
      {kVTCompressionPropertyKey_ExpectedFrameRate, -30, kVTParameterErr},
      {kVTCompressionPropertyKey_ExpectedFrameRate, "30", kVTParameterErr},
      {kVTCompressionPropertyKey_AverageBitRate, 0, kVTParameterErr},
      {kVTCompressionPropertyKey_AverageBitRate, std::numeric_limits<double>::quiet_NaN(),
       kVTParameterErr},
      {kVTCompressionPropertyKey_AverageBitRate, std::numeric_limits<std::int32_t>::max(), noErr},
      {kVTCompressionPropertyKey_DataRateLimits, CFArray{-1.0, 1.0}, kVTParameterErr},
      {kVTCompressionPropertyKey_MaxAllowedFrameQP, 52, kVTParameterErr},
      {kVTCompressionPropertyKey_ProfileLevel, "H264_High_AutoLevel", kVTPropertyNotSupportedErr},
  };
  for (const auto& [key, value, status] : cases) {
    EXPECT_EQ(VTSessionSetProperty(*session, key, value), status) << key;
  }
  EXPECT_TRUE(encode(*session, grey(90), 0).keyFrame);
  VTCompressionSessionInvalidate(*session);
  EXPECT_EQ(VTSessionSetProperty(*session, kVTCompressionPropertyKey_RealTime, true),
            kVTInvalidSessionErr);
  EXPECT_EQ(VTCompressionSessionCompleteFrames(*session, kCMTimeInvalid), kVTInvalidSessionErr);
}

TEST(CompressionSession, KeyFramesComeAtTheLimitsOfFramesAndOfTime) {
  const auto session = makeSession();
  VTSessionSetProperty(*session, kVTCompressionPropertyKey_MaxKeyFrameInterval, 4);
  VTSessionSetProperty(*session, kVTCompressionPropertyKey_MaxKeyFrameIntervalDuration, 10);
  const double times[] = {0, 1, 2, 3, 4, 5, 13, 14, 14.5, 15};
  const bool keys[] = {true, false, false, false, true, false, false, true, false, false};
  for (std::size_t i = 0; i < std::size(times); ++i) {
    EXPECT_EQ(encode(*session, grey(90), times[i]).keyFrame, keys[i]) << i;
  }
}

TEST(CompressionSession, RangeIsSignalledAndAChangeOfItBeginsAnew) {
  const ScratchFolder folder;
  const auto session = makeSession();
  const OSType formats[] = {kVideoRange, kFullRange};
  const std::string ranges[] = {"tv", "pc"};
  for (std::size_t i = 0; i < 2; ++i) {
    const auto first = encode(*session, grey(90, formats[i]), static_cast<double>(i));
    EXPECT_TRUE(first.keyFrame);
    EXPECT_FALSE(encode(*session, grey(91, formats[i]), static_cast<double>(i) + 0.5).keyFrame);
    writeFile(folder.file("range.h264"), first.bytes);
    EXPECT_EQ(outputOf({"ffprobe", "-v", "error", "-show_entries", "stream=color_range", "-of",
                        "csv=p=0", folder.file("range.h264")}),
              ranges[i]);
  }
}

TEST(CompressionSession, CopiesOfOddSizesKeepNoEarlierMatrix) {
  constexpr std::size_t kOdd = 65;
  const auto session = makeSession(kOdd, kOdd);
  auto planes = CVPixelBuffer::make(kOdd, kOdd, kVideoRange);
  planes->setMatrix(YCbCrMatrix::bt709);
  auto red = CVPixelBuffer::make(kOdd, kOdd, kCVPixelFormatType_32BGRA);
  for (std::size_t at = 0; at < red->plane(0).stride * kOdd; at += 4) {
    std::ranges::copy(std::array<std::uint8_t, 4>{0, 0, 221, 255}, red->plane(0).pixels + at);
  }
  Decoder decoder(true);
  for (std::int64_t i = 0; i < 4; ++i) {
    const auto unit = encode(*session, i < 2 ? planes : red, static_cast<double>(i));
    EXPECT_TRUE(decoder.decode(unit.bytes, i));
  }
  const auto pictures = decoder.pictures();
  ASSERT_EQ(pictures.size(), 4U);
  const int wanted[] = {0, 0, 221};
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(pictures[3].pixels[i], wanted[i], 8) << i;
}

// A grey picture that its source says to have changed in the left half only.
Ref<CVPixelBuffer> halfChanged(std::uint8_t luma, std::uint64_t source, std::uint64_t picture) {
  auto changes = std::make_shared<ChangeMap>();
  *changes = {source, picture, kWidth / 16, kHeight / 16, {}};
  for (std::size_t block = 0; block < changes->columns * changes->rows; ++block) {
    changes->lastChange.push_back(block % changes->columns < changes->columns / 2 ? picture : 1);
  }
  auto buffer = grey(luma);
  buffer->setChanges(std::move(changes));
  return buffer;
}

TEST(CompressionSession, LooksOnlyAtWhatItsSourceSaysToHaveChanged) {
  const auto session = makeSession();
  // The account is a lie, which shows whether it was believed: pictures 2 to 4 are of one source,
  // with some left out; the last is of another, of which nothing is known.
  const std::uint8_t lumas[] = {60, 120, 180, 220};
  const std::uint8_t right[] = {60, 60, 60, 220};
  const std::uint64_t sources[] = {7, 7, 7, 8};
  const std::uint64_t numbers[] = {1, 2, 9, 10};
  Decoder decoder(false);
  for (std::size_t i = 0; i < 4; ++i) {
    const auto unit = encode(*session, halfChanged(lumas[i], sources[i], numbers[i]),
                             static_cast<double>(i) / 30);
    EXPECT_TRUE(decoder.decode(unit.bytes, static_cast<std::int64_t>(i)));
  }
  const auto pictures = decoder.pictures();
  ASSERT_EQ(pictures.size(), 4U);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(pictures[i].pixels[kWidth * 40 + 20], lumas[i], 3) << i;
    EXPECT_NEAR(pictures[i].pixels[kWidth * 40 + kWidth - 20], right[i], 3) << i;
  }
}

}  // namespace
}  // namespace vlm::test
