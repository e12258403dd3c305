#include "platform/linux/h264/avc_decoder.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

extern "C" {
#include <libavutil/mem.h>
}

#include "platform/linux/h264/nal_unit.h"
#include "platform/linux/h264/sequence_parameters.h"

namespace vlm::platform::h264 {
namespace {

using Bytes = std::span<const std::uint8_t>;

void append(std::vector<std::uint8_t>& record, Bytes set) {
  record.push_back(static_cast<std::uint8_t>(set.size() >> 8));
  record.push_back(static_cast<std::uint8_t>(set.size()));
  record.insert(record.end(), set.begin(), set.end());
}

bool isSet(Bytes set, NalUnitType type) {
  // The lengths of the record have 16 bits.
  return set.size() >= 4 && set.size() <= std::numeric_limits<std::uint16_t>::max() &&
         typeOf(set) == type;
}

// The decoder configuration record of ISO/IEC 14496-15; empty when the sets are not one of each.
std::vector<std::uint8_t> configurationRecord(std::span<const Bytes> sets) {
  if (sets.size() != 2 || !isSet(sets[0], NalUnitType::sequenceSet) ||
      !isSet(sets[1], NalUnitType::pictureSet))
    return {};
  const auto& sps = sets[0];
  // Version, profile, constraints, level, then lengths of 4 bytes and one sequence set.
  std::vector<std::uint8_t> record{1, sps[1], sps[2], sps[3], 0xfc | (kLengthPrefix - 1), 0xe0 | 1};
  append(record, sps);
  record.push_back(1);
  append(record, sets[1]);
  return record;
}

bool setConfiguration(AVCodecContext& context, const std::vector<std::uint8_t>& record) {
  auto* copy = static_cast<std::uint8_t*>(av_mallocz(record.size() + AV_INPUT_BUFFER_PADDING_SIZE));
  if (copy == nullptr) return false;
  std::ranges::copy(record, copy);
  context.extradata = copy;  // freed with the context
  context.extradata_size = static_cast<int>(record.size());
  return true;
}

}  // namespace

AvcDecoder::AvcDecoder(media::AVCodecContextPtr context, bool allowsGaps)
    : context_(std::move(context)),
      allowsGaps_(allowsGaps),
      packet_(av_packet_alloc()),
      picture_(av_frame_alloc()),
      received_(av_frame_alloc()),
      recorded_(av_frame_alloc()) {
  context_->opaque = this;
  context_->get_buffer2 = recordBuffer;
}

std::unique_ptr<AvcDecoder> AvcDecoder::open(
    std::span<const std::span<const std::uint8_t>> parameterSets) {
  const auto record = configurationRecord(parameterSets);
  const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_H264);
  if (record.empty() || codec == nullptr) return nullptr;
  // libav writes a line of its own about a size that it refuses, whatever it is asked to log.
  const auto parameters = readSequenceParameters(parameterSets[0]);
  if (!parameters || !parameters->isOfAnyLevel()) return nullptr;
  media::AVCodecContextPtr context(avcodec_alloc_context3(codec));
  if (!context || !setConfiguration(*context, record)) return nullptr;
  // A picture may be cropped at any side, and begins there, aligned or not.
  context->flags |= AV_CODEC_FLAG_LOW_DELAY | AV_CODEC_FLAG_UNALIGNED;
  // Whether the pictures before it are there is decided here.
  context->flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT;
  // One thread finds every error; slices on several would hide missing ones.
  context->thread_count = 1;
  // Damaged parameter sets are refused here instead of being guessed at.
  context->err_recognition = AV_EF_EXPLODE;
  media::silence(*context);
  if (avcodec_open2(context.get(), codec, nullptr) < 0) return nullptr;
  return std::unique_ptr<AvcDecoder>(new AvcDecoder(std::move(context), parameters->allowsGaps));
}

int AvcDecoder::recordBuffer(AVCodecContext* context, AVFrame* frame, int flags) {
  const int result = avcodec_default_get_buffer2(context, frame, flags);
  auto& self = *static_cast<AvcDecoder*>(context->opaque);
  av_frame_unref(self.recorded_.get());
  self.decodersFrame_ = nullptr;
  if (result < 0 || av_frame_ref(self.recorded_.get(), frame) < 0) return result;
  self.decodersFrame_ = frame;
  ++self.recordedCount_;
  return result;
}

bool AvcDecoder::send(Bytes accessUnit) {
  // The decoder's readers run past the end of what they are given.
  padded_.assign(accessUnit.begin(), accessUnit.end());
  padded_.resize(accessUnit.size() + AV_INPUT_BUFFER_PADDING_SIZE);
  packet_->data = padded_.data();
  packet_->size = static_cast<int>(accessUnit.size());
  return avcodec_send_packet(context_.get(), packet_.get()) >= 0;
}

// Takes what the decoder has to show, in its own order. True when there was a picture, which
// picture_ then holds.
bool AvcDecoder::receive() {
  bool any = false;
  while (avcodec_receive_frame(context_.get(), received_.get()) >= 0) {
    any = true;
    av_frame_unref(picture_.get());
    av_frame_move_ref(picture_.get(), received_.get());
  }
  return any;
}

// What was missing from a picture, or wrong in it, libav makes up from other pictures, which it
// only notes in a flag: of the picture that came out, or where that is held back, of the decoder's
// own. That one lives as long as the decoder, and is still the picture's when it has its buffer.
bool AvcDecoder::hasMadeUpParts(bool received) const {
  if (received && picture_->decode_error_flags != 0) return true;
  return decodersFrame_ != nullptr && decodersFrame_->data[0] != nullptr &&
         decodersFrame_->data[0] == recorded_->data[0] && decodersFrame_->decode_error_flags != 0;
}

// True when the picture may be shown as far as those before it are concerned.
bool AvcDecoder::synchronise(const AccessUnitFacts& facts) {
  if (facts.hasIdrSlice) {
    sync_ = Sync::whole;
    seenIdr_ = true;
  } else if (sync_ == Sync::none && !seenIdr_ && facts.isIntra) {
    sync_ = Sync::joined;
    return true;
  }
  // B pictures right behind the first are shown before it and need what came before it.
  if (sync_ == Sync::joined && !facts.isBiPredictive) sync_ = Sync::whole;
  return sync_ == Sync::whole;
}

AvcDecoder::Outcome AvcDecoder::decode(Bytes accessUnit) {
  recordedCount_ = 0;
  decodersFrame_ = nullptr;
  av_frame_unref(picture_.get());
  av_frame_unref(recorded_.get());
  const auto facts = factsOf(accessUnit);
  const bool sound = send(accessUnit);
  const bool received = receive();
  // A second buffer is for a picture that never came.
  const bool lacksPictures = recordedCount_ > 1 && !allowsGaps_ && sync_ != Sync::none;
  if (!sound || lacksPictures || hasMadeUpParts(received)) {
    sync_ = Sync::none;
    return Outcome::damaged;
  }
  if (!synchronise(facts)) return Outcome::nothing;
  if (context_->has_b_frames == 0) return received ? Outcome::picture : Outcome::nothing;
  if (recordedCount_ == 0) return Outcome::nothing;
  // The decoder keeps the picture back to put it in order of time; its pixels are complete.
  av_frame_unref(picture_.get());
  av_frame_move_ref(picture_.get(), recorded_.get());
  const bool isCropped = av_frame_apply_cropping(picture_.get(), AV_FRAME_CROP_UNALIGNED) >= 0;
  return isCropped ? Outcome::picture : Outcome::damaged;
}

}  // namespace vlm::platform::h264
