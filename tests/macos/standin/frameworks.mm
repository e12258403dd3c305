// The frameworks' functions and classes as far as the tests go, on the stage.
#import <CoreGraphics/CoreGraphics.h>
#import <CoreMedia/CoreMedia.h>
#import <IOKit/IOKitLib.h>
#import <Security/Security.h>

#include <Block.h>
#include <dispatch/dispatch.h>

#include <condition_variable>
#include <cstring>
#include <mutex>
#include <set>
#include <thread>

#include "standin/allocations.h"
#include "standin/media_objects.h"
#include "standin/stage.h"

using standin::object;
using standin::stage;

@interface StandInObserver : NSObject {
 @public
  AXObserverCallback callback;
  void* context;
  NSMutableSet* names;
  NSObject* source;
}
@end
@interface StandInWindow : SCWindow {
 @public
  unsigned number;
  NSString* name;
  SCRunningApplication* owner;
}
@end
@interface StandInApplication : SCRunningApplication {
 @public
  NSString* bundle;
  int pid;
}
@end
@interface StandInContent : SCShareableContent {
 @public
  NSArray *allWindows, *allApplications, *allDisplays;
}
@end
@interface StandInStream : SCStream {
 @public
  id<SCStreamDelegate> delegate;  // not kept, as on a Mac
  NSMutableArray* outputs;
}
@end

namespace standin {

namespace {
std::set<StandInObserver*> observers;
std::set<StandInStream*> streams;
std::set<NSObject*> sources;  // that the main run loop has
const char* const kClasses[] = {"StandInSample",      "StandInObserver",   "StandInWindow",
                                "StandInApplication", "StandInContent",    "StandInStream",
                                "StandInElement",     "StandInGeometry",   "SCContentFilter",
                                "SCStreamConfiguration", "VLMStreamOutput", "VLMStreamDelegate",
                                "VLMAccessibilityObserver",
                                "StandInPixelBuffer", "StandInData", "StandInDescription",
                                "StandInEncoder", "StandInDecoder", "StandInColor", "StandInEvent",
                                "StandInMonitor", "VLMHostedView", "AVSampleBufferDisplayLayer",
                                "NSEvent", "AVAudioFormat", "AVAudioPCMBuffer", "AVAudioConverter",
                                "AVAudioEngine", "AVAudioInputNode", "AVAudioOutputNode",
                                "AVAudioMixerNode", "AVAudioSourceNode", "AVAudioPlayer"};
}  // namespace

// Calls a handler from another thread, some time after the call that brought it.
template <class Handler, class Call>
void answer(Handler kept, Call call) {
  std::thread([kept, call] {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    @autoreleasepool {
      call(kept);
    }
    Block_release(kept);
  }).detach();
}

// A class that no test has used yet is not registered.
int alive_(const char* name) {
  const Class type = objc_lookUpClass(name);
  return type == Nil ? 0 : GSDebugAllocationCount(type);
}

std::map<std::string, int> objectsAlive() {
  std::map<std::string, int> alive;
  for (const char* name : kClasses) {
    const int count = alive_(name);
    if (count != 0) alive[name] = count;
  }
  return alive;
}

Stage& stage() {
  static auto* current = new Stage;
  return *current;
}

Stage::~Stage() {
  for (id each : {(id)windows, (id)keychain, (id)lastQuery, (id)content, (id)contentError,
                  (id)trustOptions}) {
    [each release];
  }
}

void clear() {
  auto& current = stage();
  current.~Stage();
  new (&current) Stage;
}

void notify(const std::string& name) {
  NSString* const text = [NSString stringWithUTF8String:name.c_str()];
  const auto all = observers;
  for (StandInObserver* observer : all) {
    if (sources.count(observer->source) == 0 || ![observer->names containsObject:text]) continue;
    observer->callback(reinterpret_cast<AXObserverRef>(observer), nullptr,
                       reinterpret_cast<CFStringRef>(text), observer->context);
  }
}

SCWindow* makeWindow(unsigned number, NSString* title, SCRunningApplication* owner) {
  auto* const window = [[StandInWindow alloc] init];
  window->number = number;
  window->name = [title retain];
  window->owner = [owner retain];
  return [window autorelease];
}

SCRunningApplication* makeApplication(NSString* bundle, int pid) {
  auto* const application = [[StandInApplication alloc] init];
  application->bundle = [bundle retain];
  application->pid = pid;
  return [application autorelease];
}

SCShareableContent* makeContent(NSArray* windows, NSArray* applications, NSArray* displays) {
  auto* const content = [[StandInContent alloc] init];
  content->allWindows = [windows retain];
  content->allApplications = [applications retain];
  content->allDisplays = [displays retain];
  return content;
}

void deliverSample(int status, CVPixelBufferRef image) {
  auto* const sample = [[StandInSample alloc] init];
  sample->it = e::makeRef<e::CMSampleBuffer>();
  sample->it->timing.presentationTimeStamp = {1, 30};
  sample->image = [object(image) retain];
  NSMutableDictionary* const first = [NSMutableDictionary
      dictionaryWithObject:[NSNumber numberWithInt:status]
                    forKey:object(SCStreamFrameInfoStatus)];
  sample->attachments = [[NSMutableArray alloc] initWithObjects:first, nil];
  const auto all = streams;
  for (StandInStream* stream : all) {
    for (id<SCStreamOutput> output in [[stream->outputs copy] autorelease]) {
      standin::countAllocations();
      [output stream:stream
          didOutputSampleBuffer:reinterpret_cast<CMSampleBufferRef>(sample)
                         ofType:SCStreamOutputTypeScreen];
    }
  }
  [sample release];
}

void failStreams() {
  NSError* const error = [NSError errorWithDomain:@"stand-in" code:1 userInfo:nil];
  const auto all = streams;
  for (StandInStream* stream : all) [stream->delegate stream:stream didStopWithError:error];
}

}  // namespace standin

