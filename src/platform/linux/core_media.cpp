// Media objects, pixel buffers and image conversion need nothing of the system: here no operation
// is ever refused before it is tried.
#include "platform/portable/fallible.h"

namespace vlm::platform {

CVReturn CVPixelBufferCreate(std::size_t width, std::size_t height, OSType format, const CFValue&,
                             Ref<CVPixelBuffer>& out) {
  return portable::createPixelBuffer(width, height, format, out);
}

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

OSStatus CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer(CMSampleBuffer& sample,
                                                                 std::span<AudioBuffer> list,
                                                                 std::size_t& count,
                                                                 Ref<CMBlockBuffer>& block) {
  return portable::audioBufferList(sample, list, count, block);
}

vImage_Error vImageConvert_YpCbCrToARGB_GenerateConversion(const vImage_YpCbCrToARGBMatrix& matrix,
                                                           const vImage_YpCbCrPixelRange& range,
                                                           vImage_YpCbCrToARGB& out) {
  return portable::generateConversion(matrix, range, out);
}

vImage_Error vImageConvert_420Yp8_CbCr8ToARGB8888(const vImage_Buffer& luma,
                                                  const vImage_Buffer& chroma,
                                                  const vImage_Buffer& destination,
                                                  const vImage_YpCbCrToARGB& conversion,
                                                  const std::array<std::uint8_t, 4>& permuteMap,
                                                  std::uint8_t alpha) {
  return portable::convertToARGB(luma, chroma, destination, conversion, permuteMap, alpha);
}

}  // namespace vlm::platform
