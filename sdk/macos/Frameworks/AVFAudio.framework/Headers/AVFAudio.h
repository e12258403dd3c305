// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>
#import <CoreAudioTypes/CoreAudioTypes.h>
#import <AudioToolbox/AudioToolbox.h>

@class AVAudioBuffer, AVAudioConverter, AVAudioEngine, AVAudioFormat, AVAudioIONode, AVAudioInputNode, AVAudioMixerNode, AVAudioNode, AVAudioOutputNode, AVAudioPCMBuffer, AVAudioPlayer, AVAudioSourceNode, AVAudioTime;
#ifdef __cplusplus
extern "C" {
#endif
typedef enum AVAudioCommonFormat : uint64_t AVAudioCommonFormat;
enum AVAudioCommonFormat : uint64_t {
  AVAudioOtherFormat = 0,
  AVAudioPCMFormatFloat32 = 1,
  AVAudioPCMFormatFloat64 = 2,
  AVAudioPCMFormatInt16 = 3,
  AVAudioPCMFormatInt32 = 4
};
typedef uint32_t AVAudioChannelCount;
typedef uint32_t AVAudioFrameCount;
typedef enum AVAudioConverterOutputStatus : int64_t AVAudioConverterOutputStatus;
enum AVAudioConverterOutputStatus : int64_t {
  AVAudioConverterOutputStatus_HaveData = 0,
  AVAudioConverterOutputStatus_InputRanDry = 1,
  AVAudioConverterOutputStatus_EndOfStream = 2,
  AVAudioConverterOutputStatus_Error = 3
};
typedef uint32_t AVAudioPacketCount;
typedef enum AVAudioConverterInputStatus : int64_t AVAudioConverterInputStatus;
enum AVAudioConverterInputStatus : int64_t {
  AVAudioConverterInputStatus_HaveData = 0,
  AVAudioConverterInputStatus_NoDataNow = 1,
  AVAudioConverterInputStatus_EndOfStream = 2
};
typedef AVAudioBuffer * _Nullable (^AVAudioConverterInputBlock)(AVAudioPacketCount, AVAudioConverterInputStatus * _Nonnull);
typedef NSUInteger AVAudioNodeBus;
typedef void (^AVAudioNodeTapBlock)(AVAudioPCMBuffer * _Nonnull, AVAudioTime * _Nonnull);
typedef OSStatus (^AVAudioSourceNodeRenderBlock)(BOOL * _Nonnull, const AudioTimeStamp * _Nonnull, AVAudioFrameCount, AudioBufferList * _Nonnull);
#ifdef __cplusplus
}
#endif
@interface AVAudioFormat : NSObject
- (instancetype)initWithCommonFormat:(AVAudioCommonFormat)format sampleRate:(double)sampleRate channels:(AVAudioChannelCount)channels interleaved:(BOOL)interleaved __attribute__((availability(macos,introduced=10.10)));
- (AVAudioCommonFormat)commonFormat;
- (double)sampleRate;
- (AVAudioChannelCount)channelCount;
- (BOOL)isInterleaved;
@end
@interface AVAudioBuffer : NSObject
- (AVAudioFormat *)format;
@end
@interface AVAudioPCMBuffer : AVAudioBuffer
- (instancetype)initWithPCMFormat:(AVAudioFormat *)format frameCapacity:(AVAudioFrameCount)frameCapacity __attribute__((availability(macos,introduced=10.10)));
- (AVAudioFrameCount)frameCapacity;
- (AVAudioFrameCount)frameLength;
- (void)setFrameLength:(AVAudioFrameCount)frameLength;
- (float *const  _Nonnull *)floatChannelData;
@end
@interface AVAudioConverter : NSObject
- (instancetype)initFromFormat:(AVAudioFormat *)fromFormat toFormat:(AVAudioFormat *)toFormat __attribute__((availability(macos,introduced=10.11)));
- (AVAudioConverterOutputStatus)convertToBuffer:(AVAudioBuffer *)outputBuffer error:(NSError * _Nullable *)outError withInputFromBlock:(AVAudioConverterInputBlock)inputBlock __attribute__((availability(macos,introduced=10.11)));
@end
@interface AVAudioNode : NSObject
- (AVAudioFormat *)inputFormatForBus:(AVAudioNodeBus)bus __attribute__((availability(macos,introduced=10.10)));
- (void)installTapOnBus:(AVAudioNodeBus)bus bufferSize:(AVAudioFrameCount)bufferSize format:(AVAudioFormat *)format block:(AVAudioNodeTapBlock)tapBlock __attribute__((availability(macos,introduced=10.10)));
- (void)removeTapOnBus:(AVAudioNodeBus)bus __attribute__((availability(macos,introduced=10.10)));
@end
@interface AVAudioIONode : AVAudioNode
- (AudioUnit)audioUnit;
@end
@interface AVAudioInputNode : AVAudioIONode

@end
@interface AVAudioOutputNode : AVAudioIONode

@end
@interface AVAudioMixerNode : AVAudioNode

@end
@interface AVAudioTime : NSObject

@end
@interface AVAudioSourceNode : AVAudioNode
- (instancetype)initWithFormat:(AVAudioFormat *)format renderBlock:(AVAudioSourceNodeRenderBlock)block __attribute__((availability(macos,introduced=10.15)));
@end
@interface AVAudioEngine : NSObject
- (AVAudioInputNode *)inputNode;
- (AVAudioOutputNode *)outputNode;
- (AVAudioMixerNode *)mainMixerNode;
- (void)attachNode:(AVAudioNode *)node __attribute__((availability(macos,introduced=10.10)));
- (void)connect:(AVAudioNode *)node1 to:(AVAudioNode *)node2 format:(AVAudioFormat *)format __attribute__((availability(macos,introduced=10.10)));
- (void)prepare __attribute__((availability(macos,introduced=10.10)));
- (BOOL)startAndReturnError:(NSError * _Nullable *)outError __attribute__((availability(macos,introduced=10.10)));
- (void)stop __attribute__((availability(macos,introduced=10.10)));
@end
@interface AVAudioPlayer : NSObject
- (instancetype)initWithContentsOfURL:(NSURL *)url error:(NSError * _Nullable *)outError __attribute__((availability(macos,introduced=10.7)));
- (BOOL)prepareToPlay __attribute__((availability(macos,introduced=10.7)));
- (BOOL)play __attribute__((availability(macos,introduced=10.7)));
- (void)stop __attribute__((availability(macos,introduced=10.7)));
- (void)setVolume:(float)volume;
- (void)setNumberOfLoops:(NSInteger)numberOfLoops;
- (NSTimeInterval)currentTime;
- (void)setCurrentTime:(NSTimeInterval)currentTime;
- (NSTimeInterval)duration;
- (BOOL)isPlaying;
@end
