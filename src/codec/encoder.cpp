#include "codec/encoder.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "codec/bitstream.h"
#include "codec/compressed_sample.h"
#include "frame/guard.h"
#include "frame/log.h"
#include "frame/media_time.h"

namespace vlm::codec {
namespace {

using platform::CFArray;
using platform::CFDictionary;
using platform::CFValue;
using platform::noErr;
using platform::OSStatus;

constexpr std::int32_t kKeyFrameIntervalFrames = 30000;
constexpr std::int32_t kKeyFrameIntervalSeconds = 600;
// Text on a shared screen is unreadable beyond this quantiser.
constexpr std::int32_t kWorstQuantiser = 42;
// How far one window of the rate limit may exceed the average.
constexpr double kBurst = 1.25;
constexpr double kBurstWindowSeconds = 1.0;

void setProperty(platform::VTCompressionSession& session, std::string_view key,
                 const CFValue& value) {
  const OSStatus status = platform::VTSessionSetProperty(session, key, value);
  if (status != noErr) frame::log("VTSessionSetProperty ", key, " failed: ", status);
}

}  // namespace

VlmEncoder::VlmEncoder(const Settings& settings, vlm_encoded_cb cb, void* user)
    : cb_(cb), user_(user), settings_(settings) {}

bool VlmEncoder::buildSession() {
  CFValue encoderSpecification;
  if (settings_.lowLatency) {
    encoderSpecification = CFDictionary{
        {std::string(platform::kVTVideoEncoderSpecification_EnableLowLatencyRateControl), true}};
  }
  platform::Ref<platform::VTCompressionSession> session;
  const OSStatus status = platform::VTCompressionSessionCreate(settings_.width, settings_.height,
                                                               platform::kCMVideoCodecType_H264,
                                                               encoderSpecification, session);
  if (status != noErr || !session) {
    frame::log("VTCompressionSessionCreate failed: ", status);
    return false;
  }
  session_ = std::move(session);
  configureSession();
  applyBitrate();
  platform::VTCompressionSessionPrepareToEncodeFrames(*session_);
  return true;
}

void VlmEncoder::configureSession() {
  const std::pair<std::string_view, CFValue> properties[] = {
      {platform::kVTCompressionPropertyKey_RealTime, true},
      {platform::kVTCompressionPropertyKey_AllowFrameReordering, false},
      {platform::kVTCompressionPropertyKey_ProfileLevel,
       platform::kVTProfileLevel_H264_Main_AutoLevel},
      {platform::kVTCompressionPropertyKey_ExpectedFrameRate, settings_.fps},
      {platform::kVTCompressionPropertyKey_MaxKeyFrameInterval, kKeyFrameIntervalFrames},
      {platform::kVTCompressionPropertyKey_MaxKeyFrameIntervalDuration, kKeyFrameIntervalSeconds},
      {platform::kVTCompressionPropertyKey_MaxAllowedFrameQP, kWorstQuantiser},
  };
  for (const auto& [key, value] : properties) setProperty(*session_, key, value);
}

void VlmEncoder::setBitrate(std::int32_t bitrateBps) {
  settings_.bitrateBps = bitrateBps;
  if (session_) applyBitrate();
}

void VlmEncoder::applyBitrate() {
  platform::VTSessionSetProperty(*session_, platform::kVTCompressionPropertyKey_AverageBitRate,
                                 settings_.bitrateBps);
  const double bytesInWindow = settings_.bitrateBps * 0.125 * kBurst;
  platform::VTSessionSetProperty(*session_, platform::kVTCompressionPropertyKey_DataRateLimits,
                                 CFArray{bytesInWindow, kBurstWindowSeconds});
}

bool VlmEncoder::encode(platform::Ref<platform::CVPixelBuffer> image, std::int64_t ptsNs,
                        bool forceKeyframe) {
  const auto width = static_cast<std::int32_t>(platform::CVPixelBufferGetWidth(*image));
  const auto height = static_cast<std::int32_t>(platform::CVPixelBufferGetHeight(*image));
  if (width != settings_.width || height != settings_.height) {
    if (!rebuildFor(width, height)) return false;
  }
  if (!session_) return false;
  CFValue properties;
  if (forceKeyframe) {
    properties = CFDictionary{{std::string(platform::kVTEncodeFrameOptionKey_ForceKeyFrame), true}};
  }
  const auto deliver = [weak = weak_from_this()](OSStatus status, platform::VTEncodeInfoFlags,
                                                 platform::Ref<platform::CMSampleBuffer> sample) {
    if (status != noErr) {
      frame::log("encode output status ", status);
      return;
    }
    const auto self = weak.lock();
    if (!self || !sample) return;
    // No caller on the platform's thread could catch it: the picture is lost.
    frame::guarded([&] { self->emit(*sample); });
  };
  const OSStatus status = platform::VTCompressionSessionEncodeFrameWithOutputHandler(
      *session_, std::move(image), frame::mediaTime(ptsNs),
      platform::CMTimeMake(1, std::max(settings_.fps, 1)), properties, deliver);
  if (status != noErr) frame::log("VTCompressionSessionEncodeFrame failed: ", status);
  return status == noErr;
}

bool VlmEncoder::rebuildFor(std::int32_t width, std::int32_t height) {
  frame::log("encoder input resized ", settings_.width, "x", settings_.height, " → ", width, "x",
             height, "; rebuilding VT session");
  endSession();
  settings_.width = width;
  settings_.height = height;
  return buildSession();
}

void VlmEncoder::endSession() {
  if (session_) {
    platform::VTCompressionSessionCompleteFrames(*session_, platform::kCMTimeInvalid);
    platform::VTCompressionSessionInvalidate(*session_);
  }
  session_ = nullptr;
}

void VlmEncoder::destroy() {
  endSession();
}

void VlmEncoder::emit(platform::CMSampleBuffer& sample) const {
  const auto* data = platform::CMSampleBufferGetDataBuffer(sample);
  if (data == nullptr) return;
  const bool keyframe = isKeyFrame(sample);
  const auto bytes = SampleBytes::of(*data);
  if (!bytes) return;
  const Bytes accessUnit = buildAnnexBAccessUnit(
      keyframe, keyframe ? parameterSetsOf(sample) : ParameterSetList{}, bytes->view());
  if (accessUnit.empty()) return;
  const auto pts = frame::nanoseconds(platform::CMSampleBufferGetPresentationTimeStamp(sample));
  cb_(accessUnit.data(), static_cast<std::int32_t>(accessUnit.size()), keyframe, pts, user_);
}

}  // namespace vlm::codec
