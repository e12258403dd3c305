#include "platform/application_services.h"

#include <utility>

#include "platform/scripted/machine/question.h"

namespace vlm::platform {

using scripted::Machine;

bool AXIsProcessTrusted() {
  return scripted::ask("AXIsProcessTrusted").isTrusted;
}

bool AXIsProcessTrustedWithOptions(const CFValue& options) {
  const auto& stage = scripted::ask("AXIsProcessTrustedWithOptions", {options});
  return stage.isTrusted || stage.grantsTrustOnPrompt;
}

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

}  // namespace vlm::platform
