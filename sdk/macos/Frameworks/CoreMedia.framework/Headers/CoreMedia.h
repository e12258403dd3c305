// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>
#import <CoreVideo/CoreVideo.h>
#import <CoreAudioTypes/CoreAudioTypes.h>

#ifdef __cplusplus
extern "C" {
#endif
typedef struct CMTime {
  int64_t value;
  int32_t timescale;
  uint32_t flags;
  int64_t epoch;
} CMTime;
struct CMTime CMTimeMake(int64_t value, int32_t timescale) __attribute__((availability(macos,introduced=10.7)));
double CMTimeGetSeconds(CMTime time) __attribute__((availability(macos,introduced=10.7)));
typedef struct CMBlockBufferCustomBlockSource {
  UInt32 version;
  void * AllocateBlock;
  void * FreeBlock;
  void * refCon;
} CMBlockBufferCustomBlockSource;
typedef uint32_t CMBlockBufferFlags;
typedef struct OpaqueCMBlockBuffer * CMBlockBufferRef;
int32_t CMBlockBufferCreateWithMemoryBlock(CFAllocatorRef structureAllocator, void * memoryBlock, size_t blockLength, CFAllocatorRef blockAllocator, const CMBlockBufferCustomBlockSource * customBlockSource, size_t offsetToData, size_t dataLength, CMBlockBufferFlags flags, CMBlockBufferRef  _Nullable * blockBufferOut) __attribute__((availability(macos,introduced=10.7)));
int32_t CMBlockBufferReplaceDataBytes(const void * sourceBytes, CMBlockBufferRef destinationBuffer, size_t offsetIntoDestination, size_t dataLength) __attribute__((availability(macos,introduced=10.7)));
size_t CMBlockBufferGetDataLength(CMBlockBufferRef theBuffer) __attribute__((availability(macos,introduced=10.7)));
int32_t CMBlockBufferGetDataPointer(CMBlockBufferRef theBuffer, size_t offset, size_t * lengthAtOffsetOut, size_t * totalLengthOut, char * _Nullable * dataPointerOut) __attribute__((availability(macos,introduced=10.7)));
typedef const struct opaqueCMFormatDescription * CMFormatDescriptionRef;
int32_t CMVideoFormatDescriptionCreateFromH264ParameterSets(CFAllocatorRef allocator, size_t parameterSetCount, const uint8_t *const  _Nonnull * parameterSetPointers, const size_t * parameterSetSizes, int NALUnitHeaderLength, CMFormatDescriptionRef  _Nullable * formatDescriptionOut) __attribute__((availability(macos,introduced=10.9)));
int32_t CMVideoFormatDescriptionGetH264ParameterSetAtIndex(CMFormatDescriptionRef videoDesc, size_t parameterSetIndex, const uint8_t * _Nullable * parameterSetPointerOut, size_t * parameterSetSizeOut, size_t * parameterSetCountOut, int * NALUnitHeaderLengthOut) __attribute__((availability(macos,introduced=10.9)));
typedef CMFormatDescriptionRef CMVideoFormatDescriptionRef;
int32_t CMVideoFormatDescriptionCreateForImageBuffer(CFAllocatorRef allocator, CVImageBufferRef imageBuffer, CMVideoFormatDescriptionRef  _Nullable * formatDescriptionOut) __attribute__((availability(macos,introduced=10.7)));
typedef FourCharCode CMMediaType;
CMMediaType CMFormatDescriptionGetMediaType(CMFormatDescriptionRef desc) __attribute__((availability(macos,introduced=10.7)));
uint32_t CMFormatDescriptionGetMediaSubType(CMFormatDescriptionRef desc) __attribute__((availability(macos,introduced=10.7)));
typedef CFIndex CMItemCount;
typedef struct CMSampleTimingInfo {
  struct CMTime duration;
  struct CMTime presentationTimeStamp;
  struct CMTime decodeTimeStamp;
} CMSampleTimingInfo;
typedef struct opaqueCMSampleBuffer * CMSampleBufferRef;
int32_t CMSampleBufferCreateReady(CFAllocatorRef allocator, CMBlockBufferRef dataBuffer, CMFormatDescriptionRef formatDescription, CMItemCount numSamples, CMItemCount numSampleTimingEntries, const CMSampleTimingInfo * sampleTimingArray, CMItemCount numSampleSizeEntries, const size_t * sampleSizeArray, CMSampleBufferRef  _Nullable * sampleBufferOut) __attribute__((availability(macos,introduced=10.10)));
int32_t CMSampleBufferCreateReadyWithImageBuffer(CFAllocatorRef allocator, CVImageBufferRef imageBuffer, CMVideoFormatDescriptionRef formatDescription, const CMSampleTimingInfo * sampleTiming, CMSampleBufferRef  _Nullable * sampleBufferOut) __attribute__((availability(macos,introduced=10.10)));
Boolean CMSampleBufferIsValid(CMSampleBufferRef sbuf) __attribute__((availability(macos,introduced=10.7)));
CMBlockBufferRef CMSampleBufferGetDataBuffer(CMSampleBufferRef sbuf) __attribute__((availability(macos,introduced=10.7)));
CVImageBufferRef CMSampleBufferGetImageBuffer(CMSampleBufferRef sbuf) __attribute__((availability(macos,introduced=10.7)));
CMFormatDescriptionRef CMSampleBufferGetFormatDescription(CMSampleBufferRef sbuf) __attribute__((availability(macos,introduced=10.7)));
struct CMTime CMSampleBufferGetPresentationTimeStamp(CMSampleBufferRef sbuf) __attribute__((availability(macos,introduced=10.7)));
CFArrayRef CMSampleBufferGetSampleAttachmentsArray(CMSampleBufferRef sbuf, Boolean createIfNecessary) __attribute__((availability(macos,introduced=10.7)));
typedef CMFormatDescriptionRef CMAudioFormatDescriptionRef;
struct AudioStreamBasicDescription * CMAudioFormatDescriptionGetStreamBasicDescription(CMAudioFormatDescriptionRef desc) __attribute__((availability(macos,introduced=10.7)));
CMItemCount CMSampleBufferGetNumSamples(CMSampleBufferRef sbuf) __attribute__((availability(macos,introduced=10.7)));
int32_t CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer(CMSampleBufferRef sbuf, size_t * bufferListSizeNeededOut, AudioBufferList * bufferListOut, size_t bufferListSize, CFAllocatorRef blockBufferStructureAllocator, CFAllocatorRef blockBufferBlockAllocator, uint32_t flags, CMBlockBufferRef  _Nullable * blockBufferOut) __attribute__((availability(macos,introduced=10.7)));
extern const CMTime kCMTimeInvalid __attribute__((availability(macos,introduced=10.7)));
typedef enum CMTimeFlags : uint32_t CMTimeFlags;
enum CMTimeFlags : uint32_t {
  kCMTimeFlags_Valid = 1,
  kCMTimeFlags_HasBeenRounded = 2,
  kCMTimeFlags_PositiveInfinity = 4,
  kCMTimeFlags_NegativeInfinity = 8,
  kCMTimeFlags_Indefinite = 16,
  kCMTimeFlags_ImpliedValueFlagsMask = 28
};
enum { kCMVideoCodecType_H264 = 1635148593 };
enum { kCMBlockBufferAssureMemoryNowFlag = 1 };
extern const CFStringRef kCMSampleAttachmentKey_NotSync __attribute__((availability(macos,introduced=10.7)));
extern const CFStringRef kCMSampleAttachmentKey_DisplayImmediately __attribute__((availability(macos,introduced=10.7)));
enum { kCMMediaType_Audio = 1936684398 };
enum { kCMMediaType_Video = 1986618469 };
enum { kCMBlockBufferBadOffsetParameterErr = -12703 };
enum { kCMSampleBufferError_ArrayTooSmall = -12737 };
enum { kCMFormatDescriptionError_InvalidParameter = -12710 };
enum { kCMBlockBufferNoErr = 0 };
typedef FourCharCode CMVideoCodecType;
#ifdef __cplusplus
}
#endif
