#include "platform/linux/h264/decoding_line.h"

#include <chrono>
#include <new>
#include <span>

namespace vlm::platform::h264 {
namespace {

// A stream is broken by the loss of any sample, so who submits faster than can be decoded is held
// up; but not for ever, since the handler that holds the decoder up may be waiting for him.
constexpr std::size_t kMostUnits = 32;
constexpr auto kPatience = std::chrono::seconds(1);

}  // namespace

bool Backlog::enter() {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  MutexLock lock(mutex_);
  while (waiting_ >= kMostUnits) {
    if (left_.wait_until(mutex_, deadline) == std::cv_status::timeout) break;
  }
  if (waiting_ >= kMostUnits) return false;
  ++waiting_;
  return true;
}

void Backlog::leave() {
  MutexLock lock(mutex_);
  --waiting_;
  left_.notify_one();
}

OSStatus SampleDecoder::decode(const CMSampleBuffer& sample, Ref<CVPixelBuffer>& image) {
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

void SampleDecoder::deliver(const CMSampleBuffer& sample,
                            const VTDecompressionOutputHandler& handler) {
  Ref<CVPixelBuffer> image;
  OSStatus status = kVTAllocationFailedErr;
  try {
    status = decode(sample, image);
  } catch (const std::bad_alloc&) {
    image = nullptr;
  }
  handler(status, 0, std::move(image), CMSampleBufferGetPresentationTimeStamp(sample),
          kCMTimeInvalid);
}

}  // namespace vlm::platform::h264
