// VideoToolbox and Accelerate on the engine: x264 and libavcodec behind the frameworks' functions.
#import <Accelerate/Accelerate.h>
#import <VideoToolbox/VideoToolbox.h>

#include <Block.h>

#include <cstring>
#include <memory>
#include <string>

#include "standin/media_objects.h"

using standin::object;

@interface StandInEncoder : NSObject {
 @public
  e::Ref<e::VTCompressionSession> it;
}
@end
@implementation StandInEncoder
@end
@interface StandInDecoder : NSObject {
 @public
  e::Ref<e::VTDecompressionSession> it;
}
@end
@implementation StandInDecoder
@end

namespace {

StandInEncoder* of(VTCompressionSessionRef session) {
  return object(session);
}
StandInDecoder* of(VTDecompressionSessionRef session) {
  return object(session);
}

template <class Handler>
std::shared_ptr<Handler> kept(Handler handler) {
  return {new Handler(Block_copy(handler)), [](Handler* it) {
            Block_release(*it);
            delete it;
          }};
}

e::CFValue fromObject(id value) {
  if (value == object(kCFBooleanTrue) || value == object(kCFBooleanFalse)) {
    return value == object(kCFBooleanTrue);
  }
  if (value == object(kVTProfileLevel_H264_Main_AutoLevel)) {
    return e::kVTProfileLevel_H264_Main_AutoLevel;
  }
  if ([value isKindOfClass:[NSArray class]]) {
    e::CFArray values;
    for (id each in value) values.push_back(fromObject(each));
    return values;
  }
  if ([value isKindOfClass:[NSNumber class]]) {
    const bool isFloat = std::strchr("fd", *[value objCType]) != nullptr;
    return isFloat ? e::CFValue([value doubleValue]) : e::CFValue(std::int64_t{[value longLongValue]});
  }
  return {};
}

// The engine's name of a framework's constant; none for any other string, however it is spelled.
std::string_view nameOf(CFStringRef key) {
  const std::pair<CFStringRef, std::string_view> names[] = {
#define NAME(name) {::name, e::name}
      NAME(kVTVideoEncoderSpecification_EnableLowLatencyRateControl),
      NAME(kVTEncodeFrameOptionKey_ForceKeyFrame),
      NAME(kCVPixelBufferPixelFormatTypeKey),
      NAME(kCVPixelBufferIOSurfacePropertiesKey),
      NAME(kCVPixelBufferMetalCompatibilityKey),
      NAME(kVTCompressionPropertyKey_RealTime),
      NAME(kVTCompressionPropertyKey_AllowFrameReordering),
      NAME(kVTCompressionPropertyKey_ProfileLevel),
      NAME(kVTCompressionPropertyKey_ExpectedFrameRate),
      NAME(kVTCompressionPropertyKey_MaxKeyFrameInterval),
      NAME(kVTCompressionPropertyKey_MaxKeyFrameIntervalDuration),
      NAME(kVTCompressionPropertyKey_MaxAllowedFrameQP),
      NAME(kVTCompressionPropertyKey_AverageBitRate),
      NAME(kVTCompressionPropertyKey_DataRateLimits)
#undef NAME
  };
  for (const auto& [constant, name] : names) {
    if (constant == key) return name;
  }
  return {};
}

e::CFValue fromDictionary(CFDictionaryRef dictionary) {
  e::CFDictionary entries;
  NSDictionary* const given = object(dictionary);
  for (id key in given) {
    const auto name = nameOf(reinterpret_cast<CFStringRef>(key));
    entries.emplace(name.empty() ? "unknown" : name, fromObject([given objectForKey:key]));
  }
  return entries;
}

}  // namespace

