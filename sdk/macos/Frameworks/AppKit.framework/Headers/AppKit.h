// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>
#import <QuartzCore/QuartzCore.h>

@class NSApplication, NSEvent, NSRunningApplication, NSScreen, NSView, NSWindow, NSWorkspace;
#ifdef __cplusplus
extern "C" {
#endif
typedef enum NSWindowStyleMask : uint64_t NSWindowStyleMask;
enum NSWindowStyleMask : uint64_t {
  NSWindowStyleMaskBorderless = 0,
  NSWindowStyleMaskTitled = 1,
  NSWindowStyleMaskClosable = 2,
  NSWindowStyleMaskMiniaturizable = 4,
  NSWindowStyleMaskResizable = 8,
  NSWindowStyleMaskUtilityWindow = 16,
  NSWindowStyleMaskDocModalWindow = 64,
  NSWindowStyleMaskNonactivatingPanel = 128,
  NSWindowStyleMaskTexturedBackground = 256,
  NSWindowStyleMaskUnifiedTitleAndToolbar = 4096,
  NSWindowStyleMaskHUDWindow = 8192,
  NSWindowStyleMaskFullScreen = 16384,
  NSWindowStyleMaskFullSizeContentView = 32768
};
typedef enum NSBackingStoreType : uint64_t NSBackingStoreType;
enum NSBackingStoreType : uint64_t {
  NSBackingStoreRetained = 0,
  NSBackingStoreNonretained = 1,
  NSBackingStoreBuffered = 2
};
typedef enum NSApplicationActivationPolicy : int64_t NSApplicationActivationPolicy;
enum NSApplicationActivationPolicy : int64_t {
  NSApplicationActivationPolicyRegular = 0,
  NSApplicationActivationPolicyAccessory = 1,
  NSApplicationActivationPolicyProhibited = 2
};
typedef enum NSEventMask : uint64_t NSEventMask;
enum NSEventMask : uint64_t {
  NSEventMaskLeftMouseDown = 2,
  NSEventMaskLeftMouseUp = 4,
  NSEventMaskRightMouseDown = 8,
  NSEventMaskRightMouseUp = 16,
  NSEventMaskMouseMoved = 32,
  NSEventMaskLeftMouseDragged = 64,
  NSEventMaskRightMouseDragged = 128,
  NSEventMaskMouseEntered = 256,
  NSEventMaskMouseExited = 512,
  NSEventMaskKeyDown = 1024,
  NSEventMaskKeyUp = 2048,
  NSEventMaskFlagsChanged = 4096,
  NSEventMaskAppKitDefined = 8192,
  NSEventMaskSystemDefined = 16384,
  NSEventMaskApplicationDefined = 32768,
  NSEventMaskPeriodic = 65536,
  NSEventMaskCursorUpdate = 131072,
  NSEventMaskRotate = 262144,
  NSEventMaskBeginGesture = 524288,
  NSEventMaskEndGesture = 1048576,
  NSEventMaskScrollWheel = 4194304,
  NSEventMaskTabletPoint = 8388608,
  NSEventMaskTabletProximity = 16777216,
  NSEventMaskOtherMouseDown = 33554432,
  NSEventMaskOtherMouseUp = 67108864,
  NSEventMaskOtherMouseDragged = 134217728,
  NSEventMaskGesture = 536870912,
  NSEventMaskMagnify = 1073741824,
  NSEventMaskSwipe = 2147483648,
  NSEventMaskSmartMagnify = 4294967296,
  NSEventMaskPressure = 17179869184,
  NSEventMaskDirectTouch = 137438953472,
  NSEventMaskChangeMode = 274877906944,
  NSEventMaskMouseCancelled = 1099511627776,
  NSEventMaskAny = 18446744073709551615
};
#ifdef __cplusplus
}
#endif
@interface NSView : NSObject
- (instancetype)initWithFrame:(NSRect)frameRect;
- (NSView *)hitTest:(NSPoint)point;
- (void)viewDidMoveToWindow;
- (void)viewDidChangeBackingProperties __attribute__((availability(macos,introduced=10.7)));
- (void)setLayer:(CALayer *)layer;
- (void)setWantsLayer:(BOOL)wantsLayer;
- (NSRect)bounds;
- (NSWindow *)window;
- (void)removeFromSuperview;
@end
@interface NSWindow : NSObject
- (CGFloat)backingScaleFactor;
- (instancetype)initWithContentRect:(NSRect)contentRect styleMask:(NSWindowStyleMask)style backing:(NSBackingStoreType)backingStoreType defer:(BOOL)flag;
- (void)setTitle:(NSString *)title;
- (void)setContentView:(__kindof NSView *)contentView;
- (void)makeKeyAndOrderFront:(id)sender;
- (void)close;
@end
@interface NSApplication : NSObject
+ (__kindof NSApplication *)sharedApplication;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)activationPolicy __attribute__((availability(macos,introduced=10.6)));
- (void)finishLaunching;
- (NSEvent *)nextEventMatchingMask:(NSEventMask)mask untilDate:(NSDate *)expiration inMode:(NSRunLoopMode)mode dequeue:(BOOL)deqFlag;
- (void)sendEvent:(NSEvent *)event;
@end
@interface NSScreen : NSObject
+ (NSScreen *)mainScreen;
- (CGFloat)backingScaleFactor;
@end
@interface NSWorkspace : NSObject
+ (NSWorkspace *)sharedWorkspace;
- (BOOL)openURL:(NSURL *)url;
- (NSArray<NSRunningApplication *> *)runningApplications;
- (NSRunningApplication *)frontmostApplication;
@end
@interface NSRunningApplication : NSObject
- (NSString *)bundleIdentifier;
- (pid_t)processIdentifier;
@end
@interface NSEvent : NSObject
- (unsigned short)keyCode;
+ (id)addGlobalMonitorForEventsMatchingMask:(NSEventMask)mask handler:(void (^)(NSEvent * _Nonnull))block __attribute__((availability(macos,introduced=10.6)));
+ (id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask handler:(NSEvent * _Nullable (^)(NSEvent * _Nonnull))block __attribute__((availability(macos,introduced=10.6)));
+ (void)removeMonitor:(id)eventMonitor __attribute__((availability(macos,introduced=10.6)));
@end
