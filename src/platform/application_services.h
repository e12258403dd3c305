#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "platform/cf_value.h"
#include "platform/core_foundation.h"
#include "platform/core_graphics.h"
#include "platform/ref.h"

namespace vlm::platform {

// Whether this process may watch and drive the windows and the input of others. Any thread.
bool AXIsProcessTrusted();
// The same; with the prompt option true a system that can grant the right asks the user for it.
inline constexpr std::string_view kAXTrustedCheckOptionPrompt = "AXTrustedCheckOptionPrompt";
bool AXIsProcessTrustedWithOptions(const CFValue& options);

using AXError = std::int32_t;
inline constexpr AXError kAXErrorSuccess = 0;
inline constexpr AXError kAXErrorFailure = -25200;
inline constexpr AXError kAXErrorInvalidUIElement = -25202;
inline constexpr AXError kAXErrorCannotComplete = -25204;
inline constexpr AXError kAXErrorAttributeUnsupported = -25205;
inline constexpr AXError kAXErrorNoValue = -25212;

// Attributes: of an application its main window and its focused window (elements) and its windows
// (an array of elements); of a window whether it is minimised (a truth value), its position (a
// point), its size and its title. Apple defines these names, and those of the notifications, with a
// leading k as macros, which would replace ours: so ours go without it.
inline constexpr std::string_view AXMainWindowAttribute = "AXMainWindow";
inline constexpr std::string_view AXFocusedWindowAttribute = "AXFocusedWindow";
inline constexpr std::string_view AXWindowsAttribute = "AXWindows";
inline constexpr std::string_view AXMinimizedAttribute = "AXMinimized";
inline constexpr std::string_view AXPositionAttribute = "AXPosition";
inline constexpr std::string_view AXSizeAttribute = "AXSize";
inline constexpr std::string_view AXTitleAttribute = "AXTitle";

// An application or one of its windows, as assistive programs see it. Counted. It may outlive the
// application or window: then its attributes can't be read. Any thread.
class AXUIElement;

Ref<AXUIElement> AXUIElementCreateApplication(std::int32_t pid);
// `value` is written only on success, and may then still be null.
AXError AXUIElementCopyAttributeValue(AXUIElement& element, std::string_view attribute,
                                      CFValue& value);
// True when both are the same window or application.
bool CFEqual(const AXUIElement& a, const AXUIElement& b);

// The point or size in a value; false, with `out` untouched, when it holds none.
bool AXValueGetValue(const CFValue& value, CGPoint& out);
bool AXValueGetValue(const CFValue& value, CGSize& out);

inline constexpr std::string_view AXWindowMovedNotification = "AXWindowMoved";
inline constexpr std::string_view AXWindowResizedNotification = "AXWindowResized";
inline constexpr std::string_view AXFocusedWindowChangedNotification = "AXFocusedWindowChanged";
inline constexpr std::string_view AXApplicationActivatedNotification = "AXApplicationActivated";
inline constexpr std::string_view AXApplicationDeactivatedNotification = "AXApplicationDeactivated";
inline constexpr std::string_view AXUIElementDestroyedNotification = "AXUIElementDestroyed";

// Watches one application. Counted; releasing it ends delivery.
class AXObserver;
// Gets the name of each notification, on the main thread, while the observer's source is added to
// the main run loop.
using AXObserverCallback = std::function<void(std::string_view notification)>;

// `out` is written only on success.
AXError AXObserverCreate(std::int32_t pid, AXObserverCallback callback, Ref<AXObserver>& out);
AXError AXObserverAddNotification(AXObserver& observer, AXUIElement& element,
                                  std::string_view notification);
// Lent: lives as long as the observer.
CFRunLoopSource& AXObserverGetRunLoopSource(AXObserver& observer);

}  // namespace vlm::platform