@implementation StandInElement
- (void)dealloc {
  [attributes release];
  [super dealloc];
}
@end
@implementation StandInGeometry
@end
@implementation StandInObserver
- (void)dealloc {
  standin::observers.erase(self);
  [names release];
  [source release];
  [super dealloc];
}
@end
@implementation SCWindow
- (CGWindowID)windowID { return 0; }
- (NSString*)title { return nil; }
- (CGRect)frame { return {{1, 2}, {300, 200}}; }
- (SCRunningApplication*)owningApplication { return nil; }
@end
@implementation StandInWindow
- (CGWindowID)windowID { return number; }
- (NSString*)title { return name; }
- (SCRunningApplication*)owningApplication { return owner; }
- (void)dealloc {
  [name release];
  [owner release];
  [super dealloc];
}
@end
@implementation SCRunningApplication
- (NSString*)bundleIdentifier { return nil; }
- (pid_t)processID { return 0; }
@end
@implementation StandInApplication
- (NSString*)bundleIdentifier { return bundle; }
- (pid_t)processID { return pid; }
- (void)dealloc {
  [bundle release];
  [super dealloc];
}
@end
@implementation SCDisplay
- (CGDirectDisplayID)displayID { return 1; }
- (CGRect)frame { return {{0, 0}, {1920, 1080}}; }
@end
@implementation SCShareableContent
- (NSArray*)windows { return nil; }
- (NSArray*)applications { return nil; }
- (NSArray*)displays { return nil; }
+ (void)getShareableContentExcludingDesktopWindows:(BOOL)desktop
                               onScreenWindowsOnly:(BOOL)onScreen
                                 completionHandler:(void (^)(SCShareableContent*, NSError*))handler {
  if (stage().throws) [NSException raise:@"StandIn" format:@"no content today"];
  standin::answer(Block_copy(handler), [](auto kept) { kept(stage().content, stage().contentError); });
}
@end
@implementation StandInContent
- (NSArray*)windows { return allWindows; }
- (NSArray*)applications { return allApplications; }
- (NSArray*)displays { return allDisplays; }
- (void)dealloc {
  [allWindows release];
  [allApplications release];
  [allDisplays release];
  [super dealloc];
}
@end
@implementation SCContentFilter
- (instancetype)initWithDesktopIndependentWindow:(SCWindow*)window {
  if (stage().throws) {
    [self release];
    [NSException raise:@"StandIn" format:@"no filter today"];
  }
  return [self init];
}
- (instancetype)initWithDisplay:(SCDisplay*)display
          includingApplications:(NSArray*)applications
               exceptingWindows:(NSArray*)windows {
  return [self init];
}
- (instancetype)initWithDisplay:(SCDisplay*)display excludingWindows:(NSArray*)windows {
  return [self init];
}
- (float)pointPixelScale { return 2; }
- (CGRect)contentRect { return {{0, 0}, {300, 200}}; }
@end
#define SETTING(type, name) - (void)set##name : (type)value {}
@implementation SCStreamConfiguration
SETTING(size_t, Width)
SETTING(size_t, Height)
SETTING(CMTime, MinimumFrameInterval)
SETTING(OSType, PixelFormat)
SETTING(BOOL, ShowsCursor)
SETTING(NSInteger, QueueDepth)
SETTING(BOOL, CapturesAudio)
SETTING(NSInteger, SampleRate)
SETTING(NSInteger, ChannelCount)
SETTING(BOOL, ExcludesCurrentProcessAudio)
@end
@implementation SCStream
+ (id)allocWithZone:(NSZone*)zone { return NSAllocateObject([StandInStream class], 0, zone); }
- (instancetype)initWithFilter:(SCContentFilter*)filter
                 configuration:(SCStreamConfiguration*)configuration
                      delegate:(id<SCStreamDelegate>)receiver {
  return nil;
}
- (BOOL)addStreamOutput:(id<SCStreamOutput>)output
                   type:(SCStreamOutputType)type
     sampleHandlerQueue:(dispatch_queue_t)queue
                  error:(NSError**)error {
  return NO;
}
- (void)startCaptureWithCompletionHandler:(void (^)(NSError*))handler {}
- (void)stopCaptureWithCompletionHandler:(void (^)(NSError*))handler {}
@end
@implementation StandInStream
- (instancetype)initWithFilter:(SCContentFilter*)filter
                 configuration:(SCStreamConfiguration*)configuration
                      delegate:(id<SCStreamDelegate>)receiver {
  delegate = receiver;
  outputs = [[NSMutableArray alloc] init];
  standin::streams.insert(self);
  return self;
}
- (BOOL)addStreamOutput:(id<SCStreamOutput>)output
                   type:(SCStreamOutputType)type
     sampleHandlerQueue:(dispatch_queue_t)queue
                  error:(NSError**)error {
  if (stage().refusesOutputs) {
    *error = [NSError errorWithDomain:@"stand-in" code:2 userInfo:nil];
    return NO;
  }
  [outputs addObject:(id)output];
  return YES;
}
- (void)startCaptureWithCompletionHandler:(void (^)(NSError*))handler {
  if (stage().throws) [NSException raise:@"StandIn" format:@"no start today"];
  standin::answer(Block_copy(handler), [](auto kept) { kept(nil); });
}
- (void)stopCaptureWithCompletionHandler:(void (^)(NSError*))handler {
  standin::answer(Block_copy(handler), [](auto kept) { kept(nil); });
}
- (void)dealloc {
  standin::streams.erase(self);
  [outputs release];
  [super dealloc];
}
@end

