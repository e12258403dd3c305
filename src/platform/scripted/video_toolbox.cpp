#include <array>
#include <map>

#include "platform/portable/media.h"
#include "platform/scripted/machine/machine.h"
#include "platform/scripted/machine/video_stage.h"

namespace vlm::platform {
namespace {

using scripted::describe;
using scripted::Machine;

bool isNumber(const CFValue& value) {
  return value.as<std::int64_t>() != nullptr || value.as<double>() != nullptr;
}

bool isRateLimit(const CFValue& value) {
  const auto* array = value.as<CFArray>();
  return array != nullptr && array->size() == 2 && isNumber(array->front()) &&
         isNumber(array->back());
}

// The status with which a session takes a property.
OSStatus propertyStatus(std::string_view key, const CFValue& value) {
  const bool isTruth = key == kVTCompressionPropertyKey_RealTime ||
                       key == kVTCompressionPropertyKey_AllowFrameReordering;
  const bool isCount = key == kVTCompressionPropertyKey_ExpectedFrameRate ||
                       key == kVTCompressionPropertyKey_MaxKeyFrameInterval ||
                       key == kVTCompressionPropertyKey_MaxKeyFrameIntervalDuration ||
                       key == kVTCompressionPropertyKey_MaxAllowedFrameQP ||
                       key == kVTCompressionPropertyKey_AverageBitRate;
  bool fits = false;
  if (isTruth) {
    fits = value.as<bool>() != nullptr;
  } else if (isCount) {
    fits = isNumber(value);
  } else if (key == kVTCompressionPropertyKey_ProfileLevel) {
    fits = value.as<std::string>() != nullptr;
  } else if (key == kVTCompressionPropertyKey_DataRateLimits) {
    fits = isRateLimit(value);
  } else {
    return kVTPropertyNotSupportedErr;
  }
  return fits ? noErr : kVTParameterErr;
}

// Enters the operation; a session that has ended refuses every one.
template <class Session>
OSStatus enter(const Session& session, const char* operation,
               std::initializer_list<CFValue> arguments = {}) {
  const auto fault = Machine::current().journal.enter(operation, arguments);
  if (fault.fails()) return fault.status;
  return session.invalidated ? kVTInvalidSessionErr : noErr;
}

}  // namespace

namespace scripted {

void OutputLine::submit(std::function<void()> delivery, bool hold) {
  {
    const MutexLock lock(mutex_);
    held_.push_back(std::move(delivery));
  }
  if (!hold) release();
}

void OutputLine::release() {
  const MutexLock lock(mutex_);
  for (auto& delivery : held_) queue_->async(std::move(delivery));
  held_.clear();
}

void OutputLine::wait() {
  release();
  queue_->sync([] {});
}

Ref<CMFormatDescription> makeH264Description(std::int32_t width, std::int32_t height) {
  const auto byte = [](std::int32_t value) { return static_cast<std::uint8_t>(value & 0xFF); };
  auto description = makeRef<CMFormatDescription>();
  description->parameterSets = {
      CFData{0x67, byte(width >> 8), byte(width), byte(height >> 8), byte(height)},
      CFData{0x68, 0xEE}};
  return description;
}

Ref<CMSampleBuffer> makeCompressedSample(const FrameIn& frame) {
  const auto time = static_cast<std::uint8_t>(frame.presentationTimeStamp.value & 0xFF);
  const std::uint8_t slice = frame.keyframe ? 0x65 : 0x41;
  auto sample = makeRef<CMSampleBuffer>();
  sample->data =
      makeRef<CMBlockBuffer>(std::vector<CMBlockBuffer::Piece>{{0, 0, 0, 3, slice, 0x88, time}});
  sample->description = makeH264Description(frame.width, frame.height);
  sample->timing.presentationTimeStamp = frame.presentationTimeStamp;
  if (!frame.keyframe) {
    sample->attachments =
        CFArray{CFDictionary{{std::string(kCMSampleAttachmentKey_NotSync), true}}};
  }
  return sample;
}

SampleOut compressFrame(const FrameIn& frame) {
  return {noErr, makeCompressedSample(frame)};
}

ImageOut decompressSample(const CMFormatDescription& description, OSType pixelFormat) {
  const auto& sets = description.parameterSets;
  if (sets.empty() || !sets[0] || sets[0]->size() != 5) return {kVTVideoDecoderBadDataErr, nullptr};
  const auto& sps = *sets[0];
  const auto pixels = [&](std::size_t at) { return std::size_t{sps[at]} << 8 | sps[at + 1]; };
  auto image = CVPixelBuffer::make(pixels(1), pixels(3), pixelFormat);
  return {image ? noErr : kVTVideoDecoderBadDataErr, image};
}

}  // namespace scripted

OSStatus VTCompressionSessionCreate(std::int32_t width, std::int32_t height, CMVideoCodecType codec,
                                    const CFValue& encoderSpecification,
                                    Ref<VTCompressionSession>& out) {
  auto& machine = Machine::current();
  const auto fault =
      machine.journal.enter("VTCompressionSessionCreate",
                            {width, height, scripted::fourCharacters(codec), encoderSpecification});
  if (fault.fails()) return fault.status;
  if (width < 1 || height < 1) return kVTParameterErr;
  if (fault.nothing) return noErr;
  out = makeRef<VTCompressionSession>(width, height, machine.makeQueue("scripted.compression"));
  machine.video.compressions.push_back(out);
  return noErr;
}

OSStatus VTSessionSetProperty(VTCompressionSession& session, std::string_view key,
                              const CFValue& value) {
  const OSStatus status = enter(session, "VTSessionSetProperty", {key, value});
  return status != noErr ? status : propertyStatus(key, value);
}

OSStatus VTCompressionSessionPrepareToEncodeFrames(VTCompressionSession& session) {
  return enter(session, "VTCompressionSessionPrepareToEncodeFrames");
}

OSStatus VTCompressionSessionEncodeFrameWithOutputHandler(
    VTCompressionSession& session, Ref<CVPixelBuffer> image, CMTime presentationTimeStamp,
    CMTime duration, const CFValue& frameProperties, VTCompressionOutputHandler handler) {
  const OSStatus status = enter(
      session, "VTCompressionSessionEncodeFrame",
      {describe(*image), describe(presentationTimeStamp), describe(duration), frameProperties});
  if (status != noErr) return status;
  const auto* forced = frameProperties.find(kVTEncodeFrameOptionKey_ForceKeyFrame);
  const bool keyframe = !session.started || (forced != nullptr && *forced == CFValue(true));
  session.started = true;
  const scripted::FrameIn frame{session.width, session.height, presentationTimeStamp, keyframe,
                                std::move(image)};
  auto& video = Machine::current().video;
  // The buffer is held until the frame is delivered, as an encoder that works on it would.
  session.output.submit(
      [frame, compress = video.compress, handler = std::move(handler)] {
        auto [outcome, sample] = compress(frame);
        const bool dropped = outcome == noErr && !sample;
        handler(outcome, dropped ? kVTEncodeInfo_FrameDropped : 0, std::move(sample));
      },
      video.holdsOutput);
  return noErr;
}

OSStatus VTCompressionSessionCompleteFrames(VTCompressionSession& session, CMTime until) {
  const OSStatus status = enter(session, "VTCompressionSessionCompleteFrames", {describe(until)});
  if (status == noErr) session.output.wait();
  return status;
}

void VTCompressionSessionInvalidate(VTCompressionSession& session) {
  enter(session, "VTCompressionSessionInvalidate");
  session.invalidated = true;
}

OSStatus VTDecompressionSessionCreate(Ref<CMFormatDescription> description,
                                      const CFValue& destinationAttributes,
                                      Ref<VTDecompressionSession>& out) {
  auto& machine = Machine::current();
  const auto fault = machine.journal.enter("VTDecompressionSessionCreate", {destinationAttributes});
  if (fault.fails()) return fault.status;
  if (fault.nothing) return noErr;
  const auto* format = destinationAttributes.find(kCVPixelBufferPixelFormatTypeKey);
  const auto* code = format != nullptr ? format->as<std::int64_t>() : nullptr;
  if (!description || code == nullptr) return kVTParameterErr;
  out = makeRef<VTDecompressionSession>(std::move(description), static_cast<OSType>(*code),
                                        machine.makeQueue("scripted.decompression"));
  machine.video.decompressions.push_back(out);
  return noErr;
}

OSStatus VTDecompressionSessionDecodeFrameWithOutputHandler(VTDecompressionSession& session,
                                                            Ref<CMSampleBuffer> sample,
                                                            VTDecodeFrameFlags flags,
                                                            VTDecompressionOutputHandler handler) {
  const auto* data = CMSampleBufferGetDataBuffer(*sample);
  const auto size = data != nullptr ? CMBlockBufferGetDataLength(*data) : 0;
  const OSStatus status =
      enter(session, "VTDecompressionSessionDecodeFrame", {static_cast<std::int64_t>(size), flags});
  if (status != noErr) return status;
  auto& video = Machine::current().video;
  session.output.submit(
      [held = Ref<VTDecompressionSession>::retaining(&session), sample = std::move(sample),
       decompress = video.decompress, handler = std::move(handler)] {
        auto [outcome, image] =
            decompress ? decompress(*held, *sample)
                       : scripted::decompressSample(*held->description, held->pixelFormat);
        handler(outcome, 0, std::move(image), sample->timing.presentationTimeStamp,
                sample->timing.duration);
      },
      video.holdsOutput);
  return noErr;
}

OSStatus VTDecompressionSessionWaitForAsynchronousFrames(VTDecompressionSession& session) {
  const OSStatus status = enter(session, "VTDecompressionSessionWaitForAsynchronousFrames");
  if (status == noErr) session.output.wait();
  return status;
}

void VTDecompressionSessionInvalidate(VTDecompressionSession& session) {
  enter(session, "VTDecompressionSessionInvalidate");
  session.invalidated = true;
  session.output.release();
}

}  // namespace vlm::platform
