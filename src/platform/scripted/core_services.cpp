// Media objects, pixel buffers and image conversion: the portable work, unless the script says
// otherwise.
#include <string>
#include <utility>

#include "platform/portable/fallible.h"
#include "platform/scripted/machine.h"

namespace vlm::platform {
namespace {

template <class Work>
auto unlessRefused(std::string_view operation, std::initializer_list<CFValue> arguments, Work work)
    -> decltype(work()) {
  const auto fault = scripted::Machine::current().journal.enter(operation, arguments);
  if (fault.fails()) return fault.status;
  return fault.nothing ? 0 : work();
}

std::int64_t number(std::size_t value) {
  return static_cast<std::int64_t>(value);
}

std::string describe(const CMSampleTimingInfo& timing) {
  return scripted::describe(timing.duration) + " " +
         scripted::describe(timing.presentationTimeStamp) + " " +
         scripted::describe(timing.decodeTimeStamp);
}

}  // namespace

CVReturn CVPixelBufferCreate(std::size_t width, std::size_t height, OSType format,
                             const CFValue& attributes, Ref<CVPixelBuffer>& out) {
  return unlessRefused(
      "CVPixelBufferCreate",
      {number(width), number(height), scripted::fourCharacters(format), attributes},
      [&] { return portable::createPixelBuffer(width, height, format, out); });
}

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

OSStatus CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer(CMSampleBuffer& sample,
                                                                 std::span<AudioBuffer> list,
                                                                 std::size_t& count,
                                                                 Ref<CMBlockBuffer>& block) {
  return unlessRefused("CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer",
                       {number(list.size())},
                       [&] { return portable::audioBufferList(sample, list, count, block); });
}

vImage_Error vImageConvert_YpCbCrToARGB_GenerateConversion(const vImage_YpCbCrToARGBMatrix& matrix,
                                                           const vImage_YpCbCrPixelRange& range,
                                                           vImage_YpCbCrToARGB& out) {
  const CFArray matrixEntries{matrix.Yp, matrix.Cr_R, matrix.Cr_G, matrix.Cb_G, matrix.Cb_B};
  const CFArray rangeEntries{range.Yp_bias, range.CbCr_bias, range.YpRangeMax, range.CbCrRangeMax,
                             range.YpMax,   range.YpMin,     range.CbCrMax,    range.CbCrMin};
  return unlessRefused("vImageConvert_YpCbCrToARGB_GenerateConversion",
                       {matrixEntries, rangeEntries},
                       [&] { return portable::generateConversion(matrix, range, out); });
}

vImage_Error vImageConvert_420Yp8_CbCr8ToARGB8888(const vImage_Buffer& luma,
                                                  const vImage_Buffer& chroma,
                                                  const vImage_Buffer& destination,
                                                  const vImage_YpCbCrToARGB& conversion,
                                                  const std::array<std::uint8_t, 4>& permuteMap,
                                                  std::uint8_t alpha) {
  const auto size = [](const vImage_Buffer& image) {
    return CFArray{number(image.width), number(image.height), number(image.rowBytes)};
  };
  CFArray order;
  for (const int index : permuteMap) order.emplace_back(index);
  return unlessRefused(
      "vImageConvert_420Yp8_CbCr8ToARGB8888",
      {size(luma), size(chroma), size(destination), order, std::int32_t{alpha}}, [&] {
        return portable::convertToARGB(luma, chroma, destination, conversion, permuteMap, alpha);
      });
}

}  // namespace vlm::platform
