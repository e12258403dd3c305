#include "codec/decoder.h"

#include <array>
#include <string>
#include <utility>

#include "frame/guard.h"
#include "frame/log.h"
#include "frame/media_time.h"

namespace vlm::codec {
namespace {

using platform::CFDictionary;
using platform::CFValue;
using platform::CMSampleBuffer;
using platform::CMTime;
using platform::CVPixelBuffer;
using platform::noErr;
using platform::OSStatus;
using platform::Ref;

constexpr int kLengthPrefixSize = 4;

// A sample over a copy of `bytes`; null when the platform can't make one.
Ref<CMSampleBuffer> makeSample(ByteView bytes, const Ref<platform::CMFormatDescription>& format,
                               std::int64_t ptsNs) {
  Ref<platform::CMBlockBuffer> block;
  if (platform::CMBlockBufferCreateWithMemoryBlock(bytes.size(), block) != noErr || !block) {
    return nullptr;
  }
  platform::CMBlockBufferReplaceDataBytes(bytes, *block, 0);
  const platform::CMSampleTimingInfo timing[] = {
      {platform::kCMTimeInvalid, frame::mediaTime(ptsNs), platform::kCMTimeInvalid}};
  const std::size_t sizes[] = {bytes.size()};
  Ref<CMSampleBuffer> sample;
  if (platform::CMSampleBufferCreateReady(std::move(block), format, timing, sizes, sample) !=
      noErr) {
    return nullptr;
  }
  return sample;
}

}  // namespace

VlmDecoder::VlmDecoder(bool outputBgra, vlm_frame_cb cb, void* user)
    : cb_(cb), user_(user), outputBgra_(outputBgra) {}

bool VlmDecoder::decode(ByteView accessUnit, std::int64_t ptsNs) {
  const auto sample = buildLengthPrefixedSample(accessUnit, findNalUnits(accessUnit), held_);
  if (sample.changed) {
    if (session_) platform::VTDecompressionSessionInvalidate(*session_);
    dropSession();
  }
  if (!held_.sps || !held_.pps) return false;
  if (!session_ && !rebuildSessionIfNeeded()) return true;
  if (sample.bytes.empty()) return true;
  return submit(sample.bytes, ptsNs);
}

bool VlmDecoder::rebuildSessionIfNeeded() {
  const std::array<ByteView, 2> sets{*held_.sps, *held_.pps};
  Ref<platform::CMFormatDescription> description;
  OSStatus status = platform::CMVideoFormatDescriptionCreateFromH264ParameterSets(
      sets, kLengthPrefixSize, description);
  if (status != noErr || !description) {
    frame::log("CMVideoFormatDescriptionCreateFromH264ParameterSets failed: ", status);
    return false;
  }
  formatDesc_ = std::move(description);
  status = createSession();
  if (status != noErr || !session_) {
    frame::log("VTDecompressionSessionCreate failed: ", status);
    dropSession();
    return false;
  }
  return true;
}

OSStatus VlmDecoder::createSession() {
  const platform::OSType format = outputBgra_
                                      ? platform::kCVPixelFormatType_32BGRA
                                      : platform::kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange;
  const CFValue attributes = CFDictionary{
      {std::string(platform::kCVPixelBufferPixelFormatTypeKey), format},
      {std::string(platform::kCVPixelBufferIOSurfacePropertiesKey), CFDictionary{}},
      {std::string(platform::kCVPixelBufferMetalCompatibilityKey), true},
  };
  return platform::VTDecompressionSessionCreate(formatDesc_, attributes, session_);
}

bool VlmDecoder::submit(ByteView bytes, std::int64_t ptsNs) {
  auto sample = makeSample(bytes, formatDesc_, ptsNs);
  if (!sample) return false;
  const auto deliver = [weak = weak_from_this(), place = order_->append()](
                           OSStatus status, platform::VTDecodeInfoFlags, Ref<CVPixelBuffer> image,
                           CMTime pts, CMTime) {
    frame::guarded([&] {
      place->deliver([weak, status, image = std::move(image), pts] {
        const auto self = weak.lock();
        if (self && status == noErr && image) {
          self->show(*image, pts);
        } else if (status != noErr) {
          frame::log("decode output status ", status);
        }
      });
    });
  };
  constexpr auto kFlags = platform::kVTDecodeFrame_EnableAsynchronousDecompression |
                          platform::kVTDecodeFrame_1xRealTimePlayback;
  const OSStatus status = platform::VTDecompressionSessionDecodeFrameWithOutputHandler(
      *session_, std::move(sample), kFlags, deliver);
  if (status == noErr) return true;
  frame::log("VTDecompressionSessionDecodeFrame failed: ", status);
  // The session is gone by itself: nothing is left to invalidate. The next access unit builds a
  // new one from the parameter sets that are held.
  if (status == platform::kVTInvalidSessionErr) dropSession();
  return false;
}

void VlmDecoder::show(CVPixelBuffer& image, CMTime pts) const {
  cb_(&image, static_cast<std::int32_t>(platform::CVPixelBufferGetWidth(image)),
      static_cast<std::int32_t>(platform::CVPixelBufferGetHeight(image)), frame::nanoseconds(pts),
      user_);
}

void VlmDecoder::flush() {
  // Of a session that can't be waited for it is not known whether its pictures still come.
  if (session_ && platform::VTDecompressionSessionWaitForAsynchronousFrames(*session_) != noErr) {
    return;
  }
  order_->wait();
}

void VlmDecoder::destroy() {
  flush();
  if (session_) platform::VTDecompressionSessionInvalidate(*session_);
  dropSession();
}

void VlmDecoder::dropSession() {
  session_ = nullptr;
  formatDesc_ = nullptr;
}

}  // namespace vlm::codec
