#include <utility>

#include "platform/portable/media.h"
#include "platform/scripted/machine/display_stage.h"
#include "platform/scripted/machine/machine.h"

namespace vlm::platform {

std::shared_ptr<AVSampleBufferDisplayLayer> AVSampleBufferDisplayLayer::make() {
  auto& machine = scripted::Machine::current();
  const auto fault =
      machine.journal.enter(std::string(scripted::offMainPrefix()) + "AVSampleBufferDisplayLayer");
  if (fault.nothing) return nullptr;
  auto& layers = machine.display.layers;
  layers.push_back(std::make_shared<scripted::ScriptedLayer>(static_cast<int>(layers.size()) + 1));
  return layers.back();
}

namespace scripted {

std::string_view offMainPrefix() {
  return NSThread::isMainThread() ? "" : "off the main thread: ";
}

void ScriptedLayer::note(std::string_view operation,
                         std::initializer_list<CFValue> arguments) const {
  Machine::current().journal.enter(name_ + " " + std::string(operation), arguments);
}

void ScriptedLayer::noteOnMain(std::string_view operation,
                               std::initializer_list<CFValue> arguments) const {
  Machine::current().journal.enter(
      std::string(offMainPrefix()) + name_ + " " + std::string(operation), arguments);
}

void ScriptedLayer::setVideoGravity(std::string_view gravity) {
  noteOnMain("setVideoGravity", {gravity});
}

void ScriptedLayer::setBackgroundColor(CGColor color) {
  noteOnMain("setBackgroundColor", {color.red, color.green, color.blue, color.alpha});
}

void ScriptedLayer::setContentsScale(double scale) {
  noteOnMain("setContentsScale", {scale});
  const MutexLock lock(mutex_);
  condition_.contentsScale = scale;
}

void ScriptedLayer::setFrame(CGRect frame) {
  noteOnMain("setFrame", {describe(frame)});
}

void ScriptedLayer::flush() {
  note("flush");
}

void ScriptedLayer::flushAndRemoveImage() {
  noteOnMain("flushAndRemoveImage");
}

void ScriptedLayer::enqueueSampleBuffer(Ref<CMSampleBuffer> sample) {
  note("enqueueSampleBuffer", {sample->attachments.value_or(CFValue())});
  const MutexLock lock(mutex_);
  condition_.status = condition_.afterEnqueue;
  shown_ = std::move(sample);
}

ScriptedLayer::Condition ScriptedLayer::condition() const {
  const MutexLock lock(mutex_);
  return condition_;
}

void ScriptedLayer::become(const Condition& condition) {
  const MutexLock lock(mutex_);
  condition_ = condition;
}

Ref<CMSampleBuffer> ScriptedLayer::shown() const {
  const MutexLock lock(mutex_);
  return shown_;
}

}  // namespace scripted
}  // namespace vlm::platform
