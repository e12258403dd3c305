// Media objects need nothing of the system: no operation is ever refused before it is tried.
#include "platform/portable/fallible.h"

namespace vlm::platform {

OSStatus CMBlockBufferCreateWithMemoryBlock(std::size_t length, Ref<CMBlockBuffer>& out) {
  return portable::createBlockBuffer(length, out);
}

OSStatus CMBlockBufferGetDataPointer(const CMBlockBuffer& block, std::size_t offset,
                                     std::span<const std::uint8_t>& piece) {
  return portable::blockBufferPiece(block, offset, piece);
}

OSStatus CMVideoFormatDescriptionCreateFromH264ParameterSets(
    std::span<const std::span<const std::uint8_t>> parameterSets, int,
    Ref<CMFormatDescription>& out) {
  return portable::createH264Description(parameterSets, out);
}

OSStatus CMVideoFormatDescriptionGetH264ParameterSetAtIndex(const CMFormatDescription& description,
                                                            std::size_t index,
                                                            std::span<const std::uint8_t>& set) {
  return portable::h264ParameterSet(description, index, set);
}

OSStatus CMVideoFormatDescriptionCreateForImageBuffer(CVPixelBuffer& image,
                                                      Ref<CMFormatDescription>& out) {
  return portable::createImageDescription(image, out);
}

OSStatus CMSampleBufferCreateReady(Ref<CMBlockBuffer> data, Ref<CMFormatDescription> description,
                                   std::span<const CMSampleTimingInfo> timing,
                                   std::span<const std::size_t>, Ref<CMSampleBuffer>& out) {
  return portable::createDataSample(std::move(data), std::move(description), timing, out);
}

OSStatus CMSampleBufferCreateReadyWithImageBuffer(Ref<CVPixelBuffer> image,
                                                  Ref<CMFormatDescription> description,
                                                  const CMSampleTimingInfo& timing,
                                                  Ref<CMSampleBuffer>& out) {
  return portable::createImageSample(std::move(image), std::move(description), timing, out);
}

}  // namespace vlm::platform
