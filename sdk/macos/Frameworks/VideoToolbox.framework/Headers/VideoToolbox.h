// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>
#import <CoreVideo/CoreVideo.h>
#import <CoreMedia/CoreMedia.h>

#ifdef __cplusplus
extern "C" {
#endif
typedef enum VTEncodeInfoFlags : uint32_t VTEncodeInfoFlags;
enum VTEncodeInfoFlags : uint32_t {
  kVTEncodeInfo_Asynchronous = 1,
  kVTEncodeInfo_FrameDropped = 2
};
typedef void (*VTCompressionOutputCallback)(void * _Nullable, void * _Nullable, OSStatus, VTEncodeInfoFlags, CMSampleBufferRef _Nullable);
typedef struct OpaqueVTCompressionSession * VTCompressionSessionRef;
int32_t VTCompressionSessionCreate(CFAllocatorRef allocator, int32_t width, int32_t height, CMVideoCodecType codecType, CFDictionaryRef encoderSpecification, CFDictionaryRef sourceImageBufferAttributes, CFAllocatorRef compressedDataAllocator, VTCompressionOutputCallback outputCallback, void * outputCallbackRefCon, VTCompressionSessionRef  _Nullable * compressionSessionOut) __attribute__((availability(macos,introduced=10.8)));
typedef CFTypeRef VTSessionRef;
int32_t VTSessionSetProperty(VTSessionRef session, CFStringRef propertyKey, CFTypeRef propertyValue) __attribute__((availability(macos,introduced=10.8)));
int32_t VTCompressionSessionPrepareToEncodeFrames(VTCompressionSessionRef session) __attribute__((availability(macos,introduced=10.9)));
typedef void (^VTCompressionOutputHandler)(OSStatus, VTEncodeInfoFlags, CMSampleBufferRef _Nullable);
int32_t VTCompressionSessionEncodeFrameWithOutputHandler(VTCompressionSessionRef session, CVImageBufferRef imageBuffer, CMTime presentationTimeStamp, CMTime duration, CFDictionaryRef frameProperties, VTEncodeInfoFlags * infoFlagsOut, VTCompressionOutputHandler outputHandler) __attribute__((availability(macos,introduced=10.11)));
int32_t VTCompressionSessionCompleteFrames(VTCompressionSessionRef session, CMTime completeUntilPresentationTimeStamp) __attribute__((availability(macos,introduced=10.8)));
void VTCompressionSessionInvalidate(VTCompressionSessionRef session) __attribute__((availability(macos,introduced=10.8)));
typedef enum VTDecodeInfoFlags : uint32_t VTDecodeInfoFlags;
enum VTDecodeInfoFlags : uint32_t {
  kVTDecodeInfo_Asynchronous = 1,
  kVTDecodeInfo_FrameDropped = 2,
  kVTDecodeInfo_ImageBufferModifiable = 4,
  kVTDecodeInfo_SkippedLeadingFrameDropped = 8,
  kVTDecodeInfo_FrameInterrupted = 16
};
typedef void (*VTDecompressionOutputCallback)(void * _Nullable, void * _Nullable, OSStatus, VTDecodeInfoFlags, CVImageBufferRef _Nullable, CMTime, CMTime);
typedef struct VTDecompressionOutputCallbackRecord {
  VTDecompressionOutputCallback decompressionOutputCallback;
  void * decompressionOutputRefCon;
} VTDecompressionOutputCallbackRecord;
typedef struct OpaqueVTDecompressionSession * VTDecompressionSessionRef;
int32_t VTDecompressionSessionCreate(CFAllocatorRef allocator, CMVideoFormatDescriptionRef videoFormatDescription, CFDictionaryRef videoDecoderSpecification, CFDictionaryRef destinationImageBufferAttributes, const VTDecompressionOutputCallbackRecord * outputCallback, VTDecompressionSessionRef  _Nullable * decompressionSessionOut) __attribute__((availability(macos,introduced=10.8)));
typedef enum VTDecodeFrameFlags : uint32_t VTDecodeFrameFlags;
enum VTDecodeFrameFlags : uint32_t {
  kVTDecodeFrame_EnableAsynchronousDecompression = 1,
  kVTDecodeFrame_DoNotOutputFrame = 2,
  kVTDecodeFrame_1xRealTimePlayback = 4,
  kVTDecodeFrame_EnableTemporalProcessing = 8
};
typedef void (^VTDecompressionOutputHandler)(OSStatus, VTDecodeInfoFlags, CVImageBufferRef _Nullable, CMTime, CMTime);
int32_t VTDecompressionSessionDecodeFrameWithOutputHandler(VTDecompressionSessionRef session, CMSampleBufferRef sampleBuffer, VTDecodeFrameFlags decodeFlags, VTDecodeInfoFlags * infoFlagsOut, VTDecompressionOutputHandler outputHandler) __attribute__((availability(macos,introduced=10.11)));
int32_t VTDecompressionSessionWaitForAsynchronousFrames(VTDecompressionSessionRef session) __attribute__((availability(macos,introduced=10.8)));
void VTDecompressionSessionInvalidate(VTDecompressionSessionRef session) __attribute__((availability(macos,introduced=10.8)));
extern const CFStringRef kVTVideoEncoderSpecification_EnableLowLatencyRateControl __attribute__((availability(macos,introduced=11.3)));
extern const CFStringRef kVTCompressionPropertyKey_RealTime __attribute__((availability(macos,introduced=10.9)));
extern const CFStringRef kVTCompressionPropertyKey_AllowFrameReordering __attribute__((availability(macos,introduced=10.8)));
extern const CFStringRef kVTCompressionPropertyKey_ProfileLevel __attribute__((availability(macos,introduced=10.8)));
extern const CFStringRef kVTCompressionPropertyKey_ExpectedFrameRate __attribute__((availability(macos,introduced=10.8)));
extern const CFStringRef kVTCompressionPropertyKey_MaxKeyFrameInterval __attribute__((availability(macos,introduced=10.8)));
extern const CFStringRef kVTCompressionPropertyKey_MaxKeyFrameIntervalDuration __attribute__((availability(macos,introduced=10.8)));
extern const CFStringRef kVTCompressionPropertyKey_MaxAllowedFrameQP __attribute__((availability(macos,introduced=12.0)));
extern const CFStringRef kVTCompressionPropertyKey_AverageBitRate __attribute__((availability(macos,introduced=10.8)));
extern const CFStringRef kVTCompressionPropertyKey_DataRateLimits __attribute__((availability(macos,introduced=10.8)));
extern const CFStringRef kVTProfileLevel_H264_Main_AutoLevel __attribute__((availability(macos,introduced=10.9)));
extern const CFStringRef kVTEncodeFrameOptionKey_ForceKeyFrame __attribute__((availability(macos,introduced=10.8)));
enum { kVTPropertyNotSupportedErr = -12900 };
enum { kVTParameterErr = -12902 };
enum { kVTInvalidSessionErr = -12903 };
enum { kVTAllocationFailedErr = -12904 };
enum { kVTVideoDecoderBadDataErr = -12909 };
enum { kVTVideoDecoderMalfunctionErr = -12911 };
enum { kVTVideoEncoderMalfunctionErr = -12912 };
#ifdef __cplusplus
}
#endif
