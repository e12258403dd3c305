#include <string>
#include <utility>

#include "platform/portable/fallible.h"
#include "platform/scripted/machine/refusal.h"

namespace vlm::platform {

using scripted::number;
using scripted::unlessRefused;

namespace {

std::string describe(const CMSampleTimingInfo& timing) {
  return scripted::describe(timing.duration) + " " +
         scripted::describe(timing.presentationTimeStamp) + " " +
         scripted::describe(timing.decodeTimeStamp);
}

}  // namespace

OSStatus CMBlockBufferCreateWithMemoryBlock(std::size_t length, Ref<CMBlockBuffer>& out) {
  return unlessRefused("CMBlockBufferCreateWithMemoryBlock", {number(length)},
                       [&] { return portable::createBlockBuffer(length, out); });
}

OSStatus CMBlockBufferGetDataPointer(const CMBlockBuffer& block, std::size_t offset,
                                     std::span<const std::uint8_t>& piece) {
  return unlessRefused("CMBlockBufferGetDataPointer", {number(offset)},
                       [&] { return portable::blockBufferPiece(block, offset, piece); });
}

OSStatus CMVideoFormatDescriptionCreateFromH264ParameterSets(
    std::span<const std::span<const std::uint8_t>> parameterSets, int nalUnitHeaderLength,
    Ref<CMFormatDescription>& out) {
  CFArray types;
  for (const auto set : parameterSets) types.emplace_back(set.empty() ? 0 : set.front() & 0x1F);
  return unlessRefused("CMVideoFormatDescriptionCreateFromH264ParameterSets",
                       {types, nalUnitHeaderLength},
                       [&] { return portable::createH264Description(parameterSets, out); });
}

OSStatus CMVideoFormatDescriptionGetH264ParameterSetAtIndex(const CMFormatDescription& description,
                                                            std::size_t index,
                                                            std::span<const std::uint8_t>& set) {
  return unlessRefused("CMVideoFormatDescriptionGetH264ParameterSetAtIndex", {number(index)},
                       [&] { return portable::h264ParameterSet(description, index, set); });
}

OSStatus CMVideoFormatDescriptionCreateForImageBuffer(CVPixelBuffer& image,
                                                      Ref<CMFormatDescription>& out) {
  return unlessRefused("CMVideoFormatDescriptionCreateForImageBuffer", {scripted::describe(image)},
                       [&] { return portable::createImageDescription(image, out); });
}

OSStatus CMSampleBufferCreateReady(Ref<CMBlockBuffer> data, Ref<CMFormatDescription> description,
                                   std::span<const CMSampleTimingInfo> timing,
                                   std::span<const std::size_t> sizes, Ref<CMSampleBuffer>& out) {
  CFArray times;
  for (const auto& each : timing) times.emplace_back(describe(each));
  CFArray bytes;
  for (const auto size : sizes) bytes.emplace_back(number(size));
  return unlessRefused("CMSampleBufferCreateReady", {times, bytes}, [&] {
    return portable::createDataSample(std::move(data), std::move(description), timing, out);
  });
}

OSStatus CMSampleBufferCreateReadyWithImageBuffer(Ref<CVPixelBuffer> image,
                                                  Ref<CMFormatDescription> description,
                                                  const CMSampleTimingInfo& timing,
                                                  Ref<CMSampleBuffer>& out) {
  return unlessRefused("CMSampleBufferCreateReadyWithImageBuffer", {describe(timing)}, [&] {
    return portable::createImageSample(std::move(image), std::move(description), timing, out);
  });
}

}  // namespace vlm::platform
