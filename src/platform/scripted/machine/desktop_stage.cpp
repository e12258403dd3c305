#include "platform/scripted/machine/desktop_stage.h"

#include "platform/scripted/machine/machine.h"

namespace vlm::platform::scripted {

void DesktopStage::add(const std::shared_ptr<AXObserver::Shared>& observer) {
  const MutexLock lock(mutex_);
  observers_.push_back(observer);
}

void DesktopStage::notify(const std::string& name) {
  const MutexLock lock(mutex_);
  for (const auto& weak : observers_) {
    Machine::current().mainQueue()->async([weak, name] {
      const auto observer = weak.lock();
      if (!observer || !observer->source->added) return;
      {
        const MutexLock namesLock(observer->mutex);
        if (!observer->names.contains(name)) return;
      }
      observer->callback(name);
    });
  }
}

void DesktopStage::press(std::uint16_t keyCode, bool local) {
  Machine::current().mainQueue()->async([this, keyCode, local] {
    const NSEvent event{keyCode};
    const auto now = monitors;  // a copy: handlers add and remove monitors
    for (const auto& monitor : now) {
      if (monitor->local == local && monitor->handler(event) == &event) ++passed;
    }
  });
}

}  // namespace vlm::platform::scripted
