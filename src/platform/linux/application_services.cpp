#include "platform/application_services.h"

#include <memory>
#include <utility>

#include "platform/linux/accessibility/element.h"
#include "platform/linux/accessibility/window_watch.h"
#include "platform/linux/core_foundation.h"
#include "platform/linux/input/portal_poster.h"
#include "platform/linux/session/session_type.h"
#include "platform/linux/x11/access.h"

namespace vlm::platform {

class AXUIElement final : public accessibility::Element {
 public:
  using Element::Element;
};

class AXObserver final : public Object {
 public:
  explicit AXObserver(std::shared_ptr<accessibility::WindowWatch> itsWatch)
      : watch(std::move(itsWatch)),
        // The loop may still run the source while the observer goes.
        source(makeRef<CFRunLoopSource>(watch->descriptor(),
                                        [keptAlive = watch] { return keptAlive->readEvents(); })) {}

  const std::shared_ptr<accessibility::WindowWatch> watch;
  const Ref<CFRunLoopSource> source;
};

namespace {

CFValue valueOf(const x11::Window& window) {
  return makeRef<AXUIElement>(window);
}

CFValue valueOf(const std::vector<x11::Window>& windows) {
  CFArray elements;
  for (const auto& each : windows) elements.push_back(valueOf(each));
  return elements;
}

CFValue valueOf(std::monostate) {
  return {};
}

template <class Plain>
CFValue valueOf(Plain value) {
  return value;
}

}  // namespace

bool AXIsProcessTrusted() {
  return session::isWayland() ? input::PortalPoster::shared().mayPost() : x11::mayPostInput();
}

// X11 has no dialog for it: the answer stays what it is.
bool AXIsProcessTrustedWithOptions(const CFValue& options) {
  const auto* prompt = options.find(kAXTrustedCheckOptionPrompt);
  const auto* isWanted = prompt == nullptr ? nullptr : prompt->as<bool>();
  if (isWanted != nullptr && *isWanted && session::isWayland()) {
    return input::PortalPoster::shared().ask();
  }
  return AXIsProcessTrusted();
}

Ref<AXUIElement> AXUIElementCreateApplication(std::int32_t pid) {
  return makeRef<AXUIElement>(pid);
}

AXError AXUIElementCopyAttributeValue(AXUIElement& element, std::string_view attribute,
                                      CFValue& value) {
  accessibility::Value found;
  const auto status = element.copyAttribute(attribute, found);
  if (status == kAXErrorSuccess) {
    value = std::visit([](const auto& each) { return valueOf(each); }, found);
  }
  return status;
}

bool CFEqual(const AXUIElement& a, const AXUIElement& b) {
  return a.processId == b.processId && a.window == b.window;
}

AXError AXObserverCreate(std::int32_t pid, AXObserverCallback callback, Ref<AXObserver>& out) {
  auto watch = accessibility::WindowWatch::make(pid, std::move(callback));
  if (!watch) return kAXErrorCannotComplete;
  out = makeRef<AXObserver>(std::move(watch));
  return kAXErrorSuccess;
}

AXError AXObserverAddNotification(AXObserver& observer, AXUIElement&,
                                  std::string_view notification) {
  observer.watch->want(notification);
  return kAXErrorSuccess;
}

CFRunLoopSource& AXObserverGetRunLoopSource(AXObserver& observer) {
  return *observer.source;
}

}  // namespace vlm::platform
