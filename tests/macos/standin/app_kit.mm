// AppKit, the display layer and the events of Core Graphics. What only the main thread may do ends
// the process anywhere else.
#import <AVFoundation/AVFoundation.h>
#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>

#include <Block.h>

#include <cstdio>
#include <cstdlib>
#include <set>

#include "standin/objects.h"
#include "standin/stage.h"

using standin::object;
using standin::requireMainThread;
using standin::stage;
using standin::state;

namespace {

struct ViewState {
  CALayer* layer = nil;
  CGRect frame{};
};
struct LayerState {
  double scale = 1;
  std::vector<id> samples;
};

std::set<NSView*> views;
std::set<id> layers;
std::mutex layersMutex;

void empty(LayerState& layer) {
  for (id sample : layer.samples) [sample release];
  layer.samples.clear();
}

}  // namespace

namespace standin {

void requireMainThread(const char* caller) {
  if ([NSThread isMainThread]) return;
  std::fprintf(stderr, "%s is for the main thread alone\n", caller);
  std::abort();
}

void moveViews() {
  for (NSView* view : views) [view viewDidMoveToWindow];
}

std::vector<CVPixelBufferRef> shown() {
  std::vector<CVPixelBufferRef> images;
  const std::lock_guard lock(layersMutex);
  for (id layer : layers) {
    for (id sample : state<LayerState>(layer).samples) {
      images.push_back(CMSampleBufferGetImageBuffer(reinterpret_cast<CMSampleBufferRef>(sample)));
    }
  }
  return images;
}

}  // namespace standin

@implementation CALayer
- (void)setBackgroundColor:(CGColorRef)color {}
- (CGFloat)contentsScale { return state<LayerState>(self).scale; }
- (void)setContentsScale:(CGFloat)scale { state<LayerState>(self).scale = scale; }
- (void)setFrame:(CGRect)frame {}
@end
@implementation AVSampleBufferDisplayLayer
- (instancetype)init {
  const std::lock_guard lock(layersMutex);
  layers.insert(self);
  return self;
}
- (void)dealloc {
  requireMainThread("the end of a layer");
  {
    const std::lock_guard lock(layersMutex);
    layers.erase(self);
  }
  empty(state<LayerState>(self));
  standin::forget<LayerState>(self);
  [super dealloc];
}
- (void)setVideoGravity:(AVLayerVideoGravity)gravity {}
- (AVQueuedSampleBufferRenderingStatus)status {
  return stage().layerHasFailed ? AVQueuedSampleBufferRenderingStatusFailed
                                : AVQueuedSampleBufferRenderingStatusRendering;
}
- (BOOL)requiresFlushToResumeDecoding { return NO; }
- (BOOL)isReadyForMoreMediaData { return !stage().layerIsBusy; }
- (void)flush {}
- (void)flushAndRemoveImage { empty(state<LayerState>(self)); }
- (void)enqueueSampleBuffer:(CMSampleBufferRef)sample {
  if (stage().throws) [NSException raise:@"StandIn" format:@"no sample today"];
  state<LayerState>(self).samples.push_back([object(sample) retain]);
}
@end

@implementation NSView
- (instancetype)initWithFrame:(NSRect)frame {
  requireMainThread("a new view");
  state<ViewState>(self).frame = frame;
  views.insert(self);
  return self;
}
- (void)dealloc {
  requireMainThread("the end of a view");
  views.erase(self);
  [state<ViewState>(self).layer release];
  standin::forget<ViewState>(self);
  [super dealloc];
}
- (NSView*)hitTest:(NSPoint)point { return self; }
- (void)viewDidMoveToWindow {}
- (void)viewDidChangeBackingProperties {}
- (void)setLayer:(CALayer*)layer {
  requireMainThread("setLayer");
  [layer retain];
  [state<ViewState>(self).layer release];
  state<ViewState>(self).layer = layer;
}
- (void)setWantsLayer:(BOOL)wanted {}
- (NSRect)bounds { return state<ViewState>(self).frame; }
- (NSWindow*)window {
  return stage().windowScale == 0 ? nil : [[[NSWindow alloc] init] autorelease];
}
- (void)removeFromSuperview { requireMainThread("removeFromSuperview"); }
@end
@implementation NSWindow
- (CGFloat)backingScaleFactor { return stage().windowScale; }
@end
@implementation NSScreen
+ (NSScreen*)mainScreen { return nil; }
- (CGFloat)backingScaleFactor { return 0; }
@end
@implementation NSRunningApplication
- (NSString*)bundleIdentifier { return @"org.example.notes"; }
- (pid_t)processIdentifier { return 42; }
@end
@implementation NSWorkspace
+ (NSWorkspace*)sharedWorkspace { return [[[NSWorkspace alloc] init] autorelease]; }
- (BOOL)openURL:(NSURL*)url {
  stage().posted.push_back(std::string("open ") + [[url absoluteString] UTF8String]);
  return YES;
}
- (NSArray*)runningApplications { return [NSArray arrayWithObject:[self frontmostApplication]]; }
- (NSRunningApplication*)frontmostApplication {
  return [[[NSRunningApplication alloc] init] autorelease];
}
@end