extern "C" {

bool CGRectMakeWithDictionaryRepresentation(CFDictionaryRef dictionary, CGRect* rect) {
  NSDictionary* const entries = object(dictionary);
  if ([entries count] != 4) return false;
  const auto number = [&](NSString* key) { return [[entries objectForKey:key] doubleValue]; };
  *rect = {{number(@"an X"), number(@"a Y")}, {number(@"a width"), number(@"a height")}};
  return true;
}
CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption, CGWindowID) {
  return reinterpret_cast<CFArrayRef>([stage().windows retain]);
}

static NSMutableArray* matching(CFDictionaryRef query) {
  NSMutableArray* const found = [NSMutableArray array];
  for (NSDictionary* item in stage().keychain) {
    bool matches = true;
    for (const void* key : {(const void*)kSecClass, (const void*)kSecAttrService,
                            (const void*)kSecAttrAccount}) {
      const id wanted = [static_cast<NSDictionary*>(object(query)) objectForKey:object(key)];
      matches &= wanted != nil && [wanted isEqual:[item objectForKey:object(key)]];
    }
    if (matches) [found addObject:item];
  }
  [stage().lastQuery release];
  stage().lastQuery = [static_cast<NSDictionary*>(object(query)) copy];
  return found;
}
OSStatus SecItemAdd(CFDictionaryRef item, CFTypeRef*) {
  [stage().keychain addObject:[[object(item) copy] autorelease]];
  return 0;
}
OSStatus SecItemCopyMatching(CFDictionaryRef query, CFTypeRef* result) {
  NSArray* const found = matching(query);
  if ([found count] == 0) return errSecItemNotFound;
  *result = [[[found objectAtIndex:0] objectForKey:object(kSecValueData)] retain];
  return 0;
}
OSStatus SecItemDelete(CFDictionaryRef query) {
  NSArray* const found = matching(query);
  [stage().keychain removeObjectsInArray:found];
  return [found count] == 0 ? errSecItemNotFound : 0;
}

