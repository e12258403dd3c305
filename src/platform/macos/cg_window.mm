#include "platform/cg_window.h"

#import <CoreGraphics/CoreGraphics.h>

#include "platform/macos/bridge/native.h"
#include "platform/macos/bridge/owned.h"
#include "platform/macos/bridge/values.h"

namespace vlm::platform {

namespace {

static_assert(kCGWindowListOptionOnScreenOnly == ::kCGWindowListOptionOnScreenOnly);
static_assert(kCGWindowListOptionIncludingWindow == ::kCGWindowListOptionIncludingWindow);
static_assert(kCGWindowListExcludeDesktopElements == ::kCGWindowListExcludeDesktopElements);

// Rectangles have a function of their own, which knows the keys of the dictionary. Anything that is
// no rectangle is passed on as what it is.
CFValue boundsOf(CFTypeRef value) {
  ::CGRect rect{};
  if (value == nullptr || ::CFGetTypeID(value) != ::CFDictionaryGetTypeID() ||
      !::CGRectMakeWithDictionaryRepresentation(static_cast<CFDictionaryRef>(value), &rect)) {
    return bridge::fromCF(value);
  }
  return CFDictionary{{"X", rect.origin.x},
                      {"Y", rect.origin.y},
                      {"Width", rect.size.width},
                      {"Height", rect.size.height}};
}

// The entries that the header names. A window has a dozen more, which no caller asks for.
CFValue windowOf(CFTypeRef object) {
  if (::CFGetTypeID(object) != ::CFDictionaryGetTypeID()) return bridge::fromCF(object);
  const auto window = static_cast<CFDictionaryRef>(object);
  CFDictionary result;
  const auto add = [&](std::string_view name, CFStringRef key, auto convert) {
    const auto* const value = ::CFDictionaryGetValue(window, key);
    if (value != nullptr) result.emplace(name, convert(value));
  };
  add(kCGWindowOwnerPID, ::kCGWindowOwnerPID, bridge::fromCF);
  add(kCGWindowNumber, ::kCGWindowNumber, bridge::fromCF);
  add(kCGWindowBounds, ::kCGWindowBounds, boundsOf);
  return result;
}

}  // namespace

std::optional<CFArray> CGWindowListCopyWindowInfo(CGWindowListOption options,
                                                  CGWindowID relativeToWindow) {
  const bridge::Owned<CFArrayRef> windows(::CGWindowListCopyWindowInfo(
      static_cast<::CGWindowListOption>(options), relativeToWindow));
  if (!windows) return std::nullopt;
  const auto count = ::CFArrayGetCount(windows.get());
  CFArray result;
  result.reserve(static_cast<std::size_t>(count));
  for (CFIndex i = 0; i < count; ++i) {
    result.push_back(windowOf(::CFArrayGetValueAtIndex(windows.get(), i)));
  }
  return result;
}

}  // namespace vlm::platform
