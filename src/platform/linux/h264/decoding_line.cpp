// Decompression sessions: access units wait in line for the session's codec thread.
#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "platform/dispatch.h"
#include "platform/linux/h264/avc_decoder.h"
#include "platform/linux/h264/decoded_picture.h"
#include "platform/mutex.h"
#include "platform/portable/media.h"
#include "platform/portable/object.h"
#include "platform/video_toolbox.h"

namespace vlm::platform {
namespace {

// A stream is broken by the loss of any sample, so who submits faster than can be decoded is held
// up; but not for ever, since the handler that holds the decoder up may be waiting for him.
constexpr std::size_t kMostUnits = 32;
constexpr auto kPatience = std::chrono::seconds(1);

// Counts the samples that have not been delivered yet.
class Backlog {
 public:
  // False when there is no room.
  bool enter() {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    MutexLock lock(mutex_);
    while (waiting_ >= kMostUnits) {
      if (left_.wait_until(mutex_, deadline) == std::cv_status::timeout) break;
    }
    if (waiting_ >= kMostUnits) return false;
    ++waiting_;
    return true;
  }
  void leave() {
    MutexLock lock(mutex_);
    --waiting_;
    left_.notify_one();
  }

 private:
  Mutex mutex_;
  std::condition_variable_any left_;
  std::size_t waiting_ VLM_GUARDED_BY(mutex_) = 0;
};

// The codec thread's alone once the session is made.
class SampleDecoder {
 public:
  SampleDecoder(std::unique_ptr<AvcDecoder> decoder, OSType format)
      : decoder_(std::move(decoder)), converter_(format) {}

  // `image` is written only when there is one to show.
  OSStatus decode(const CMSampleBuffer& sample, Ref<CVPixelBuffer>& image) {
    std::span<const std::uint8_t> bytes;
    const auto* data = CMSampleBufferGetDataBuffer(sample);
    if (data == nullptr || CMBlockBufferGetDataPointer(*data, 0, bytes) != noErr) {
      return kVTVideoDecoderBadDataErr;
    }
    switch (decoder_->decode(bytes)) {
      case AvcDecoder::Outcome::damaged:
        return kVTVideoDecoderBadDataErr;
      case AvcDecoder::Outcome::nothing:
        return noErr;
      case AvcDecoder::Outcome::picture:
        image = converter_.convert(decoder_->picture());
        return image ? noErr : kVTVideoDecoderBadDataErr;
    }
    return noErr;
  }

 private:
  const std::unique_ptr<AvcDecoder> decoder_;
  PictureConverter converter_;
};

void decodeAndDeliver(SampleDecoder& decoder, const CMSampleBuffer& sample,
                      const VTDecompressionOutputHandler& handler) {
  Ref<CVPixelBuffer> image;
  OSStatus status = kVTAllocationFailedErr;
  try {
    status = decoder.decode(sample, image);
  } catch (const std::bad_alloc&) {
    image = nullptr;
  }
  handler(status, 0, std::move(image), CMSampleBufferGetPresentationTimeStamp(sample),
          kCMTimeInvalid);
}

std::vector<std::span<const std::uint8_t>> parameterSetsOf(const CMFormatDescription& description) {
  std::vector<std::span<const std::uint8_t>> sets;
  for (const auto& set : description.parameterSets) {
    if (set) sets.emplace_back(*set);
  }
  return sets;
}

// Where samples wait for their turn. A session that follows another goes on with its line: so what
// comes out stays in order, and a stream that changes all the time piles up no threads.
struct DecodingLine {
  Backlog backlog;
  const std::shared_ptr<DispatchQueue> queue =
      dispatch_queue_create("vlm.decoder", DispatchQoS::userInteractive);
};

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

class VTDecompressionSession final : public Object {
 public:
  VTDecompressionSession(std::unique_ptr<AvcDecoder> avc, OSType format,
                         std::shared_ptr<DecodingLine> itsLine)
      : decoder(std::make_shared<SampleDecoder>(std::move(avc), format)),
        line(std::move(itsLine)) {}

  const std::shared_ptr<SampleDecoder> decoder;
  const std::shared_ptr<DecodingLine> line;
  bool isEnded = false;
};

OSStatus VTDecompressionSessionCreate(Ref<CMFormatDescription> description,
                                      const CFValue& destinationAttributes,
                                      const Ref<VTDecompressionSession>& predecessor,
                                      Ref<VTDecompressionSession>& out) {
  const auto format = destinationFormat(destinationAttributes);
  if (!description || !format) return kVTParameterErr;
  try {
    auto avc = AvcDecoder::open(parameterSetsOf(*description));
    if (!avc) return kVTVideoDecoderBadDataErr;
    auto line = predecessor ? predecessor->line : std::make_shared<DecodingLine>();
    out = makeRef<VTDecompressionSession>(std::move(avc), *format, std::move(line));
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
  if (!session.line->backlog.enter()) return kVTVideoDecoderMalfunctionErr;
  session.line->queue->async([line = session.line, decoder = session.decoder,
                              sample = std::move(sample), handler = std::move(handler)] {
    decodeAndDeliver(*decoder, *sample, handler);
    line->backlog.leave();
  });
  return noErr;
}

OSStatus VTDecompressionSessionWaitForAsynchronousFrames(VTDecompressionSession& session) {
  session.line->queue->sync([] {});
  return noErr;
}

void VTDecompressionSessionInvalidate(VTDecompressionSession& session) {
  session.isEnded = true;
}

}  // namespace vlm::platform
