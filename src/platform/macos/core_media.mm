#include "platform/core_media.h"

#import <CoreMedia/CoreMedia.h>
#include <algorithm>
#include <vector>

#include "platform/macos/bridge/native.h"
#include "platform/macos/bridge/owned.h"
#include "platform/macos/bridge/sample_attachments.h"

namespace vlm::platform {

using bridge::native;

static_assert(kCMVideoCodecType_H264 == ::kCMVideoCodecType_H264);

double CMTimeGetSeconds(CMTime time) noexcept {
  return ::CMTimeGetSeconds(bridge::toNative(time));
}

OSStatus CMBlockBufferCreateWithMemoryBlock(std::size_t length, Ref<CMBlockBuffer>& out) {
  CMBlockBufferRef block = nullptr;
  const auto status = ::CMBlockBufferCreateWithMemoryBlock(
      ::kCFAllocatorDefault, nullptr, length, ::kCFAllocatorDefault, nullptr, 0, length,
      ::kCMBlockBufferAssureMemoryNowFlag, &block);
  if (status == noErr) out = bridge::adopted<CMBlockBuffer>(block);
  return status;
}

OSStatus CMBlockBufferReplaceDataBytes(std::span<const std::uint8_t> bytes, CMBlockBuffer& block,
                                       std::size_t offset) {
  return ::CMBlockBufferReplaceDataBytes(bytes.data(), native(block), offset, bytes.size());
}

std::size_t CMBlockBufferGetDataLength(const CMBlockBuffer& block) noexcept {
  return ::CMBlockBufferGetDataLength(native(block));
}

OSStatus CMBlockBufferGetDataPointer(const CMBlockBuffer& block, std::size_t offset,
                                     std::span<const std::uint8_t>& piece) {
  std::size_t length = 0;
  char* bytes = nullptr;
  const auto status =
      ::CMBlockBufferGetDataPointer(native(block), offset, &length, nullptr, &bytes);
  if (status == noErr) piece = {reinterpret_cast<const std::uint8_t*>(bytes), length};
  return status;
}

OSStatus CMVideoFormatDescriptionCreateFromH264ParameterSets(
    std::span<const std::span<const std::uint8_t>> parameterSets, int nalUnitHeaderLength,
    Ref<CMFormatDescription>& out) {
  std::vector<const std::uint8_t*> sets;
  std::vector<std::size_t> sizes;
  for (const auto set : parameterSets) {
    sets.push_back(set.data());
    sizes.push_back(set.size());
  }
  CMFormatDescriptionRef description = nullptr;
  const auto status = ::CMVideoFormatDescriptionCreateFromH264ParameterSets(
      ::kCFAllocatorDefault, sets.size(), sets.data(), sizes.data(), nalUnitHeaderLength,
      &description);
  if (status == noErr) out = bridge::adopted<CMFormatDescription>(description);
  return status;
}

OSStatus CMVideoFormatDescriptionGetH264ParameterSetAtIndex(const CMFormatDescription& description,
                                                            std::size_t index,
                                                            std::span<const std::uint8_t>& set) {
  const std::uint8_t* bytes = nullptr;
  std::size_t size = 0;
  const auto status = ::CMVideoFormatDescriptionGetH264ParameterSetAtIndex(
      native(description), index, &bytes, &size, nullptr, nullptr);
  if (status == noErr) set = {bytes, size};
  return status;
}

OSStatus CMVideoFormatDescriptionCreateForImageBuffer(CVPixelBuffer& image,
                                                      Ref<CMFormatDescription>& out) {
  CMVideoFormatDescriptionRef description = nullptr;
  const auto status = ::CMVideoFormatDescriptionCreateForImageBuffer(
      ::kCFAllocatorDefault, native(image), &description);
  if (status == noErr) out = bridge::adopted<CMFormatDescription>(description);
  return status;
}

OSStatus CMSampleBufferCreateReady(Ref<CMBlockBuffer> data, Ref<CMFormatDescription> description,
                                   std::span<const CMSampleTimingInfo> timing,
                                   std::span<const std::size_t> sizes, Ref<CMSampleBuffer>& out) {
  std::vector<::CMSampleTimingInfo> nativeTiming;
  for (const auto& each : timing) nativeTiming.push_back(bridge::toNative(each));
  CMSampleBufferRef sample = nullptr;
  const auto count = [](std::size_t size) { return static_cast<CMItemCount>(size); };
  const auto status = ::CMSampleBufferCreateReady(
      ::kCFAllocatorDefault, native(data), native(description),
      count(std::max<std::size_t>(1, sizes.size())), count(timing.size()), nativeTiming.data(),
      count(sizes.size()), sizes.data(), &sample);
  if (status == noErr) out = bridge::adopted<CMSampleBuffer>(sample);
  return status;
}

OSStatus CMSampleBufferCreateReadyWithImageBuffer(Ref<CVPixelBuffer> image,
                                                  Ref<CMFormatDescription> description,
                                                  const CMSampleTimingInfo& timing,
                                                  Ref<CMSampleBuffer>& out) {
  const auto nativeTiming = bridge::toNative(timing);
  CMSampleBufferRef sample = nullptr;
  const auto status = ::CMSampleBufferCreateReadyWithImageBuffer(
      ::kCFAllocatorDefault, native(image), native(description), &nativeTiming, &sample);
  if (status == noErr) out = bridge::adopted<CMSampleBuffer>(sample);
  return status;
}

bool CMSampleBufferIsValid(const CMSampleBuffer& sample) noexcept {
  return ::CMSampleBufferIsValid(native(sample)) != 0;
}

CMBlockBuffer* CMSampleBufferGetDataBuffer(const CMSampleBuffer& sample) noexcept {
  return bridge::lent<CMBlockBuffer>(::CMSampleBufferGetDataBuffer(native(sample)));
}

CVPixelBuffer* CMSampleBufferGetImageBuffer(const CMSampleBuffer& sample) noexcept {
  return bridge::lent<CVPixelBuffer>(::CMSampleBufferGetImageBuffer(native(sample)));
}

CMFormatDescription* CMSampleBufferGetFormatDescription(const CMSampleBuffer& sample) noexcept {
  return bridge::lent<CMFormatDescription>(::CMSampleBufferGetFormatDescription(native(sample)));
}

CMTime CMSampleBufferGetPresentationTimeStamp(const CMSampleBuffer& sample) noexcept {
  return bridge::fromNative(::CMSampleBufferGetPresentationTimeStamp(native(sample)));
}

namespace helpers {

OSStatus h264ParameterSetCount(const CMFormatDescription& description, std::size_t& count) {
  if (::CMFormatDescriptionGetMediaSubType(native(description)) != ::kCMVideoCodecType_H264) {
    count = 0;
    return noErr;
  }
  std::size_t sets = 0;
  const auto status = ::CMVideoFormatDescriptionGetH264ParameterSetAtIndex(
      native(description), 0, nullptr, nullptr, &sets, nullptr);
  if (status == noErr) count = sets;
  return status;
}

CFValue sampleAttachment(CMSampleBuffer& sample, std::string_view key) {
  return bridge::attachmentOf(native(sample), key);
}

bool setSampleAttachment(CMSampleBuffer& sample, std::string_view key, CFValue value) {
  return bridge::setAttachmentOf(native(sample), key, value);
}

}  // namespace helpers

}  // namespace vlm::platform
