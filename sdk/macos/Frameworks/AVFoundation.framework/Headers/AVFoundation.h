// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>
#import <CoreMedia/CoreMedia.h>
#import <QuartzCore/QuartzCore.h>

@class AVSampleBufferDisplayLayer;
#ifdef __cplusplus
extern "C" {
#endif
typedef NSString * AVLayerVideoGravity;
typedef enum AVQueuedSampleBufferRenderingStatus : int64_t AVQueuedSampleBufferRenderingStatus;
enum AVQueuedSampleBufferRenderingStatus : int64_t {
  AVQueuedSampleBufferRenderingStatusUnknown = 0,
  AVQueuedSampleBufferRenderingStatusRendering = 1,
  AVQueuedSampleBufferRenderingStatusFailed = 2
};
extern const AVLayerVideoGravity AVLayerVideoGravityResize __attribute__((availability(macos,introduced=10.7)));
#ifdef __cplusplus
}
#endif
@interface AVSampleBufferDisplayLayer : CALayer
- (void)setVideoGravity:(AVLayerVideoGravity)videoGravity;
- (AVQueuedSampleBufferRenderingStatus)status;
- (BOOL)requiresFlushToResumeDecoding;
- (BOOL)isReadyForMoreMediaData;
- (void)flush __attribute__((availability(macos,introduced=10.13)));
- (void)flushAndRemoveImage __attribute__((availability(macos,introduced=10.8,deprecated=15.0)));
- (void)enqueueSampleBuffer:(CMSampleBufferRef)sampleBuffer __attribute__((availability(macos,introduced=10.13)));
@end
