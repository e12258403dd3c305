// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>
#import <CoreGraphics/CoreGraphics.h>
#import <CoreMedia/CoreMedia.h>

// By hand: Darwin's own header of the queues.
#include <dispatch/dispatch.h>

@class SCContentFilter, SCDisplay, SCRunningApplication, SCShareableContent, SCStream, SCStreamConfiguration, SCWindow;
@protocol SCStreamDelegate, SCStreamOutput;
#ifdef __cplusplus
extern "C" {
#endif
typedef enum SCStreamOutputType : int64_t SCStreamOutputType;
enum SCStreamOutputType : int64_t {
  SCStreamOutputTypeScreen = 0,
  SCStreamOutputTypeAudio = 1,
  SCStreamOutputTypeMicrophone = 2
};
typedef NSString * SCStreamFrameInfo;
extern const SCStreamFrameInfo SCStreamFrameInfoStatus __attribute__((availability(macos,introduced=12.3)));
typedef enum SCFrameStatus : int64_t SCFrameStatus;
enum SCFrameStatus : int64_t {
  SCFrameStatusComplete = 0,
  SCFrameStatusIdle = 1,
  SCFrameStatusBlank = 2,
  SCFrameStatusSuspended = 3,
  SCFrameStatusStarted = 4,
  SCFrameStatusStopped = 5
};
#ifdef __cplusplus
}
#endif
@interface SCRunningApplication : NSObject
- (NSString *)bundleIdentifier;
- (pid_t)processID;
@end
@interface SCWindow : NSObject
- (CGWindowID)windowID;
- (NSString *)title;
- (CGRect)frame;
- (SCRunningApplication *)owningApplication;
@end
@interface SCDisplay : NSObject
- (CGDirectDisplayID)displayID;
- (CGRect)frame;
@end
@interface SCShareableContent : NSObject
- (NSArray<SCWindow *> *)windows;
- (NSArray<SCRunningApplication *> *)applications;
- (NSArray<SCDisplay *> *)displays;
+ (void)getShareableContentExcludingDesktopWindows:(BOOL)excludeDesktopWindows onScreenWindowsOnly:(BOOL)onScreenWindowsOnly completionHandler:(void (^)(SCShareableContent * _Nullable, NSError * _Nullable))completionHandler __attribute__((availability(macos,introduced=12.3)));
@end
@interface SCContentFilter : NSObject
- (instancetype)initWithDesktopIndependentWindow:(SCWindow *)window __attribute__((availability(macos,introduced=12.3)));
- (instancetype)initWithDisplay:(SCDisplay *)display includingApplications:(NSArray<SCRunningApplication *> *)applications exceptingWindows:(NSArray<SCWindow *> *)exceptingWindows __attribute__((availability(macos,introduced=12.3)));
- (instancetype)initWithDisplay:(SCDisplay *)display excludingWindows:(NSArray<SCWindow *> *)excluded __attribute__((availability(macos,introduced=12.3)));
- (CGRect)contentRect;
- (float)pointPixelScale;
@end
@interface SCStreamConfiguration : NSObject
- (void)setMinimumFrameInterval:(CMTime)minimumFrameInterval;
- (void)setPixelFormat:(OSType)pixelFormat;
- (void)setQueueDepth:(NSInteger)queueDepth;
- (void)setShowsCursor:(BOOL)showsCursor;
- (void)setWidth:(size_t)width;
- (void)setHeight:(size_t)height;
- (void)setCapturesAudio:(BOOL)capturesAudio;
- (void)setExcludesCurrentProcessAudio:(BOOL)excludesCurrentProcessAudio;
- (void)setSampleRate:(NSInteger)sampleRate;
- (void)setChannelCount:(NSInteger)channelCount;
@end
@protocol SCStreamOutput <NSObject>
@optional
- (void)stream:(SCStream *)stream didOutputSampleBuffer:(CMSampleBufferRef)sampleBuffer ofType:(SCStreamOutputType)type __attribute__((availability(macos,introduced=12.3)));
@end
@protocol SCStreamDelegate <NSObject>
@optional
- (void)stream:(SCStream *)stream didStopWithError:(NSError *)error __attribute__((availability(macos,introduced=12.3)));
@end
@interface SCStream : NSObject
- (instancetype)initWithFilter:(SCContentFilter *)contentFilter configuration:(SCStreamConfiguration *)streamConfig delegate:(id<SCStreamDelegate>)delegate __attribute__((availability(macos,introduced=12.3)));
- (BOOL)addStreamOutput:(id<SCStreamOutput>)output type:(SCStreamOutputType)type sampleHandlerQueue:(dispatch_queue_t)sampleHandlerQueue error:(NSError * _Nullable *)error __attribute__((availability(macos,introduced=12.3)));
- (void)startCaptureWithCompletionHandler:(void (^)(NSError * _Nullable))completionHandler __attribute__((availability(macos,introduced=12.3)));
- (void)stopCaptureWithCompletionHandler:(void (^)(NSError * _Nullable))completionHandler __attribute__((availability(macos,introduced=12.3)));
@end
