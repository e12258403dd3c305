// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif
bool CGRectIntersectsRect(CGRect rect1, CGRect rect2) __attribute__((availability(macos,introduced=10.0)));
bool CGRectMakeWithDictionaryRepresentation(CFDictionaryRef dict, CGRect * rect) __attribute__((availability(macos,introduced=10.5)));
bool CGPreflightScreenCaptureAccess(void) __attribute__((availability(macos,introduced=10.15)));
bool CGRequestScreenCaptureAccess(void) __attribute__((availability(macos,introduced=10.15)));
typedef enum CGWindowListOption : uint32_t CGWindowListOption;
enum CGWindowListOption : uint32_t {
  kCGWindowListOptionAll = 0,
  kCGWindowListOptionOnScreenOnly = 1,
  kCGWindowListOptionOnScreenAboveWindow = 2,
  kCGWindowListOptionOnScreenBelowWindow = 4,
  kCGWindowListOptionIncludingWindow = 8,
  kCGWindowListExcludeDesktopElements = 16
};
typedef uint32_t CGWindowID;
CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow) __attribute__((availability(macos,introduced=10.5)));
typedef struct __CGEvent * CGEventRef;
typedef struct __CGEventSource * CGEventSourceRef;
CGEventRef CGEventCreate(CGEventSourceRef source) __attribute__((availability(macos,introduced=10.4)));
typedef enum CGEventType : uint32_t CGEventType;
enum CGEventType : uint32_t {
  kCGEventNull = 0,
  kCGEventLeftMouseDown = 1,
  kCGEventLeftMouseUp = 2,
  kCGEventRightMouseDown = 3,
  kCGEventRightMouseUp = 4,
  kCGEventMouseMoved = 5,
  kCGEventLeftMouseDragged = 6,
  kCGEventRightMouseDragged = 7,
  kCGEventKeyDown = 10,
  kCGEventKeyUp = 11,
  kCGEventFlagsChanged = 12,
  kCGEventScrollWheel = 22,
  kCGEventTabletPointer = 23,
  kCGEventTabletProximity = 24,
  kCGEventOtherMouseDown = 25,
  kCGEventOtherMouseUp = 26,
  kCGEventOtherMouseDragged = 27,
  kCGEventTapDisabledByTimeout = 4294967294,
  kCGEventTapDisabledByUserInput = 4294967295
};
typedef enum CGMouseButton : uint32_t CGMouseButton;
enum CGMouseButton : uint32_t {
  kCGMouseButtonLeft = 0,
  kCGMouseButtonRight = 1,
  kCGMouseButtonCenter = 2
};
CGEventRef CGEventCreateMouseEvent(CGEventSourceRef source, CGEventType mouseType, CGPoint mouseCursorPosition, CGMouseButton mouseButton) __attribute__((availability(macos,introduced=10.4)));
typedef enum CGScrollEventUnit : uint32_t CGScrollEventUnit;
enum CGScrollEventUnit : uint32_t {
  kCGScrollEventUnitPixel = 0,
  kCGScrollEventUnitLine = 1
};
CGEventRef CGEventCreateScrollWheelEvent2(CGEventSourceRef source, CGScrollEventUnit units, uint32_t wheelCount, int32_t wheel1, int32_t wheel2, int32_t wheel3) __attribute__((availability(macos,introduced=10.13)));
typedef uint16_t CGKeyCode;
CGEventRef CGEventCreateKeyboardEvent(CGEventSourceRef source, CGKeyCode virtualKey, bool keyDown) __attribute__((availability(macos,introduced=10.4)));
typedef enum CGEventFlags : uint64_t CGEventFlags;
enum CGEventFlags : uint64_t {
  kCGEventFlagMaskNonCoalesced = 256,
  kCGEventFlagMaskAlphaShift = 65536,
  kCGEventFlagMaskShift = 131072,
  kCGEventFlagMaskControl = 262144,
  kCGEventFlagMaskAlternate = 524288,
  kCGEventFlagMaskCommand = 1048576,
  kCGEventFlagMaskNumericPad = 2097152,
  kCGEventFlagMaskHelp = 4194304,
  kCGEventFlagMaskSecondaryFn = 8388608
};
void CGEventSetFlags(CGEventRef event, CGEventFlags flags) __attribute__((availability(macos,introduced=10.4)));
struct CGPoint CGEventGetLocation(CGEventRef event) __attribute__((availability(macos,introduced=10.4)));
typedef enum CGEventTapLocation : uint32_t CGEventTapLocation;
enum CGEventTapLocation : uint32_t {
  kCGHIDEventTap = 0,
  kCGSessionEventTap = 1,
  kCGAnnotatedSessionEventTap = 2
};
void CGEventPost(CGEventTapLocation tap, CGEventRef event) __attribute__((availability(macos,introduced=10.4)));
typedef enum CGError : int32_t CGError;
enum CGError : int32_t {
  kCGErrorSuccess = 0,
  kCGErrorFailure = 1000,
  kCGErrorIllegalArgument = 1001,
  kCGErrorInvalidConnection = 1002,
  kCGErrorInvalidContext = 1003,
  kCGErrorCannotComplete = 1004,
  kCGErrorNotImplemented = 1006,
  kCGErrorRangeCheck = 1007,
  kCGErrorTypeCheck = 1008,
  kCGErrorInvalidOperation = 1010,
  kCGErrorNoneAvailable = 1011
};
CGError CGWarpMouseCursorPosition(CGPoint newCursorPosition) __attribute__((availability(macos,introduced=10.0)));
CGError CGAssociateMouseAndMouseCursorPosition(boolean_t connected) __attribute__((availability(macos,introduced=10.0)));
typedef struct CGColor * CGColorRef;
CGColorRef CGColorCreateSRGB(CGFloat red, CGFloat green, CGFloat blue, CGFloat alpha) __attribute__((availability(macos,introduced=10.15)));
void CGColorRelease(CGColorRef color) __attribute__((availability(macos,introduced=10.3)));
extern const CFStringRef kCGWindowOwnerPID __attribute__((availability(macos,introduced=10.5)));
extern const CFStringRef kCGWindowNumber __attribute__((availability(macos,introduced=10.5)));
extern const CFStringRef kCGWindowBounds __attribute__((availability(macos,introduced=10.5)));
enum { kCGNullWindowID = 0 };
typedef uint32_t CGDirectDisplayID;
#ifdef __cplusplus
}
#endif
