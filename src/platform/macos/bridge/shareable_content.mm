#include "platform/macos/bridge/shareable_content.h"

#include <map>

#include "platform/macos/bridge/native.h"
#include "platform/macos/bridge/objc.h"
#include "platform/macos/bridge/owned.h"
#include "platform/macos/bridge/values.h"

namespace vlm::platform::bridge {

namespace {

// A record with the object that it was made from.
template <class Record, class Native>
struct Kept : Record {
  Objc<Native> native;
};
using Window = Kept<SCWindow, ::SCWindow>;
using Application = Kept<SCRunningApplication, ::SCRunningApplication>;
using Display = Kept<SCDisplay, ::SCDisplay>;

// Makes one record for an application, however many of the content's windows it owns.
class Applications {
 public:
  std::shared_ptr<const SCRunningApplication> of(::SCRunningApplication* native) {
    if (native == nil) return nullptr;
    auto& known = known_[native.processID];
    if (known == nullptr) {
      auto made = std::make_shared<Application>();
      made->native = Objc<::SCRunningApplication>::retaining(native);
      made->bundleIdentifier = text(native.bundleIdentifier);
      made->processID = native.processID;
      known = std::move(made);
    }
    return known;
  }

 private:
  std::map<std::int32_t, std::shared_ptr<const SCRunningApplication>> known_;
};

std::shared_ptr<const SCWindow> windowOf(::SCWindow* native, Applications& applications) {
  auto window = std::make_shared<Window>();
  window->native = Objc<::SCWindow>::retaining(native);
  window->windowID = native.windowID;
  window->title = optionalText(native.title);
  window->frame = fromNative(native.frame);
  window->owningApplication = applications.of(native.owningApplication);
  return window;
}

std::shared_ptr<const SCDisplay> displayOf(::SCDisplay* native) {
  auto display = std::make_shared<Display>();
  display->native = Objc<::SCDisplay>::retaining(native);
  display->displayID = native.displayID;
  display->frame = fromNative(native.frame);
  return display;
}

template <class Native, class Record>
NSArray<Native*>* arrayOf(const std::vector<std::shared_ptr<const Record>>& records) {
  const CFMutableArrayRef array =
      ::CFArrayCreateMutable(::kCFAllocatorDefault, 0, &::kCFTypeArrayCallBacks);
  for (const auto& record : records) ::CFArrayAppendValue(array, native(*record));
  return [(NSArray<Native*>*)array autorelease];
}

}  // namespace

std::shared_ptr<const SCShareableContent> fromContent(::SCShareableContent* content) {
  if (content == nil) return nullptr;
  auto result = std::make_shared<SCShareableContent>();
  Applications applications;
  for (::SCWindow* window in content.windows) {
    result->windows.push_back(windowOf(window, applications));
  }
  for (::SCRunningApplication* application in content.applications) {
    result->applications.push_back(applications.of(application));
  }
  for (::SCDisplay* display in content.displays) result->displays.push_back(displayOf(display));
  return result;
}

::SCWindow* native(const SCWindow& window) {
  return static_cast<const Window&>(window).native.get();
}

::SCRunningApplication* native(const SCRunningApplication& application) {
  return static_cast<const Application&>(application).native.get();
}

::SCDisplay* native(const SCDisplay& display) {
  return static_cast<const Display&>(display).native.get();
}

NSArray<::SCWindow*>* natives(const std::vector<std::shared_ptr<const SCWindow>>& windows) {
  return arrayOf<::SCWindow>(windows);
}

NSArray<::SCRunningApplication*>* natives(
    const std::vector<std::shared_ptr<const SCRunningApplication>>& applications) {
  return arrayOf<::SCRunningApplication>(applications);
}

}  // namespace vlm::platform::bridge