extern "C" {

OSStatus VTCompressionSessionCreate(CFAllocatorRef, int32_t width, int32_t height,
                                    CMVideoCodecType codec, CFDictionaryRef encoder,
                                    CFDictionaryRef, CFAllocatorRef, VTCompressionOutputCallback,
                                    void*, VTCompressionSessionRef* out) {
  e::Ref<e::VTCompressionSession> it;
  const auto status =
      e::VTCompressionSessionCreate(width, height, codec, fromDictionary(encoder), it);
  if (status != 0) return status;
  auto* const session = [[StandInEncoder alloc] init];
  session->it = std::move(it);
  *out = reinterpret_cast<VTCompressionSessionRef>(session);
  return 0;
}
OSStatus VTSessionSetProperty(VTSessionRef session, CFStringRef key, CFTypeRef value) {
  return e::VTSessionSetProperty(*static_cast<StandInEncoder*>(object(session))->it, nameOf(key),
                                 fromObject(object(value)));
}
OSStatus VTCompressionSessionPrepareToEncodeFrames(VTCompressionSessionRef session) {
  return e::VTCompressionSessionPrepareToEncodeFrames(*of(session)->it);
}
OSStatus VTCompressionSessionEncodeFrameWithOutputHandler(VTCompressionSessionRef session,
                                                          CVImageBufferRef image, CMTime time,
                                                          CMTime duration, CFDictionaryRef options,
                                                          VTEncodeInfoFlags*,
                                                          VTCompressionOutputHandler handler) {
  return e::VTCompressionSessionEncodeFrameWithOutputHandler(
      *of(session)->it, static_cast<StandInPixelBuffer*>(object(image))->it, standin::toEngine(time),
      standin::toEngine(duration), fromDictionary(options),
      [answer = kept(handler)](e::OSStatus status, e::VTEncodeInfoFlags flags,
                               e::Ref<e::CMSampleBuffer> it) {
        @autoreleasepool {
          StandInSample* const sample = standin::sampleOf(std::move(it));
          (*answer)(status, static_cast<VTEncodeInfoFlags>(flags),
                    reinterpret_cast<CMSampleBufferRef>(sample));
          [sample release];
        }
      });
}
OSStatus VTCompressionSessionCompleteFrames(VTCompressionSessionRef session, CMTime until) {
  return e::VTCompressionSessionCompleteFrames(*of(session)->it, standin::toEngine(until));
}
void VTCompressionSessionInvalidate(VTCompressionSessionRef session) {
  e::VTCompressionSessionInvalidate(*of(session)->it);
}

OSStatus VTDecompressionSessionCreate(CFAllocatorRef, CMVideoFormatDescriptionRef description,
                                      CFDictionaryRef, CFDictionaryRef attributes,
                                      const VTDecompressionOutputCallbackRecord*,
                                      VTDecompressionSessionRef* out) {
  e::Ref<e::VTDecompressionSession> it;
  const auto status = e::VTDecompressionSessionCreate(
      static_cast<StandInDescription*>(object(description))->it, fromDictionary(attributes), it);
  if (status != 0) return status;
  auto* const session = [[StandInDecoder alloc] init];
  session->it = std::move(it);
  *out = reinterpret_cast<VTDecompressionSessionRef>(session);
  return 0;
}
OSStatus VTDecompressionSessionDecodeFrameWithOutputHandler(VTDecompressionSessionRef session,
                                                            CMSampleBufferRef sample,
                                                            VTDecodeFrameFlags flags,
                                                            VTDecodeInfoFlags*,
                                                            VTDecompressionOutputHandler handler) {
  return e::VTDecompressionSessionDecodeFrameWithOutputHandler(
      *of(session)->it, static_cast<StandInSample*>(object(sample))->it, flags,
      [answer = kept(handler)](e::OSStatus status, e::VTDecodeInfoFlags info,
                               e::Ref<e::CVPixelBuffer> it, e::CMTime time, e::CMTime duration) {
        @autoreleasepool {
          StandInPixelBuffer* const image = standin::pixelBufferOf(std::move(it));
          (*answer)(status, static_cast<VTDecodeInfoFlags>(info),
                    reinterpret_cast<CVImageBufferRef>(image), standin::fromEngine(time),
                    standin::fromEngine(duration));
          [image release];
        }
      });
}
OSStatus VTDecompressionSessionWaitForAsynchronousFrames(VTDecompressionSessionRef session) {
  return e::VTDecompressionSessionWaitForAsynchronousFrames(*of(session)->it);
}
void VTDecompressionSessionInvalidate(VTDecompressionSessionRef session) {
  e::VTDecompressionSessionInvalidate(*of(session)->it);
}

vImage_Error vImageConvert_YpCbCrToARGB_GenerateConversion(const vImage_YpCbCrToARGBMatrix* m,
                                                           const vImage_YpCbCrPixelRange* range,
                                                           vImage_YpCbCrToARGB* out,
                                                           vImageYpCbCrType, vImageARGBType,
                                                           vImage_Flags) {
  e::vImage_YpCbCrPixelRange wanted;
  static_assert(sizeof wanted == sizeof *range);
  std::memcpy(&wanted, range, sizeof wanted);
  e::vImage_YpCbCrToARGB made;
  const auto error = e::vImageConvert_YpCbCrToARGB_GenerateConversion(
      {m->Yp, m->Cr_R, m->Cr_G, m->Cb_G, m->Cb_B}, wanted, made);
  std::memcpy(out, &made, sizeof made);
  return error;
}
vImage_Error vImageConvert_420Yp8_CbCr8ToARGB8888(const vImage_Buffer* luma,
                                                  const vImage_Buffer* chroma,
                                                  const vImage_Buffer* to,
                                                  const vImage_YpCbCrToARGB* info,
                                                  const uint8_t permuteMap[4], uint8_t alpha,
                                                  vImage_Flags) {
  const auto buffer = [](const vImage_Buffer& it) {
    return e::vImage_Buffer{static_cast<uint8_t*>(it.data), it.height, it.width, it.rowBytes};
  };
  e::vImage_YpCbCrToARGB conversion;
  std::memcpy(&conversion, info, sizeof conversion);
  return e::vImageConvert_420Yp8_CbCr8ToARGB8888(
      buffer(*luma), buffer(*chroma), buffer(*to), conversion,
      {permuteMap[0], permuteMap[1], permuteMap[2], permuteMap[3]}, alpha);
}

}  // extern "C"
