#include "platform/linux/view/display_layer.h"

#include <utility>

#include "platform/linux/view/picture_drawing.h"

namespace vlm::platform::view {

using Status = AVQueuedSampleBufferRenderingStatus;

double DisplayLayer::contentsScale() const {
  const MutexLock lock(mutex_);
  return contentsScale_;
}

void DisplayLayer::setContentsScale(double scale) {
  const MutexLock lock(mutex_);
  contentsScale_ = scale;
}

Status DisplayLayer::status() const {
  const MutexLock lock(mutex_);
  return status_;
}

bool DisplayLayer::isReadyForMoreMediaData() const {
  const MutexLock lock(mutex_);
  return hasPlace_ && !waiting_ && !inWork_;
}

void DisplayLayer::flush() {
  const MutexLock lock(mutex_);
  discard();
}

void DisplayLayer::flushAndRemoveImage() {
  const MutexLock lock(mutex_);
  discard();
  removeImage_ = true;
  wake();
}

void DisplayLayer::enqueueSampleBuffer(Ref<CMSampleBuffer> sample) {
  auto picture = Ref<CVPixelBuffer>::retaining(CMSampleBufferGetImageBuffer(*sample));
  const MutexLock lock(mutex_);
  if (!hasPlace_) return;
  if (!picture || !canDraw(*picture)) {
    status_ = Status::failed;
    return;
  }
  waiting_ = std::move(picture);
  wake();
}

void DisplayLayer::attach(std::shared_ptr<const WakeUp> wakeUp) {
  const MutexLock lock(mutex_);
  wakeUp_ = std::move(wakeUp);
}

DisplayLayer::Work DisplayLayer::take() {
  const MutexLock lock(mutex_);
  if (waiting_) inWork_ = true;
  return {std::exchange(removeImage_, false), std::exchange(waiting_, nullptr)};
}

void DisplayLayer::done() {
  const MutexLock lock(mutex_);
  if (std::exchange(inWork_, false) && status_ == Status::unknown) status_ = Status::rendering;
}

void DisplayLayer::refuse() {
  const MutexLock lock(mutex_);
  inWork_ = false;
  status_ = Status::failed;
}

void DisplayLayer::setHasPlace(bool hasPlace) {
  const MutexLock lock(mutex_);
  hasPlace_ = hasPlace;
  if (hasPlace_) return;
  discard();
  inWork_ = false;
}

void DisplayLayer::discard() {
  waiting_ = nullptr;
  if (status_ == Status::failed) status_ = Status::unknown;
}

void DisplayLayer::wake() const {
  if (wakeUp_) wakeUp_->signal();
}

}  // namespace vlm::platform::view
