#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "codec/compressed_sample.h"
#include "platform/mutex.h"
#include "platform/video_toolbox.h"

namespace vlm::platform {
namespace {

constexpr OSType kFormats[] = {kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange,
                               kCVPixelFormatType_420YpCbCr8BiPlanarFullRange,
                               kCVPixelFormatType_32BGRA};

Ref<CVPixelBuffer> greyPicture(OSType format) {
  Ref<CVPixelBuffer> picture;
  CVPixelBufferCreate(64, 48, format, CFValue(), picture);
  CVPixelBufferLockBaseAddress(*picture, 0);
  if (CVPixelBufferGetPlaneCount(*picture) == 0) {
    std::memset(CVPixelBufferGetBaseAddress(*picture), 128,
                CVPixelBufferGetBytesPerRow(*picture) * 48);
  } else {
    for (const std::size_t plane : {0U, 1U}) {
      std::memset(CVPixelBufferGetBaseAddressOfPlane(*picture, plane), 128,
                  CVPixelBufferGetBytesPerRowOfPlane(*picture, plane) * (plane == 0 ? 48 : 24));
    }
  }
  CVPixelBufferUnlockBaseAddress(*picture, 0);
  return picture;
}

// A compression session and what it has delivered.
struct Compression {
  Ref<VTCompressionSession> session;
  std::vector<Ref<CMSampleBuffer>> samples;
  int handled = 0;
  bool finished = false;

  Compression() {
    EXPECT_EQ(VTCompressionSessionCreate(64, 48, kCMVideoCodecType_H264, CFValue(), session),
              noErr);
    EXPECT_EQ(VTCompressionSessionPrepareToEncodeFrames(*session), noErr);
  }
  OSStatus encode(std::int64_t number, OSType format = kFormats[0], bool force = false) {
    CFValue options;
    if (force) options = CFDictionary{{std::string(kVTEncodeFrameOptionKey_ForceKeyFrame), true}};
    return VTCompressionSessionEncodeFrameWithOutputHandler(
        *session, greyPicture(format), CMTimeMake(number, 30), CMTimeMake(1, 30), options,
        [this](OSStatus status, VTEncodeInfoFlags, Ref<CMSampleBuffer> sample) {
          EXPECT_EQ(status, noErr);
          EXPECT_FALSE(finished);
          ++handled;
          if (sample) samples.push_back(std::move(sample));
        });
  }
  void complete() {
    EXPECT_EQ(VTCompressionSessionCompleteFrames(*session, kCMTimeInvalid), noErr);
  }
};

class CompressionOf : public ::testing::TestWithParam<OSType> {};

TEST_P(CompressionOf, HandlesEveryAcceptedFrameOnceAndInOrder) {
  Compression compression;
  for (int i = 0; i < 12; ++i) {
    ASSERT_EQ(compression.encode(i, GetParam(), i == 7), noErr);
    compression.complete();
    EXPECT_EQ(compression.handled, i + 1);
  }
  ASSERT_EQ(compression.samples.size(), 12U);
  for (int i = 0; i < 12; ++i) {
    SCOPED_TRACE(i);
    auto& sample = *compression.samples[static_cast<std::size_t>(i)];
    EXPECT_EQ(CMTimeGetSeconds(CMSampleBufferGetPresentationTimeStamp(sample)), i / 30.0);
    EXPECT_EQ(codec::isKeyFrame(sample), i == 0 || i == 7);
    ASSERT_NE(CMSampleBufferGetFormatDescription(sample), nullptr);
    EXPECT_EQ(codec::parameterSetsOf(sample).size(), 2U);
    ASSERT_NE(CMSampleBufferGetDataBuffer(sample), nullptr);
    std::span<const std::uint8_t> bytes;
    ASSERT_EQ(CMBlockBufferGetDataPointer(*CMSampleBufferGetDataBuffer(sample), 0, bytes), noErr);
    ASSERT_GT(bytes.size(), 4U);
    const std::size_t length = bytes[0] << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
    EXPECT_LE(length, CMBlockBufferGetDataLength(*CMSampleBufferGetDataBuffer(sample)) - 4);
  }
  // Without a wait in between frames may be dropped, but each is still answered once.
  for (int i = 12; i < 40; ++i) ASSERT_EQ(compression.encode(i, GetParam()), noErr);
  compression.complete();
  EXPECT_EQ(compression.handled, 40);
  compression.finished = true;
  VTCompressionSessionInvalidate(*compression.session);
  EXPECT_EQ(compression.encode(41), kVTInvalidSessionErr);
  EXPECT_EQ(VTCompressionSessionPrepareToEncodeFrames(*compression.session), kVTInvalidSessionErr);
}

INSTANTIATE_TEST_SUITE_P(Sessions, CompressionOf, ::testing::ValuesIn(kFormats));

// A decompression session for the format of a sample, and the times of what it has delivered.
struct Decompression {
  // The session's thread adds, and the test looks while it may still run.
  class Times {
   public:
    void add(std::int64_t time) {
      const MutexLock lock(mutex_);
      all_.push_back(time);
    }
    std::vector<std::int64_t> all() {
      const MutexLock lock(mutex_);
      return all_;
    }

