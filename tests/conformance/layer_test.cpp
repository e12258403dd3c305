#include <gtest/gtest.h>

#include <cstring>

#include "platform/app_kit.h"
#include "stage.h"

namespace vlm::platform {
namespace {

class PlainView final : public NSView {
 public:
  using NSView::initWithFrame;
};

Ref<CMSampleBuffer> greySample() {
  Ref<CVPixelBuffer> image;
  CVPixelBufferCreate(64, 48, kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange, CFValue(), image);
  std::memset(CVPixelBufferGetBaseAddressOfPlane(*image, 0), 128,
              CVPixelBufferGetBytesPerRowOfPlane(*image, 0) * 48);
  std::memset(CVPixelBufferGetBaseAddressOfPlane(*image, 1), 128,
              CVPixelBufferGetBytesPerRowOfPlane(*image, 1) * 24);
  Ref<CMFormatDescription> description;
  CMVideoFormatDescriptionCreateForImageBuffer(*image, description);
  Ref<CMSampleBuffer> sample;
  CMSampleBufferCreateReadyWithImageBuffer(image, description, {}, sample);
  return sample;
}

TEST(Layer, TakesPicturesAndIsReadyAgain) {
  test::Stage stage;
  stage.openDisplay();
  std::shared_ptr<PlainView> view;
  std::shared_ptr<AVSampleBufferDisplayLayer> layer;
  stage.onMainThread([&] {
    view = std::make_shared<PlainView>();
    layer = AVSampleBufferDisplayLayer::make();
    ASSERT_NE(layer, nullptr);
    ASSERT_TRUE(view->initWithFrame({}));
    layer->setVideoGravity(AVLayerVideoGravityResize);
    layer->setBackgroundColor(kBlackColor);
    view->setLayer(layer);
    view->setWantsLayer(true);
    layer->setContentsScale(2);
  });
  ASSERT_TRUE(layer && view);
  EXPECT_EQ(layer->contentsScale(), 2);
  EXPECT_NE(view->hostPointer(), nullptr);
  EXPECT_EQ(view->hitTest({1, 1}), view.get());
  const auto ready = [&] { return layer->isReadyForMoreMediaData(); };
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(stage.waitUntil(ready));
    layer->enqueueSampleBuffer(greySample());
    EXPECT_NE(layer->status(), AVQueuedSampleBufferRenderingStatus::failed);
    EXPECT_FALSE(layer->requiresFlushToResumeDecoding());
  }
  layer->flush();
  EXPECT_TRUE(stage.waitUntil(ready));
  stage.onMainThread([&] {
    layer->flushAndRemoveImage();
    view->removeFromSuperview();
    view = nullptr;
  });
  // A layer that outlives its view does no harm.
  layer->flush();
  stage.onMainThread([&] { layer = nullptr; });
}

}  // namespace
}  // namespace vlm::platform
