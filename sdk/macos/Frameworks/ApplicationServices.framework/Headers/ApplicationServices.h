// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif
Boolean AXIsProcessTrusted(void) __attribute__((availability(macos,introduced=10.4)));
Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options) __attribute__((availability(macos,introduced=10.9)));
typedef const struct __AXUIElement * AXUIElementRef;
AXUIElementRef AXUIElementCreateApplication(pid_t pid);
typedef enum AXError : int32_t AXError;
enum AXError : int32_t {
  kAXErrorNotEnoughPrecision = -25214,
  kAXErrorParameterizedAttributeUnsupported = -25213,
  kAXErrorNoValue = -25212,
  kAXErrorAPIDisabled = -25211,
  kAXErrorNotificationNotRegistered = -25210,
  kAXErrorNotificationAlreadyRegistered = -25209,
  kAXErrorNotImplemented = -25208,
  kAXErrorNotificationUnsupported = -25207,
  kAXErrorActionUnsupported = -25206,
  kAXErrorAttributeUnsupported = -25205,
  kAXErrorCannotComplete = -25204,
  kAXErrorInvalidUIElementObserver = -25203,
  kAXErrorInvalidUIElement = -25202,
  kAXErrorIllegalArgument = -25201,
  kAXErrorFailure = -25200,
  kAXErrorSuccess = 0
};
AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute, CFTypeRef  _Nullable * value);
CFTypeID AXUIElementGetTypeID(void);
CFTypeID AXValueGetTypeID(void) __attribute__((availability(macos,introduced=10.3)));
typedef enum AXValueType : uint32_t AXValueType;
enum AXValueType : uint32_t {
  kAXValueTypeIllegal = 0,
  kAXValueTypeCGPoint = 1,
  kAXValueTypeCGSize = 2,
  kAXValueTypeCGRect = 3,
  kAXValueTypeCFRange = 4,
  kAXValueTypeAXError = 5
};
typedef const struct __AXValue * AXValueRef;
AXValueType AXValueGetType(AXValueRef value);
Boolean AXValueGetValue(AXValueRef value, AXValueType theType, void * valuePtr);
AXValueRef AXValueCreate(AXValueType theType, const void * valuePtr);
typedef struct __AXObserver * AXObserverRef;
typedef void (*AXObserverCallback)(AXObserverRef _Nonnull, AXUIElementRef _Nonnull, CFStringRef _Nonnull, void * _Nullable);
AXError AXObserverCreate(pid_t application, AXObserverCallback callback, AXObserverRef  _Nullable * outObserver);
AXError AXObserverAddNotification(AXObserverRef observer, AXUIElementRef element, CFStringRef notification, void * refcon);
CFRunLoopSourceRef AXObserverGetRunLoopSource(AXObserverRef observer);
extern CFStringRef kAXTrustedCheckOptionPrompt __attribute__((availability(macos,introduced=10.9)));
#define kAXMainWindowAttribute CFSTR("AXMainWindow")
#define kAXFocusedWindowAttribute CFSTR("AXFocusedWindow")
#define kAXWindowsAttribute CFSTR("AXWindows")
#define kAXMinimizedAttribute CFSTR("AXMinimized")
#define kAXPositionAttribute CFSTR("AXPosition")
#define kAXSizeAttribute CFSTR("AXSize")
#define kAXTitleAttribute CFSTR("AXTitle")
#define kAXWindowMovedNotification CFSTR("AXWindowMoved")
#define kAXWindowResizedNotification CFSTR("AXWindowResized")
#define kAXFocusedWindowChangedNotification CFSTR("AXFocusedWindowChanged")
#define kAXApplicationActivatedNotification CFSTR("AXApplicationActivated")
#define kAXApplicationDeactivatedNotification CFSTR("AXApplicationDeactivated")
#define kAXUIElementDestroyedNotification CFSTR("AXUIElementDestroyed")
#ifdef __cplusplus
}
#endif
