#include "platform/video_toolbox.h"

#import <VideoToolbox/VideoToolbox.h>
#include <memory>
#include <utility>

#include "platform/macos/bridge/native.h"
#include "platform/macos/bridge/owned.h"
#include "platform/macos/bridge/pixel_buffer_keys.h"
#include "platform/macos/bridge/single_answer.h"
#include "platform/macos/bridge/values.h"

namespace vlm::platform {

using bridge::native;

namespace {

static_assert(kVTPropertyNotSupportedErr == ::kVTPropertyNotSupportedErr);
static_assert(kVTParameterErr == ::kVTParameterErr);
static_assert(kVTInvalidSessionErr == ::kVTInvalidSessionErr);
static_assert(kVTAllocationFailedErr == ::kVTAllocationFailedErr);
static_assert(kVTVideoDecoderBadDataErr == ::kVTVideoDecoderBadDataErr);
static_assert(kVTVideoDecoderMalfunctionErr == ::kVTVideoDecoderMalfunctionErr);
static_assert(kVTVideoEncoderMalfunctionErr == ::kVTVideoEncoderMalfunctionErr);
static_assert(kVTEncodeInfo_FrameDropped == ::kVTEncodeInfo_FrameDropped);
static_assert(kVTDecodeFrame_EnableAsynchronousDecompression ==
              ::kVTDecodeFrame_EnableAsynchronousDecompression);
static_assert(kVTDecodeFrame_1xRealTimePlayback == ::kVTDecodeFrame_1xRealTimePlayback);

bridge::Keys encoderKeys() {
  static const bridge::Key keys[] = {
      {kVTVideoEncoderSpecification_EnableLowLatencyRateControl,
       ::kVTVideoEncoderSpecification_EnableLowLatencyRateControl}};
  return keys;
}

bridge::Keys frameOptionKeys() {
  static const bridge::Key keys[] = {
      {kVTEncodeFrameOptionKey_ForceKeyFrame, ::kVTEncodeFrameOptionKey_ForceKeyFrame}};
  return keys;
}

bridge::Keys propertyKeys() {
  static const bridge::Key keys[] = {
      {kVTCompressionPropertyKey_RealTime, ::kVTCompressionPropertyKey_RealTime},
      {kVTCompressionPropertyKey_AllowFrameReordering,
       ::kVTCompressionPropertyKey_AllowFrameReordering},
      {kVTCompressionPropertyKey_ProfileLevel, ::kVTCompressionPropertyKey_ProfileLevel},
      {kVTCompressionPropertyKey_ExpectedFrameRate, ::kVTCompressionPropertyKey_ExpectedFrameRate},
      {kVTCompressionPropertyKey_MaxKeyFrameInterval,
       ::kVTCompressionPropertyKey_MaxKeyFrameInterval},
      {kVTCompressionPropertyKey_MaxKeyFrameIntervalDuration,
       ::kVTCompressionPropertyKey_MaxKeyFrameIntervalDuration},
      {kVTCompressionPropertyKey_MaxAllowedFrameQP, ::kVTCompressionPropertyKey_MaxAllowedFrameQP},
      {kVTCompressionPropertyKey_AverageBitRate, ::kVTCompressionPropertyKey_AverageBitRate},
      {kVTCompressionPropertyKey_DataRateLimits, ::kVTCompressionPropertyKey_DataRateLimits}};
  return keys;
}

// A property's value: that of the profile is a constant itself.
bridge::Owned<CFTypeRef> propertyValue(std::string_view key, const CFValue& value) {
  const auto* const word = value.as<std::string>();
  if (word != nullptr && key == kVTCompressionPropertyKey_ProfileLevel) {
    const bridge::Key profiles[] = {
        {kVTProfileLevel_H264_Main_AutoLevel, ::kVTProfileLevel_H264_Main_AutoLevel}};
    return bridge::Owned<CFTypeRef>::retaining(bridge::constantFor(profiles, *word));
  }
  return bridge::toCF(value);
}

}  // namespace

// The encoder is given no call back here: each frame brings its own.
OSStatus VTCompressionSessionCreate(std::int32_t width, std::int32_t height, CMVideoCodecType codec,
                                    const CFValue& encoderSpecification,
                                    Ref<VTCompressionSession>& out) {
  const auto wanted = bridge::toDictionary(encoderSpecification, encoderKeys());
  VTCompressionSessionRef session = nullptr;
  const auto status = ::VTCompressionSessionCreate(::kCFAllocatorDefault, width, height, codec,
                                                   wanted.get(), nullptr, nullptr, nullptr,
                                                   nullptr, &session);
  if (status == noErr) out = bridge::adopted<VTCompressionSession>(session);
  return status;
}

OSStatus VTSessionSetProperty(VTCompressionSession& session, std::string_view key,
                              const CFValue& value) {
  const auto name = bridge::constantFor(propertyKeys(), key);
  const auto object = propertyValue(key, value);
  if (name == nullptr) return ::kVTPropertyNotSupportedErr;
  if (!object) return ::kVTParameterErr;
  return ::VTSessionSetProperty(native(session), name, object.get());
}

OSStatus VTCompressionSessionPrepareToEncodeFrames(VTCompressionSession& session) {
  return ::VTCompressionSessionPrepareToEncodeFrames(native(session));
}

OSStatus VTCompressionSessionEncodeFrameWithOutputHandler(
    VTCompressionSession& session, Ref<CVPixelBuffer> image, CMTime presentationTimeStamp,
    CMTime duration, const CFValue& frameProperties, VTCompressionOutputHandler handler) {
  const auto options = bridge::toDictionary(frameProperties, frameOptionKeys());
  const auto answer =
      std::make_shared<bridge::SingleAnswer<VTCompressionOutputHandler>>(std::move(handler));
  const auto status = ::VTCompressionSessionEncodeFrameWithOutputHandler(
      native(session), native(image), bridge::toNative(presentationTimeStamp),
      bridge::toNative(duration), options.get(), nullptr,
      ^(::OSStatus result, ::VTEncodeInfoFlags flags, CMSampleBufferRef sample) {
        @autoreleasepool {
          answer->give(result, static_cast<VTEncodeInfoFlags>(flags),
                       bridge::retained<CMSampleBuffer>(sample));
        }
      });
  if (status != noErr) answer->withdraw();
  return status;
}

OSStatus VTCompressionSessionCompleteFrames(VTCompressionSession& session, CMTime until) {
  return ::VTCompressionSessionCompleteFrames(native(session), bridge::toNative(until));
}

void VTCompressionSessionInvalidate(VTCompressionSession& session) {
  ::VTCompressionSessionInvalidate(native(session));
}

OSStatus VTDecompressionSessionCreate(Ref<CMFormatDescription> description,
                                      const CFValue& destinationAttributes,
                                      Ref<VTDecompressionSession>& out) {
  const auto attributes = bridge::toDictionary(destinationAttributes, bridge::pixelBufferKeys());
  VTDecompressionSessionRef session = nullptr;
  const auto status = ::VTDecompressionSessionCreate(::kCFAllocatorDefault, native(description),
                                                     nullptr, attributes.get(), nullptr, &session);
  if (status == noErr) out = bridge::adopted<VTDecompressionSession>(session);
  return status;
}

OSStatus VTDecompressionSessionDecodeFrameWithOutputHandler(VTDecompressionSession& session,
                                                            Ref<CMSampleBuffer> sample,
                                                            VTDecodeFrameFlags flags,
                                                            VTDecompressionOutputHandler handler) {
  const auto answer =
      std::make_shared<bridge::SingleAnswer<VTDecompressionOutputHandler>>(std::move(handler));
  const auto status = ::VTDecompressionSessionDecodeFrameWithOutputHandler(
      native(session), native(sample), static_cast<::VTDecodeFrameFlags>(flags), nullptr,
      ^(::OSStatus result, ::VTDecodeInfoFlags info, CVImageBufferRef image, ::CMTime time,
        ::CMTime duration) {
        @autoreleasepool {
          answer->give(result, static_cast<VTDecodeInfoFlags>(info),
                       bridge::retained<CVPixelBuffer>(image), bridge::fromNative(time),
                       bridge::fromNative(duration));
        }
      });
  if (status != noErr) answer->withdraw();
  return status;
}

OSStatus VTDecompressionSessionWaitForAsynchronousFrames(VTDecompressionSession& session) {
  return ::VTDecompressionSessionWaitForAsynchronousFrames(native(session));
}

void VTDecompressionSessionInvalidate(VTDecompressionSession& session) {
  ::VTDecompressionSessionInvalidate(native(session));
}

}  // namespace vlm::platform
