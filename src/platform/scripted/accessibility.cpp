#include <utility>

#include "platform/application_services.h"
#include "platform/scripted/machine.h"

namespace vlm::platform {

using scripted::Machine;

Ref<AXUIElement> AXUIElementCreateApplication(std::int32_t pid) {
  auto& machine = Machine::current();
  if (machine.journal.enter("AXUIElementCreateApplication", {pid}).nothing) return nullptr;
  const auto known = machine.desktop.applications.find(pid);
  return makeRef<AXUIElement>(
      "application", known == machine.desktop.applications.end() ? CFDictionary{} : known->second);
}

AXError AXUIElementCopyAttributeValue(AXUIElement& element, std::string_view attribute,
                                      CFValue& value) {
  const auto fault =
      Machine::current().journal.enter("AXUIElementCopyAttributeValue", {element.name, attribute});
  if (fault.fails()) return fault.status;
  const auto known = element.attributes.find(attribute);
  if (known == element.attributes.end()) return kAXErrorNoValue;
  if (!fault.nothing) value = known->second;
  return kAXErrorSuccess;
}

bool CFEqual(const AXUIElement& a, const AXUIElement& b) {
  return a.name == b.name;
}

AXError AXObserverCreate(std::int32_t pid, AXObserverCallback callback, Ref<AXObserver>& out) {
  auto& machine = Machine::current();
  const auto fault = machine.journal.enter("AXObserverCreate", {pid});
  if (fault.fails()) return fault.status;
  if (fault.nothing) return kAXErrorSuccess;
  out = makeRef<AXObserver>(std::move(callback));
  machine.desktop.add(out->shared);
  return kAXErrorSuccess;
}

AXError AXObserverAddNotification(AXObserver& observer, AXUIElement& element,
                                  std::string_view notification) {
  const auto fault =
      Machine::current().journal.enter("AXObserverAddNotification", {element.name, notification});
  if (fault.fails()) return fault.status;
  const MutexLock lock(observer.shared->mutex);
  observer.shared->names.emplace(notification);
  return kAXErrorSuccess;
}

CFRunLoopSource& AXObserverGetRunLoopSource(AXObserver& observer) {
  return *observer.shared->source;
}

void CFRunLoopAddSourceToMain(CFRunLoopSource& source) {
  Machine::current().journal.enter("CFRunLoopAddSource");
  source.added = true;
}

void CFRunLoopRemoveSourceFromMain(CFRunLoopSource& source) {
  Machine::current().journal.enter("CFRunLoopRemoveSource");
  source.added = false;
}

namespace scripted {

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

}  // namespace scripted
}  // namespace vlm::platform
