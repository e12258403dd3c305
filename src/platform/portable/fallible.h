#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/accelerate.h"
#include "platform/core_media_audio.h"
#include "platform/core_video.h"

// The work of those operations that a platform may want to refuse before it is done. Each platform
// defines the operation itself and forwards to its namesake here.
namespace vlm::platform::portable {

CVReturn createPixelBuffer(std::size_t width, std::size_t height, OSType format,
                           Ref<CVPixelBuffer>& out);

OSStatus createBlockBuffer(std::size_t length, Ref<CMBlockBuffer>& out);
OSStatus blockBufferPiece(const CMBlockBuffer& block, std::size_t offset,
                          std::span<const std::uint8_t>& piece);

// Keeps the parameter sets as they are, or refuses an empty list or an empty set.
OSStatus createH264Description(std::span<const std::span<const std::uint8_t>> parameterSets,
                               Ref<CMFormatDescription>& out);
OSStatus h264ParameterSet(const CMFormatDescription& description, std::size_t index,
                          std::span<const std::uint8_t>& set);
OSStatus createImageDescription(const CVPixelBuffer& image, Ref<CMFormatDescription>& out);

OSStatus createDataSample(Ref<CMBlockBuffer> data, Ref<CMFormatDescription> description,
                          std::span<const CMSampleTimingInfo> timing, Ref<CMSampleBuffer>& out);
OSStatus createImageSample(Ref<CVPixelBuffer> image, Ref<CMFormatDescription> description,
                           const CMSampleTimingInfo& timing, Ref<CMSampleBuffer>& out);

OSStatus audioBufferList(CMSampleBuffer& sample, std::span<AudioBuffer> list, std::size_t& count,
                         Ref<CMBlockBuffer>& block);

vImage_Error generateConversion(const vImage_YpCbCrToARGBMatrix& matrix,
                                const vImage_YpCbCrPixelRange& range, vImage_YpCbCrToARGB& out);
vImage_Error convertToARGB(const vImage_Buffer& luma, const vImage_Buffer& chroma,
                           const vImage_Buffer& destination, const vImage_YpCbCrToARGB& conversion,
                           const std::array<std::uint8_t, 4>& permuteMap, std::uint8_t alpha);

}  // namespace vlm::platform::portable
