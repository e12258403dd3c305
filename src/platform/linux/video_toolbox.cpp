#include "platform/video_toolbox.h"

#include <exception>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/h264/decoding_line.h"
#include "platform/linux/h264/encoder_input.h"
#include "platform/linux/h264/encoding_line.h"
#include "platform/portable/media.h"
#include "platform/portable/object.h"
#include "platform/portable/thread_names.h"

namespace vlm::platform {
namespace {

// Of H.264 itself at its highest level.
constexpr std::int32_t kLargestSide = 16384;

std::vector<std::span<const std::uint8_t>> parameterSetsOf(const CMFormatDescription& description) {
  std::vector<std::span<const std::uint8_t>> sets;
  for (const auto& set : description.parameterSets) {
    if (set) sets.emplace_back(*set);
  }
  return sets;
}

std::optional<OSType> destinationFormat(const CFValue& attributes) {
  const auto* entry = attributes.find(kCVPixelBufferPixelFormatTypeKey);
  if (entry == nullptr) return kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange;
  const auto* format = entry->as<std::int64_t>();
  if (format == nullptr || (*format != kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange &&
                            *format != kCVPixelFormatType_32BGRA)) {
    return std::nullopt;
  }
  return static_cast<OSType>(*format);
}

}  // namespace

class VTCompressionSession final : public Object {
 public:
  VTCompressionSession(std::size_t frameWidth, std::size_t frameHeight, bool lowLatency)
      : width(frameWidth),
        height(frameHeight),
        line(std::make_shared<h264::EncodingLine>(frameWidth, frameHeight, lowLatency)),
        queue(dispatch_queue_create(thread_names::kEncoder, DispatchQoS::userInteractive)) {}

  // The frames' size.
  const std::size_t width;
  const std::size_t height;
  const std::shared_ptr<h264::EncodingLine> line;
  std::shared_ptr<DispatchQueue> queue;  // null when the session has ended
};

OSStatus VTCompressionSessionCreate(std::int32_t width, std::int32_t height, CMVideoCodecType codec,
                                    const CFValue& encoderSpecification,
                                    Ref<VTCompressionSession>& out) {
  if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide ||
      codec != kCMVideoCodecType_H264) {
    return kVTParameterErr;
  }
  const auto* lowLatency =
      encoderSpecification.find(kVTVideoEncoderSpecification_EnableLowLatencyRateControl);
  if (lowLatency != nullptr && lowLatency->as<bool>() == nullptr) return kVTParameterErr;
  try {
    out = makeRef<VTCompressionSession>(static_cast<std::size_t>(width),
                                        static_cast<std::size_t>(height),
                                        lowLatency != nullptr && *lowLatency->as<bool>());
  } catch (const std::exception&) {  // no memory, or no thread
    return kVTAllocationFailedErr;
  }
  return noErr;
}

OSStatus VTSessionSetProperty(VTCompressionSession& session, std::string_view key,
                              const CFValue& value) {
  return session.queue ? session.line->setProperty(key, value) : kVTInvalidSessionErr;
}

OSStatus VTCompressionSessionPrepareToEncodeFrames(VTCompressionSession& session) {
  if (!session.queue) return kVTInvalidSessionErr;
  session.queue->async([line = session.line] { line->prepare(); });
  return noErr;
}

OSStatus VTCompressionSessionEncodeFrameWithOutputHandler(VTCompressionSession& session,
                                                          Ref<CVPixelBuffer> image,
                                                          CMTime presentationTimeStamp, CMTime,
                                                          const CFValue& frameProperties,
                                                          VTCompressionOutputHandler handler) {
  if (!session.queue) return kVTInvalidSessionErr;
  if (!image || image->width() != session.width || image->height() != session.height ||
      !h264::EncoderInput::accepts(image->format())) {
    return kVTParameterErr;
  }
  const auto* force = frameProperties.find(kVTEncodeFrameOptionKey_ForceKeyFrame);
  const bool forced = force != nullptr && force->as<bool>() != nullptr && *force->as<bool>();
  session.line->submit({std::move(image), presentationTimeStamp, forced}, std::move(handler));
  session.queue->async([line = session.line] { line->encodeNext(); });
  return noErr;
}

OSStatus VTCompressionSessionCompleteFrames(VTCompressionSession& session, CMTime) {
  if (!session.queue) return kVTInvalidSessionErr;
  session.queue->sync([] {});
  return noErr;
}

void VTCompressionSessionInvalidate(VTCompressionSession& session) {
  if (!session.queue) return;
  session.line->end();
  session.queue = nullptr;
}

// ---- Decompression ----

class VTDecompressionSession final : public Object {
 public:
  VTDecompressionSession(std::unique_ptr<h264::AvcDecoder> avc, OSType format,
                         std::shared_ptr<h264::DecodingLine> itsLine)
      : decoder(std::make_shared<h264::SampleDecoder>(std::move(avc), format)),
        line(std::move(itsLine)) {}

  const std::shared_ptr<h264::SampleDecoder> decoder;
  const std::shared_ptr<h264::DecodingLine> line;
  bool isEnded = false;
};

OSStatus VTDecompressionSessionCreate(Ref<CMFormatDescription> description,
                                      const CFValue& destinationAttributes,
                                      Ref<VTDecompressionSession>& out) {
  const auto format = destinationFormat(destinationAttributes);
  if (!description || !format) return kVTParameterErr;
  try {
    auto avc = h264::AvcDecoder::open(parameterSetsOf(*description));
    if (!avc) return kVTVideoDecoderBadDataErr;
    out = makeRef<VTDecompressionSession>(std::move(avc), *format, h264::lineForNewSession());
  } catch (const std::exception&) {  // no memory, or no thread
    return kVTAllocationFailedErr;
  }
  return noErr;
}

OSStatus VTDecompressionSessionDecodeFrameWithOutputHandler(VTDecompressionSession& session,
                                                            Ref<CMSampleBuffer> sample,
                                                            VTDecodeFrameFlags,
                                                            VTDecompressionOutputHandler handler) {
  if (session.isEnded) return kVTInvalidSessionErr;
  if (!sample) return kVTParameterErr;
  // A status of this platform: the host holds decoding up, and too much waits already.
  if (!session.line->backlog.enter()) return kVTVideoDecoderMalfunctionErr;
  session.line->queue->async([line = session.line, decoder = session.decoder,
                              sample = std::move(sample), handler = std::move(handler)] {
    decoder->deliver(*sample, handler);
    line->backlog.leave();
  });
  return noErr;
}

OSStatus VTDecompressionSessionWaitForAsynchronousFrames(VTDecompressionSession& session) {
  if (session.isEnded) return kVTInvalidSessionErr;
  session.line->queue->sync([] {});
  return noErr;
}

void VTDecompressionSessionInvalidate(VTDecompressionSession& session) {
  if (std::exchange(session.isEnded, true)) return;
  h264::leaveLine(session.line);
}

}  // namespace vlm::platform
