#include "platform/linux/h264/avc_decoder.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

extern "C" {
#include <libavutil/mem.h>
}

namespace vlm::platform::h264 {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint8_t kTypeMask = 0x1f;
constexpr std::uint8_t kIdrSlice = 5;
constexpr std::uint8_t kSequenceSet = 7;
constexpr std::uint8_t kPictureSet = 8;
constexpr std::size_t kLengthPrefix = 4;

void append(std::vector<std::uint8_t>& record, Bytes set) {
  record.push_back(static_cast<std::uint8_t>(set.size() >> 8));
  record.push_back(static_cast<std::uint8_t>(set.size()));
  record.insert(record.end(), set.begin(), set.end());
}

bool isSet(Bytes set, std::uint8_t type) {
  // The lengths of the record have 16 bits.
  return set.size() >= 4 && set.size() <= std::numeric_limits<std::uint16_t>::max() &&
         (set.front() & kTypeMask) == type;
}

// The decoder configuration record of ISO/IEC 14496-15; empty when the sets are not one of each.
std::vector<std::uint8_t> configurationRecord(std::span<const Bytes> sets) {
  if (sets.size() != 2 || !isSet(sets[0], kSequenceSet) || !isSet(sets[1], kPictureSet)) return {};
  const auto& sps = sets[0];
  // Version, profile, constraints, level, then lengths of 4 bytes and one sequence set.
  std::vector<std::uint8_t> record{1, sps[1], sps[2], sps[3], 0xfc | (kLengthPrefix - 1), 0xe0 | 1};
  append(record, sps);
  record.push_back(1);
  append(record, sets[1]);
  return record;
}

bool containsIdr(Bytes accessUnit) {
  while (accessUnit.size() > kLengthPrefix) {
    const std::size_t length =
        std::size_t{accessUnit[0]} << 24 | accessUnit[1] << 16 | accessUnit[2] << 8 | accessUnit[3];
    if ((accessUnit[kLengthPrefix] & kTypeMask) == kIdrSlice) return true;
    if (length > accessUnit.size() - kLengthPrefix) return false;
    accessUnit = accessUnit.subspan(kLengthPrefix + length);
  }
  return false;
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

AvcDecoder::AvcDecoder(media::AVCodecContextPtr context)
    : context_(std::move(context)),
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
  media::AVCodecContextPtr context(avcodec_alloc_context3(codec));
  if (!context || !setConfiguration(*context, record)) return nullptr;
  // A picture may be cropped at any side, and begins there, aligned or not.
  context->flags |= AV_CODEC_FLAG_LOW_DELAY | AV_CODEC_FLAG_UNALIGNED;
  // One thread finds every error; slices on several would hide missing ones.
  context->thread_count = 1;
  // Damaged parameter sets are refused here instead of being guessed at.
  context->err_recognition = AV_EF_EXPLODE;
  media::silence(*context);
  if (avcodec_open2(context.get(), codec, nullptr) < 0) return nullptr;
  return std::unique_ptr<AvcDecoder>(new AvcDecoder(std::move(context)));
}

int AvcDecoder::recordBuffer(AVCodecContext* context, AVFrame* frame, int flags) {
  const int result = avcodec_default_get_buffer2(context, frame, flags);
  auto& self = *static_cast<AvcDecoder*>(context->opaque);
  av_frame_unref(self.recorded_.get());
  if (result < 0 || av_frame_ref(self.recorded_.get(), frame) < 0) return result;
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

AvcDecoder::Outcome AvcDecoder::decode(Bytes accessUnit) {
  recordedCount_ = 0;
  av_frame_unref(picture_.get());
  av_frame_unref(recorded_.get());
  const bool sound = send(accessUnit);
  const bool received = receive();
  // A second buffer stands in for a picture that never came.
  if (!sound || recordedCount_ > 1) {
    synchronised_ = false;
    return Outcome::damaged;
  }
  if (containsIdr(accessUnit)) synchronised_ = true;
  if (!synchronised_) return Outcome::nothing;
  if (context_->has_b_frames == 0) return received ? Outcome::picture : Outcome::nothing;
  if (recordedCount_ == 0) return Outcome::nothing;
  // The decoder keeps the picture back to put it in order of time; its pixels are complete.
  av_frame_unref(picture_.get());
  av_frame_move_ref(picture_.get(), recorded_.get());
  const bool isCropped = av_frame_apply_cropping(picture_.get(), AV_FRAME_CROP_UNALIGNED) >= 0;
  return isCropped ? Outcome::picture : Outcome::damaged;
}

}  // namespace vlm::platform::h264
