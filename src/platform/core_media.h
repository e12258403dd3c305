#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "platform/cf_value.h"
#include "platform/core_video.h"
#include "platform/foundation.h"
#include "platform/ref.h"

namespace vlm::platform {

// A media time: value / timescale seconds. A time whose timescale is 0 is invalid.
struct CMTime {
  std::int64_t value = 0;
  std::int32_t timescale = 0;
  friend bool operator==(const CMTime&, const CMTime&) = default;
};
inline constexpr CMTime kCMTimeInvalid{};

constexpr CMTime CMTimeMake(std::int64_t value, std::int32_t timescale) {
  return {value, timescale};
}

// Seconds as a double; not-a-number for an invalid time.
double CMTimeGetSeconds(CMTime time) noexcept;

struct CMSampleTimingInfo {
  CMTime duration;
  CMTime presentationTimeStamp;
  CMTime decodeTimeStamp;
};

using CMVideoCodecType = std::uint32_t;
inline constexpr CMVideoCodecType kCMVideoCodecType_H264 = 0x61766331;  // 'avc1'

// Keys of a sample's attachment dictionary.
inline constexpr std::string_view kCMSampleAttachmentKey_NotSync = "NotSync";
inline constexpr std::string_view kCMSampleAttachmentKey_DisplayImmediately = "DisplayImmediately";

// Bytes of a compressed sample, in one piece or several. Immutable once it is in a sample buffer.
class CMBlockBuffer;
// What the bytes or pixels of a sample are: codec, size, parameter sets.
class CMFormatDescription;
// One sample: a picture or compressed bytes with time, format and attachments.
class CMSampleBuffer;

// The operations below may be called on any thread; an object is changed by one thread at a time.
// Out-references are written only when the status is noErr.

// A block of `length` bytes that the platform allocates.
OSStatus CMBlockBufferCreateWithMemoryBlock(std::size_t length, Ref<CMBlockBuffer>& out);
// Copies `bytes` into the block at `offset`.
OSStatus CMBlockBufferReplaceDataBytes(std::span<const std::uint8_t> bytes, CMBlockBuffer& block,
                                       std::size_t offset);
// Length of all pieces together.
std::size_t CMBlockBufferGetDataLength(const CMBlockBuffer& block) noexcept;
// The bytes from `offset` to the end of the piece that holds it; valid while the block lives.
OSStatus CMBlockBufferGetDataPointer(const CMBlockBuffer& block, std::size_t offset,
                                     std::span<const std::uint8_t>& piece);

// A description of H.264 in length-prefixed form. `parameterSets` are whole NAL units; they are
// copied. Refuses sets that no decoder could be made for.
OSStatus CMVideoFormatDescriptionCreateFromH264ParameterSets(
    std::span<const std::span<const std::uint8_t>> parameterSets, int nalUnitHeaderLength,
    Ref<CMFormatDescription>& out);
// The bytes of a set, sequence sets first, valid while the description lives.
OSStatus CMVideoFormatDescriptionGetH264ParameterSetAtIndex(const CMFormatDescription& description,
                                                            std::size_t index,
                                                            std::span<const std::uint8_t>& set);
OSStatus CMVideoFormatDescriptionCreateForImageBuffer(CVPixelBuffer& image,
                                                      Ref<CMFormatDescription>& out);

// A sample of compressed data, ready to be decoded. Holds the block and the description.
OSStatus CMSampleBufferCreateReady(Ref<CMBlockBuffer> data, Ref<CMFormatDescription> description,
                                   std::span<const CMSampleTimingInfo> timing,
                                   std::span<const std::size_t> sizes, Ref<CMSampleBuffer>& out);
// A sample that shows a picture. Wraps the buffer; copies no pixels.
OSStatus CMSampleBufferCreateReadyWithImageBuffer(Ref<CVPixelBuffer> image,
                                                  Ref<CMFormatDescription> description,
                                                  const CMSampleTimingInfo& timing,
                                                  Ref<CMSampleBuffer>& out);

bool CMSampleBufferIsValid(const CMSampleBuffer& sample) noexcept;
// The getters lend: what they return lives as long as the sample; null when it holds none.
CMBlockBuffer* CMSampleBufferGetDataBuffer(const CMSampleBuffer& sample) noexcept;
CVPixelBuffer* CMSampleBufferGetImageBuffer(const CMSampleBuffer& sample) noexcept;
CMFormatDescription* CMSampleBufferGetFormatDescription(const CMSampleBuffer& sample) noexcept;
CMTime CMSampleBufferGetPresentationTimeStamp(const CMSampleBuffer& sample) noexcept;

// Ours, on top of the operations that their comments name.
namespace helpers {

// The count that CMVideoFormatDescriptionGetH264ParameterSetAtIndex gives without a set; 0 for
// other codecs.
OSStatus h264ParameterSetCount(const CMFormatDescription& description, std::size_t& count);

// The value under `key` in the first dictionary of CMSampleBufferGetSampleAttachmentsArray, which
// is not made for this. Null when there is no array, no dictionary in it or no such key.
CFValue sampleAttachment(CMSampleBuffer& sample, std::string_view key);
// Sets the value in that dictionary, which is made when the array is missing. False, with the
// sample unchanged, when there is no dictionary to set it in.
bool setSampleAttachment(CMSampleBuffer& sample, std::string_view key, CFValue value);

}  // namespace helpers
}  // namespace vlm::platform
