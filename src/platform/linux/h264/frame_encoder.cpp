#include "platform/linux/h264/frame_encoder.h"

#include <algorithm>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "platform/read_lock.h"
#include "platform/video_toolbox.h"

namespace vlm::platform::h264 {
namespace {

Ref<CMFormatDescription> describe(const X264Encoder& stream) {
  std::vector<std::span<const std::uint8_t>> sets;
  for (const auto& set : stream.parameterSets()) sets.emplace_back(set);
  Ref<CMFormatDescription> description;
  CMVideoFormatDescriptionCreateFromH264ParameterSets(
      sets, static_cast<int>(X264Encoder::kLengthPrefix), description);
  return description;
}

OSStatus makeSample(std::span<const std::uint8_t> bytes, Ref<CMFormatDescription> description,
                    CMTime time, bool keyFrame, Ref<CMSampleBuffer>& sample) {
  Ref<CMBlockBuffer> block;
  OSStatus status = CMBlockBufferCreateWithMemoryBlock(bytes.size(), block);
  if (status != noErr) return status;
  CMBlockBufferReplaceDataBytes(bytes, *block, 0);
  const CMSampleTimingInfo timing[] = {{kCMTimeInvalid, time, kCMTimeInvalid}};
  const std::size_t sizes[] = {bytes.size()};
  status =
      CMSampleBufferCreateReady(std::move(block), std::move(description), timing, sizes, sample);
  if (status != noErr || keyFrame) return status;
  helpers::setSampleAttachment(*sample, kCMSampleAttachmentKey_NotSync, true);
  return noErr;
}

// Bits a second.
double highestRate(const CompressionSettings& settings) {
  const double limit =
      settings.limitSeconds > 0 ? settings.limitBytes * 8 / settings.limitSeconds : 0;
  return std::max(settings.bitsPerSecond, limit);
}

}  // namespace

FrameEncoder::FrameEncoder(std::size_t width, std::size_t height, bool lowLatency)
    : width_(width), height_(height), quantisers_(lowLatency) {}

void FrameEncoder::prepare(const CompressionSettings& settings) {
  try {
    if (!stream_) openStream({}, settings, true);
  } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch): the first frame tries again
  }
}

bool FrameEncoder::openStream(const media::YCbCrEncoding& encoding,
                              const CompressionSettings& settings, bool mayRaiseLevel) {
  X264Encoder::Format format{.width = (width_ + 1) / 2 * 2,
                             .height = (height_ + 1) / 2 * 2,
                             .encoding = encoding,
                             .framesPerSecond = settings.framesPerSecond,
                             .worstQuantiser = settings.worstQuantiser,
                             .level = 0};
  const int current = stream_ ? stream_->format().level : 0;
  format.level = mayRaiseLevel || !stream_
                     ? std::max(current, X264Encoder::levelFor(format, highestRate(settings)))
                     : current;
  if (stream_ && stream_->format() == format) return true;
  framesSinceKey_ = -1;
  stream_ = X264Encoder::open(format);
  description_ = stream_ ? describe(*stream_) : nullptr;
  return static_cast<bool>(description_);
}

OSStatus FrameEncoder::encode(const Frame& frame, const CompressionSettings& settings,
                              Ref<CMSampleBuffer>& sample) {
  OSStatus status = kVTVideoEncoderMalfunctionErr;
  try {
    const ReadLock lock(*frame.image);
    if (lock) status = encodeLocked(frame, settings, sample);
  } catch (const std::bad_alloc&) {
    status = kVTAllocationFailedErr;
  }
  if (status != noErr) {
    // What the stream refers to next is uncertain.
    framesSinceKey_ = -1;
    blocks_.forget();
  }
  return status;
}

OSStatus FrameEncoder::encodeLocked(const Frame& frame, const CompressionSettings& settings,
                                    Ref<CMSampleBuffer>& sample) {
  const auto source = input_.read(*frame.image);
  if (!source) return kVTAllocationFailedErr;
  if (!openStream(source->picture.encoding, settings, keyFrameIsDue(frame, settings))) {
    return kVTVideoEncoderMalfunctionErr;
  }
  blocks_.update(*source, frame.image->changes().get());
  const bool keyFrame = keyFrameIsDue(frame, settings);
  const double seconds = CMTimeGetSeconds(frame.presentationTimeStamp);
  const auto& shown = stream_->shown();
  const int quantiser = quantisers_.quantiserFor(
      {keyFrame, seconds, source->picture, shown ? &*shown : nullptr, blocks_.flags()}, settings);
  const auto* picture = &source->picture;
  if (!keyFrame && shown && quantisers_.holdsBack()) {
    picture = held_.compose(source->picture, *shown, blocks_.flags());
    if (picture == nullptr) return kVTAllocationFailedErr;
  }
  const auto bytes = stream_->encode(*picture, blocks_.flags(), quantiser, keyFrame);
  if (!bytes) return kVTVideoEncoderMalfunctionErr;
  quantisers_.spend(bytes->size());
  ++framesSinceKey_;
  if (keyFrame) {
    framesSinceKey_ = 0;
    keyFrameSeconds_ = seconds;
  }
  return makeSample(*bytes, description_, frame.presentationTimeStamp, keyFrame, sample);
}

bool FrameEncoder::keyFrameIsDue(const Frame& frame, const CompressionSettings& settings) const {
  if (framesSinceKey_ < 0 || frame.forceKeyFrame) return true;
  const double passed = CMTimeGetSeconds(frame.presentationTimeStamp) - keyFrameSeconds_;
  return (settings.keyFrameIntervalFrames > 0 &&
          framesSinceKey_ + 1 >= settings.keyFrameIntervalFrames) ||
         (settings.keyFrameIntervalSeconds > 0 && passed >= settings.keyFrameIntervalSeconds);
}

}  // namespace vlm::platform::h264
