#include "platform/core_media_audio.h"

#import <CoreMedia/CoreMedia.h>
#include <vector>

#include "platform/macos/bridge/native.h"

namespace vlm::platform {

using bridge::native;

std::int64_t CMSampleBufferGetNumSamples(const CMSampleBuffer& sample) noexcept {
  return ::CMSampleBufferGetNumSamples(native(sample));
}

OSStatus CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer(CMSampleBuffer& sample,
                                                                 std::span<AudioBuffer> list,
                                                                 std::size_t& count,
                                                                 Ref<CMBlockBuffer>& block) {
  std::size_t size = 0;
  auto status = ::CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer(
      native(sample), &size, nullptr, 0, nullptr, nullptr, 0, nullptr);
  if (status != noErr) return status;
  // In words, for the alignment of the records.
  std::vector<std::uint64_t> memory(size / sizeof(std::uint64_t) + 1);
  auto* const native_list = reinterpret_cast<::AudioBufferList*>(memory.data());
  CMBlockBufferRef kept = nullptr;
  status = ::CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer(
      native(sample), nullptr, native_list, size, ::kCFAllocatorDefault, ::kCFAllocatorDefault, 0,
      &kept);
  if (status != noErr) return status;
  auto owner = bridge::adopted<CMBlockBuffer>(kept);
  if (native_list->mNumberBuffers > list.size()) return ::kCMSampleBufferError_ArrayTooSmall;
  count = native_list->mNumberBuffers;
  for (std::size_t i = 0; i < count; ++i) {
    const auto& buffer = native_list->mBuffers[i];
    list[i] = {buffer.mNumberChannels, buffer.mDataByteSize, buffer.mData};
  }
  block = std::move(owner);
  return noErr;
}

std::optional<AudioStreamBasicDescription> CMAudioFormatDescriptionGetStreamBasicDescription(
    const CMFormatDescription& description) noexcept {
  // The framework asks for an audio description.
  if (::CMFormatDescriptionGetMediaType(native(description)) != ::kCMMediaType_Audio) {
    return std::nullopt;
  }
  const auto* const native_description =
      ::CMAudioFormatDescriptionGetStreamBasicDescription(native(description));
  if (native_description == nullptr) return std::nullopt;
  return AudioStreamBasicDescription{native_description->mSampleRate,
                                     native_description->mChannelsPerFrame};
}

}  // namespace vlm::platform