   private:
    Mutex mutex_;
    std::vector<std::int64_t> all_ VLM_GUARDED_BY(mutex_);
  };

  Ref<VTDecompressionSession> session;
  const std::shared_ptr<Times> times = std::make_shared<Times>();

  explicit Decompression(const CMSampleBuffer& sample) {
    const CFValue attributes =
        CFDictionary{{std::string(kCVPixelBufferPixelFormatTypeKey), kFormats[0]}};
    auto description =
        Ref<CMFormatDescription>::retaining(CMSampleBufferGetFormatDescription(sample));
    EXPECT_EQ(VTDecompressionSessionCreate(std::move(description), attributes, session), noErr);
  }
  OSStatus decode(Ref<CMSampleBuffer> sample) {
    return VTDecompressionSessionDecodeFrameWithOutputHandler(
        *session, std::move(sample), kVTDecodeFrame_EnableAsynchronousDecompression,
        [to = times](OSStatus status, VTDecodeInfoFlags, Ref<CVPixelBuffer> image, CMTime time,
                     CMTime) {
          EXPECT_EQ(status, noErr);
          EXPECT_TRUE(image);
          to->add(std::llround(CMTimeGetSeconds(time) * 30));
        });
  }
};

TEST(Decompression, DeliversInOrderUntilItsEndAndLetsGoOfEveryHandler) {
  Compression compression;
  for (int i = 0; i < 6; ++i) {
    ASSERT_EQ(compression.encode(i), noErr);
    compression.complete();
  }
  compression.finished = true;
  ASSERT_EQ(compression.samples.size(), 6U);
  // The first session ends while frames are in flight, the second is waited for.
  for (const bool waits : {false, true}) {
    Decompression decompression(*compression.samples.front());
    ASSERT_TRUE(decompression.session);
    for (const auto& sample : compression.samples) ASSERT_EQ(decompression.decode(sample), noErr);
    if (waits) {
      ASSERT_EQ(VTDecompressionSessionWaitForAsynchronousFrames(*decompression.session), noErr);
      EXPECT_EQ(decompression.times->all(), (std::vector<std::int64_t>{0, 1, 2, 3, 4, 5}));
    }
    VTDecompressionSessionInvalidate(*decompression.session);
    EXPECT_EQ(decompression.decode(compression.samples.front()), kVTInvalidSessionErr);
    decompression.session = nullptr;
    while (decompression.times.use_count() > 1) std::this_thread::yield();
    const auto delivered = decompression.times->all();
    EXPECT_LE(delivered.size(), 6U);
    EXPECT_TRUE(std::ranges::is_sorted(delivered));
  }
}

}  // namespace
}  // namespace vlm::platform
