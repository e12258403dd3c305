#include <gtest/gtest.h>

#include "platform/core_video.h"
#include "platform/foundation.h"
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
