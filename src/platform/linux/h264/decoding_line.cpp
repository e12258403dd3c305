#include "platform/linux/h264/decoding_line.h"

#include <chrono>
#include <map>
#include <new>
#include <span>
#include <thread>

namespace vlm::platform::h264 {
namespace {

// A stream is broken by the loss of any sample, so who submits faster than can be decoded is held
// up; but not for ever, since the handler that holds the decoder up may be waiting for him.
constexpr std::size_t kMostUnits = 32;
constexpr auto kPatience = std::chrono::seconds(1);

// The line that each thread has left last. A line ends with its last sample, wherever it is noted.
class LeftLines {
 public:
  // Never ended: a session may end while the process exits.
  static LeftLines& shared() {
    static auto* const lines = new LeftLines();
    return *lines;
  }

  void add(const std::shared_ptr<DecodingLine>& line) {
    MutexLock lock(mutex_);
    std::erase_if(lines_, [](const auto& each) { return each.second.expired(); });
    lines_[std::this_thread::get_id()] = line;
  }

  // Null when the line has ended or the thread has left none.
  std::shared_ptr<DecodingLine> take() {
    MutexLock lock(mutex_);
    const auto left = lines_.extract(std::this_thread::get_id());
    return left ? left.mapped().lock() : nullptr;
  }

 private:
  Mutex mutex_;
  std::map<std::thread::id, std::weak_ptr<DecodingLine>> lines_ VLM_GUARDED_BY(mutex_);
};

}  // namespace

std::shared_ptr<DecodingLine> lineForNewSession() {
  auto line = LeftLines::shared().take();
  return line ? line : std::make_shared<DecodingLine>();
}

void leaveLine(const std::shared_ptr<DecodingLine>& line) {
  LeftLines::shared().add(line);
}

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