const mach_port_t kIOMainPortDefault = 0;
io_registry_entry_t IORegistryEntryFromPath(mach_port_t, io_string_t path) {
  return std::strcmp(path, "IOService:/") == 0 ? 7 : 0;
}
CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry, CFStringRef key,
                                          CFAllocatorRef, IOOptionBits) {
  if (entry != 7 || ![object(key) isEqual:@"IOPlatformUUID"]) return nullptr;
  return [[NSString alloc] initWithUTF8String:stage().uuid.c_str()];
}
kern_return_t IOObjectRelease(io_object_t) { return 0; }

Boolean AXIsProcessTrusted(void) { return false; }
Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options) {
  [stage().trustOptions release];
  stage().trustOptions = [object(options) retain];
  return false;
}
CFTypeID AXUIElementGetTypeID(void) { return 101; }
CFTypeID AXValueGetTypeID(void) { return 102; }
AXUIElementRef AXUIElementCreateApplication(pid_t) {
  auto* const element = [[StandInElement alloc] init];
  element->attributes = [[NSMutableDictionary alloc] init];
  return reinterpret_cast<AXUIElementRef>(element);
}
AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef name, CFTypeRef* value) {
  const id found = [static_cast<StandInElement*>(object(element))->attributes objectForKey:object(name)];
  if (found == nil) return kAXErrorNoValue;
  *value = [found retain];
  return kAXErrorSuccess;
}
AXValueRef AXValueCreate(AXValueType type, const void* value) {
  auto* const made = [[StandInGeometry alloc] init];
  made->type = type;
  std::memcpy(&made->first, value, 2 * sizeof(double));
  return reinterpret_cast<AXValueRef>(made);
}
Boolean AXValueGetValue(AXValueRef value, AXValueType type, void* out) {
  auto* const geometry = static_cast<StandInGeometry*>(object(value));
  if (geometry->type != static_cast<int>(type)) return false;
  std::memcpy(out, &geometry->first, 2 * sizeof(double));
  return true;
}
AXError AXObserverCreate(pid_t, AXObserverCallback callback, AXObserverRef* out) {
  auto* const observer = [[StandInObserver alloc] init];
  observer->callback = callback;
  observer->names = [[NSMutableSet alloc] init];
  observer->source = [[NSObject alloc] init];
  standin::observers.insert(observer);
  *out = reinterpret_cast<AXObserverRef>(observer);
  return kAXErrorSuccess;
}
AXError AXObserverAddNotification(AXObserverRef reference, AXUIElementRef, CFStringRef name,
                                  void* context) {
  auto* const observer = static_cast<StandInObserver*>(object(reference));
  observer->context = context;
  [observer->names addObject:object(name)];
  return kAXErrorSuccess;
}
CFRunLoopSourceRef AXObserverGetRunLoopSource(AXObserverRef observer) {
  return reinterpret_cast<CFRunLoopSourceRef>(static_cast<StandInObserver*>(object(observer))->source);
}
CFRunLoopRef CFRunLoopGetMain(void) { return nullptr; }
void CFRunLoopAddSource(CFRunLoopRef, CFRunLoopSourceRef source, CFRunLoopMode) {
  standin::sources.insert(object(source));
}
void CFRunLoopRemoveSource(CFRunLoopRef, CFRunLoopSourceRef source, CFRunLoopMode) {
  standin::sources.erase(object(source));
}

void standInConstants(const void* yes, const void* no, const void* null,
                      const void* (*make)(const char*));

}  // extern "C"

@interface StandInConstants : NSObject
@end
@implementation StandInConstants
+ (void)load {
  GSDebugAllocationActive(YES);
  standInConstants([[NSNumber numberWithBool:YES] retain], [[NSNumber numberWithBool:NO] retain],
                   [[NSNull null] retain], [](const char* text) -> const void* {
                     return [[NSString alloc] initWithUTF8String:text];
                   });
}
@end