@interface StandInMonitor : NSObject {
 @public
  void (^watch)(NSEvent*);
  NSEvent* (^filter)(NSEvent*);
}
@end
namespace {
std::set<StandInMonitor*> monitors;
id monitor(void (^watch)(NSEvent*), NSEvent* (^filter)(NSEvent*)) {
  requireMainThread("a monitor");
  auto* const made = [[[StandInMonitor alloc] init] autorelease];
  made->watch = Block_copy(watch);
  made->filter = Block_copy(filter);
  monitors.insert([made retain]);  // AppKit keeps its monitors
  return made;
}
}  // namespace
@implementation StandInMonitor
- (void)dealloc {
  Block_release(watch);
  Block_release(filter);
  [super dealloc];
}
@end
@implementation NSEvent
- (unsigned short)keyCode { return state<unsigned short>(self); }
- (void)dealloc {
  standin::forget<unsigned short>(self);
  [super dealloc];
}
+ (id)addGlobalMonitorForEventsMatchingMask:(NSEventMask)mask handler:(void (^)(NSEvent*))block {
  return mask == NSEventMaskKeyDown ? monitor(block, nil) : nil;
}
+ (id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask
                                   handler:(NSEvent* (^)(NSEvent*))block {
  return mask == NSEventMaskKeyDown ? monitor(nil, block) : nil;
}
+ (void)removeMonitor:(id)token {
  requireMainThread("removeMonitor");
  if (monitors.erase(token) != 1) std::abort();
  [token release];
}
@end

void standin::press(unsigned short keyCode, bool elsewhere) {
  NSEvent* const event = [[[NSEvent alloc] init] autorelease];
  state<unsigned short>(event) = keyCode;
  const auto all = monitors;
  for (StandInMonitor* each : all) {
    if (elsewhere && each->watch != nil) each->watch(event);
    if (!elsewhere && each->filter != nil && each->filter(event) != event) std::abort();
  }
}

@interface StandInColor : NSObject
@end
@implementation StandInColor
@end
@interface StandInEvent : NSObject {
 @public
  char words[64];
  unsigned long long flags;
}
@end
@implementation StandInEvent
@end

// The description is always one of the literals below.
#pragma clang diagnostic ignored "-Wformat-security"
template <class... Values>
static CGEventRef eventOf(const char* form, Values... values) {
  auto* const event = [[StandInEvent alloc] init];
  std::snprintf(event->words, sizeof event->words, form, values...);
  return reinterpret_cast<CGEventRef>(event);
}

extern "C" {

CGColorRef CGColorCreateSRGB(CGFloat, CGFloat, CGFloat, CGFloat) {
  return reinterpret_cast<CGColorRef>([[StandInColor alloc] init]);
}
bool CGRectIntersectsRect(CGRect a, CGRect b) {
  return a.origin.x < b.origin.x + b.size.width && b.origin.x < a.origin.x + a.size.width &&
         a.origin.y < b.origin.y + b.size.height && b.origin.y < a.origin.y + a.size.height;
}
bool CGPreflightScreenCaptureAccess(void) { return true; }
bool CGRequestScreenCaptureAccess(void) { return true; }

CGEventRef CGEventCreate(CGEventSourceRef) { return eventOf("nothing"); }
CGEventRef CGEventCreateMouseEvent(CGEventSourceRef, CGEventType type, CGPoint at, CGMouseButton button) {
  return eventOf("mouse %u %g,%g %u", type, at.x, at.y, button);
}
CGEventRef CGEventCreateScrollWheelEvent2(CGEventSourceRef, CGScrollEventUnit unit, uint32_t wheels,
                                          int32_t first, int32_t second, int32_t) {
  return eventOf("wheel %u %u %d,%d", unit, wheels, first, second);
}
CGEventRef CGEventCreateKeyboardEvent(CGEventSourceRef, CGKeyCode key, bool down) {
  return eventOf("key %u %d", key, down);
}
void CGEventSetFlags(CGEventRef event, CGEventFlags flags) {
  static_cast<StandInEvent*>(object(event))->flags = flags;
}
CGPoint CGEventGetLocation(CGEventRef) { return {12, 34}; }
void CGEventPost(CGEventTapLocation, CGEventRef reference) {
  auto* const event = static_cast<StandInEvent*>(object(reference));
  stage().posted.push_back(event->words + (event->flags == 0 ? "" : " " + std::to_string(event->flags)));
}
CGError CGWarpMouseCursorPosition(CGPoint at) {
  stage().posted.push_back("warp " + std::to_string(static_cast<int>(at.x)));
  return kCGErrorSuccess;
}
CGError CGAssociateMouseAndMouseCursorPosition(boolean_t) { return kCGErrorSuccess; }

}  // extern "C"
