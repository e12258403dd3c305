#include "platform/application_services.h"

#import <ApplicationServices/ApplicationServices.h>
#include <utility>

#include "platform/macos/bridge/native.h"
#include "platform/macos/bridge/observer.h"
#include "platform/macos/bridge/owned.h"
#include "platform/macos/bridge/values.h"

namespace vlm::platform {

namespace {

VLMAccessibilityObserver* native(AXObserver& observer) {
  return reinterpret_cast<VLMAccessibilityObserver*>(&observer);
}

}  // namespace

bool AXIsProcessTrusted() {
  return ::AXIsProcessTrusted() != 0;
}

bool AXIsProcessTrustedWithOptions(const CFValue& options) {
  const bridge::Key keys[] = {{vlm::platform::kAXTrustedCheckOptionPrompt,
                               ::kAXTrustedCheckOptionPrompt}};
  const auto dictionary = bridge::toDictionary(options, keys);
  return ::AXIsProcessTrustedWithOptions(dictionary.get()) != 0;
}

Ref<AXUIElement> AXUIElementCreateApplication(std::int32_t pid) {
  return bridge::adopted<AXUIElement>(::AXUIElementCreateApplication(pid));
}

// The names of attributes and notifications are published as text, so they are passed as it.
AXError AXUIElementCopyAttributeValue(AXUIElement& element, std::string_view attribute,
                                      CFValue& value) {
  const auto name = bridge::toString(attribute);
  if (!name) return ::kAXErrorAttributeUnsupported;
  bridge::Owned<CFTypeRef> answer;
  const auto error =
      ::AXUIElementCopyAttributeValue(bridge::native(element), name.get(), answer.out());
  if (error == ::kAXErrorSuccess) value = bridge::fromCF(answer.get());
  return error;
}

bool CFEqual(const AXUIElement& a, const AXUIElement& b) {
  return ::CFEqual(bridge::native(a), bridge::native(b)) != 0;
}

bool AXValueGetValue(const CFValue& value, CGPoint& out) {
  const auto* const point = value.as<CGPoint>();
  if (point != nullptr) out = *point;
  return point != nullptr;
}

bool AXValueGetValue(const CFValue& value, CGSize& out) {
  const auto* const size = value.as<CGSize>();
  if (size != nullptr) out = *size;
  return size != nullptr;
}

AXError AXObserverCreate(std::int32_t pid, AXObserverCallback callback, Ref<AXObserver>& out) {
  auto* const observer = [[VLMAccessibilityObserver alloc] init];
  const auto error = [observer watch:pid callback:std::move(callback)];
  if (error == ::kAXErrorSuccess) {
    out = Ref<AXObserver>::adopting(reinterpret_cast<AXObserver*>(observer));
  } else {
    [observer release];
  }
  return error;
}

AXError AXObserverAddNotification(AXObserver& observer, AXUIElement& element,
                                  std::string_view notification) {
  const auto name = bridge::toString(notification);
  if (!name) return ::kAXErrorFailure;
  return [native(observer) addNotification:name.get() element:bridge::native(element)];
}

CFRunLoopSource& AXObserverGetRunLoopSource(AXObserver& observer) {
  return *bridge::lent<CFRunLoopSource>([native(observer) source]);
}

}  // namespace vlm::platform
