#include "present/view.h"

#include <utility>

namespace vlm::present {
namespace {

using platform::AVSampleBufferDisplayLayer;

// The scale where neither a window nor a screen has one.
constexpr double kUsualScale = 2.0;

void configure(AVSampleBufferDisplayLayer& layer) {
  layer.setVideoGravity(platform::AVLayerVideoGravityResize);
  layer.setBackgroundColor(platform::kBlackColor);
}

}  // namespace

std::shared_ptr<VlmPresentView> VlmPresentView::make() {
  auto layer = AVSampleBufferDisplayLayer::make();
  // The constructor is private: a view is complete only after the steps below.
  std::shared_ptr<VlmPresentView> view(new VlmPresentView());
  if (!layer || !view->initWithFrame({})) return nullptr;
  view->install(std::move(layer));
  return view;
}

void VlmPresentView::install(std::shared_ptr<AVSampleBufferDisplayLayer> layer) {
  configure(*layer);
  setDisplayLayer(layer);
  setLayer(std::move(layer));
  setWantsLayer(true);
}

std::shared_ptr<AVSampleBufferDisplayLayer> VlmPresentView::displayLayer() const {
  const platform::MutexLock lock(mutex_);
  return displayLayer_;
}

void VlmPresentView::setDisplayLayer(std::shared_ptr<AVSampleBufferDisplayLayer> layer) {
  const platform::MutexLock lock(mutex_);
  displayLayer_ = std::move(layer);
}

bool VlmPresentView::rebuildLayer() {
  auto layer = AVSampleBufferDisplayLayer::make();
  if (!layer) return false;
  install(layer);
  applyScale();
  layer->setFrame(bounds());
  return true;
}

void VlmPresentView::viewDidMoveToWindow() {
  NSView::viewDidMoveToWindow();
  applyScale();
}

void VlmPresentView::viewDidChangeBackingProperties() {
  NSView::viewDidChangeBackingProperties();
  applyScale();
}

void VlmPresentView::applyScale() {
  auto scale = windowBackingScaleFactor();
  if (!scale) scale = platform::mainScreenBackingScaleFactor();
  const double wanted = scale.value_or(kUsualScale);
  const auto layer = displayLayer();
  if (layer->contentsScale() != wanted) layer->setContentsScale(wanted);
}

}  // namespace vlm::present
