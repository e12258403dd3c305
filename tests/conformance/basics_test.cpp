#include <gtest/gtest.h>

#include <csignal>
#include <numeric>
#include <vector>

#include "platform/avf_audio.h"
#include "platform/core_media.h"
#include "platform/core_video.h"
#include "platform/dispatch.h"
#include "platform/foundation.h"

namespace vlm::platform {
namespace {

constexpr OSType kVideoRange = kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange;

TEST(Media, PixelBuffersAreLaidOutForEverySize) {
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
}

TEST(Media, AttachmentsAreKeptByTheSampleUnderTheirKeys) {
  Ref<CVPixelBuffer> picture;
  ASSERT_EQ(CVPixelBufferCreate(64, 48, kVideoRange, CFValue(), picture), 0);
  Ref<CMFormatDescription> description;
  ASSERT_EQ(CMVideoFormatDescriptionCreateForImageBuffer(*picture, description), noErr);
  Ref<CMSampleBuffer> sample;
  ASSERT_EQ(CMSampleBufferCreateReadyWithImageBuffer(picture, description, {}, sample), noErr);
  using helpers::sampleAttachment;
  EXPECT_TRUE(sampleAttachment(*sample, kCMSampleAttachmentKey_NotSync).isNull());
  ASSERT_TRUE(helpers::setSampleAttachment(*sample, kCMSampleAttachmentKey_NotSync, true));
  ASSERT_TRUE(
      helpers::setSampleAttachment(*sample, kCMSampleAttachmentKey_DisplayImmediately, false));
  const Ref<CMSampleBuffer> same = sample;
  EXPECT_EQ(sampleAttachment(*same, kCMSampleAttachmentKey_NotSync), CFValue(true));
  EXPECT_EQ(sampleAttachment(*same, kCMSampleAttachmentKey_DisplayImmediately), CFValue(false));
}

TEST(Sound, FormatsOfUpToTwoChannelsNeedNoLayout) {
  constexpr auto kFloat = AVAudioCommonFormat::pcmFloat32;
  for (const std::uint32_t channels : {1U, 2U}) {
    for (const bool interleaved : {false, true}) {
      const auto format = AVAudioFormat::initWithCommonFormat(kFloat, 44100, channels, interleaved);
      ASSERT_TRUE(format);
      EXPECT_EQ(format->commonFormat(), kFloat);
      EXPECT_EQ(format->sampleRate(), 44100);
      EXPECT_EQ(format->channelCount(), channels);
      EXPECT_EQ(format->isInterleaved(), interleaved);
      const auto buffer = AVAudioPCMBuffer::initWithPCMFormat(format, 5);
      ASSERT_TRUE(buffer);
      EXPECT_EQ(buffer->format().channelCount(), channels);
      const auto next = buffer->floatChannelData(channels - 1) - buffer->floatChannelData(0);
      EXPECT_TRUE(channels == 1 || !interleaved || next == 1);
    }
  }
  EXPECT_EQ(AVAudioFormat::initWithCommonFormat(kFloat, 44100, 3, false), nullptr);
}

TEST(Text, ContainmentIgnoresCaseAndTheEmptyPart) {
  EXPECT_TRUE(localizedCaseInsensitiveContains("Notes of Today", "TODAY"));
  EXPECT_FALSE(localizedCaseInsensitiveContains("tod", "today"));
  EXPECT_FALSE(localizedCaseInsensitiveContains("Today", ""));
  EXPECT_FALSE(localizedCaseInsensitiveContains("Caf\xC3\xA9", "cafe"));
}

TEST(Dispatch, SerialQueueRunsJobsInOrderAndSyncWaitsForItsOwn) {
  const auto queue = dispatch_queue_create("vlm.test", DispatchQoS::userInteractive);
  EXPECT_EQ(queue->label(), "vlm.test");
  std::vector<int> order;
  for (int i = 0; i < 100; ++i) {
    queue->async([&order, queue, i] {
      order.push_back(i);
      if (i == 0) queue->async([&order] { order.push_back(1000); });
    });
  }
  bool waited = false;
  queue->sync([&] { waited = true; });
  EXPECT_TRUE(waited);
  queue->sync([] {});
  std::vector<int> expected(100);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(std::erase(order, 1000), 1U);
  EXPECT_EQ(order, expected);
}

TEST(Dispatch, QueuesLeaveTheHostsSignalsToTheHostsThreads) {
  const auto queue = dispatch_queue_create("vlm.test", DispatchQoS::standard);
  sigset_t blocked;
  sigemptyset(&blocked);
  queue->sync([&] { pthread_sigmask(SIG_SETMASK, nullptr, &blocked); });
  for (const int each : {SIGUSR1, SIGTERM, SIGINT, SIGALRM, SIGCHLD, SIGPIPE}) {
    EXPECT_EQ(sigismember(&blocked, each), 1) << each;
  }
  // A crash handler must run on the thread that failed.
  EXPECT_EQ(sigismember(&blocked, SIGSEGV), 0);
}

}  // namespace
}  // namespace vlm::platform
