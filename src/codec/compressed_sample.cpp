#include "codec/compressed_sample.h"

#include <cstdint>

namespace vlm::codec {

using platform::noErr;

bool isKeyFrame(platform::CMSampleBuffer& sample) {
  const auto notSync =
      platform::helpers::sampleAttachment(sample, platform::kCMSampleAttachmentKey_NotSync);
  const auto* value = notSync.as<bool>();
  return value == nullptr || !*value;
}

ParameterSetList parameterSetsOf(const platform::CMSampleBuffer& sample) {
  ParameterSetList sets;
  const auto* description = platform::CMSampleBufferGetFormatDescription(sample);
  std::size_t count = 0;
  if (description == nullptr ||
      platform::helpers::h264ParameterSetCount(*description, count) != noErr) {
    return sets;
  }
  for (std::size_t index = 0; index < count; ++index) {
    ByteView set;
    const bool readable = platform::CMVideoFormatDescriptionGetH264ParameterSetAtIndex(
                              *description, index, set) == noErr &&
                          set.data() != nullptr;
    sets.push_back(readable ? std::optional(set) : std::nullopt);
  }
  return sets;
}

std::optional<SampleBytes> SampleBytes::of(const platform::CMBlockBuffer& block) {
  const std::size_t total = platform::CMBlockBufferGetDataLength(block);
  SampleBytes bytes;
  if (platform::CMBlockBufferGetDataPointer(block, 0, bytes.piece_) != noErr ||
      bytes.piece_.data() == nullptr) {
    return std::nullopt;
  }
  if (bytes.piece_.size() >= total) return bytes;
  bytes.joined_.reserve(total);
  for (ByteView piece = bytes.piece_;;) {
    bytes.joined_.insert(bytes.joined_.end(), piece.begin(), piece.end());
    if (bytes.joined_.size() >= total) return bytes;
    if (platform::CMBlockBufferGetDataPointer(block, bytes.joined_.size(), piece) != noErr ||
        piece.empty()) {
      return std::nullopt;
    }
  }
}

}  // namespace vlm::codec
