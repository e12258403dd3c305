#include "platform/portable/media.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "platform/portable/fallible.h"

namespace vlm::platform {
namespace {

constexpr OSStatus kCMBlockBufferBadOffsetParameterErr = -12704;
constexpr OSStatus kCMFormatDescriptionError_InvalidParameter = -12710;
constexpr OSStatus kCMSampleBufferError_RequiredParameterMissing = -12731;

}  // namespace

double CMTimeGetSeconds(CMTime time) noexcept {
  if (time.timescale == 0) return std::numeric_limits<double>::quiet_NaN();
  return static_cast<double>(time.value) / static_cast<double>(time.timescale);
}

OSStatus portable::createBlockBuffer(std::size_t length, Ref<CMBlockBuffer>& out) {
  out = makeRef<CMBlockBuffer>(std::vector<CMBlockBuffer::Piece>(1, CMBlockBuffer::Piece(length)));
  return noErr;
}

OSStatus CMBlockBufferReplaceDataBytes(std::span<const std::uint8_t> bytes, CMBlockBuffer& block,
                                       std::size_t offset) {
  if (offset > CMBlockBufferGetDataLength(block) ||
      bytes.size() > CMBlockBufferGetDataLength(block) - offset) {
    return kCMBlockBufferBadOffsetParameterErr;
  }
  for (auto& piece : block.pieces) {
    if (offset >= piece.size()) {
      offset -= piece.size();
      continue;
    }
    const std::size_t count = std::min(bytes.size(), piece.size() - offset);
    std::copy_n(bytes.begin(), count, piece.begin() + static_cast<std::ptrdiff_t>(offset));
    bytes = bytes.subspan(count);
    offset = 0;
  }
  return noErr;
}

std::size_t CMBlockBufferGetDataLength(const CMBlockBuffer& block) noexcept {
  std::size_t length = 0;
  for (const auto& piece : block.pieces) length += piece.size();
  return length;
}

OSStatus portable::blockBufferPiece(const CMBlockBuffer& block, std::size_t offset,
                                    std::span<const std::uint8_t>& piece) {
  for (const auto& candidate : block.pieces) {
    if (offset < candidate.size()) {
      piece = std::span(candidate).subspan(offset);
      return noErr;
    }
    offset -= candidate.size();
  }
  return kCMBlockBufferBadOffsetParameterErr;
}

OSStatus portable::createH264Description(
    std::span<const std::span<const std::uint8_t>> parameterSets, Ref<CMFormatDescription>& out) {
  const auto isEmpty = [](auto set) { return set.empty(); };
  if (parameterSets.empty() || std::ranges::any_of(parameterSets, isEmpty)) {
    return kCMFormatDescriptionError_InvalidParameter;
  }
  auto description = makeRef<CMFormatDescription>();
  for (const auto set : parameterSets) {
    description->parameterSets.emplace_back(std::vector<std::uint8_t>(set.begin(), set.end()));
  }
  out = std::move(description);
  return noErr;
}

OSStatus helpers::h264ParameterSetCount(const CMFormatDescription& description,
                                        std::size_t& count) {
  count = description.parameterSets.size();
  return noErr;
}

OSStatus portable::h264ParameterSet(const CMFormatDescription& description, std::size_t index,
                                    std::span<const std::uint8_t>& set) {
  if (index >= description.parameterSets.size() || !description.parameterSets[index]) {
    return kCMFormatDescriptionError_InvalidParameter;
  }
  set = *description.parameterSets[index];
  return noErr;
}

OSStatus portable::createImageDescription(const CVPixelBuffer& image,
                                          Ref<CMFormatDescription>& out) {
  auto description = makeRef<CMFormatDescription>();
  description->width = image.width();
  description->height = image.height();
  out = std::move(description);
  return noErr;
}

OSStatus portable::createDataSample(Ref<CMBlockBuffer> data, Ref<CMFormatDescription> description,
                                    std::span<const CMSampleTimingInfo> timing,
                                    Ref<CMSampleBuffer>& out) {
  if (!data || timing.empty()) return kCMSampleBufferError_RequiredParameterMissing;
  auto sample = makeRef<CMSampleBuffer>();
  sample->data = std::move(data);
  sample->description = std::move(description);
  sample->timing = timing.front();
  out = std::move(sample);
  return noErr;
}

OSStatus portable::createImageSample(Ref<CVPixelBuffer> image, Ref<CMFormatDescription> description,
                                     const CMSampleTimingInfo& timing, Ref<CMSampleBuffer>& out) {
  if (!image || !description) return kCMSampleBufferError_RequiredParameterMissing;
  auto sample = makeRef<CMSampleBuffer>();
  sample->image = std::move(image);
  sample->description = std::move(description);
  sample->timing = timing;
  out = std::move(sample);
  return noErr;
}

bool CMSampleBufferIsValid(const CMSampleBuffer& sample) noexcept {
  return sample.valid;
}

CMBlockBuffer* CMSampleBufferGetDataBuffer(const CMSampleBuffer& sample) noexcept {
  return sample.data.get();
}

CVPixelBuffer* CMSampleBufferGetImageBuffer(const CMSampleBuffer& sample) noexcept {
  return sample.image.get();
}

CMFormatDescription* CMSampleBufferGetFormatDescription(const CMSampleBuffer& sample) noexcept {
  return sample.description.get();
}

CMTime CMSampleBufferGetPresentationTimeStamp(const CMSampleBuffer& sample) noexcept {
  return sample.timing.presentationTimeStamp;
}

CFValue helpers::sampleAttachment(CMSampleBuffer& sample, std::string_view key) {
  const auto* array = sample.attachments ? sample.attachments->as<CFArray>() : nullptr;
  if (array == nullptr || array->empty()) return {};
  const auto* value = array->front().find(key);
  return value != nullptr ? *value : CFValue();
}

bool helpers::setSampleAttachment(CMSampleBuffer& sample, std::string_view key, CFValue value) {
  if (!sample.attachments && sample.attachable) sample.attachments = CFArray{CFDictionary{}};
  auto* array = sample.attachments ? sample.attachments->as<CFArray>() : nullptr;
  auto* first = array != nullptr && !array->empty() ? array->front().as<CFDictionary>() : nullptr;
  if (first == nullptr) return false;
  (*first)[std::string(key)] = std::move(value);
  return true;
}

}  // namespace vlm::platform
