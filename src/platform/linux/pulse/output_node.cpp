#include <algorithm>

#include "platform/linux/pulse/engine_nodes.h"

namespace vlm::platform::pulse {
namespace {

// What the server keeps ahead, in the stream and in the device together: short, so that what is
// written is heard soon, and as much as an ordinary machine can be counted on to refill in time.
constexpr pa_usec_t kAhead = 40 * PA_USEC_PER_MSEC;
// The least that the server asks for at a time. It sets twice this aside and gives the device half
// of the rest, and each time the device takes that half it asks this process for as much: a small
// figure makes for few wakings of both and for a sound that is heard sooner.
constexpr pa_usec_t kLeastRequest = 2 * PA_USEC_PER_MSEC;
// Frames rendered at a time at most.
constexpr std::uint32_t kLongestPiece = 1024;

}  // namespace

bool OutputNode::start(Connection& connection) {
  const auto& wanted = *source_->format;
  planes_.assign(wanted.channelCount(), std::vector<float>(kLongestPiece));
  list_.clear();
  for (auto& plane : planes_) list_.push_back({1, kLongestPiece * 4, plane.data()});

  const Connection::Lock lock(connection);
  const auto& device = choice_.device();
  const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, static_cast<std::uint32_t>(wanted.sampleRate()),
                              static_cast<std::uint8_t>(wanted.channelCount())};
  pa_buffer_attr sizes{};
  sizes.maxlength = sizes.prebuf = static_cast<std::uint32_t>(-1);
  sizes.tlength = static_cast<std::uint32_t>(pa_usec_to_bytes(kAhead, &format));
  sizes.minreq = static_cast<std::uint32_t>(pa_usec_to_bytes(kLeastRequest, &format));
  const auto flags = static_cast<pa_stream_flags_t>(
      PA_STREAM_ADJUST_LATENCY | (device ? PA_STREAM_DONT_MOVE : PA_STREAM_NOFLAGS));
  connection_ = &connection;
  stream_ = connection.makeStream("playback", format, nullptr, [&](pa_stream* stream) {
    pa_stream_set_write_callback(stream, onWritable, this);
    return pa_stream_connect_playback(stream, device ? device->name.c_str() : nullptr, &sizes,
                                      flags, nullptr, nullptr);
  });
  return stream_ != nullptr;
}

void OutputNode::stop() {
  if (connection_ == nullptr) return;
  const Connection::Lock lock(*connection_);
  stream_ = nullptr;
  connection_ = nullptr;
}

void OutputNode::onWritable(pa_stream* stream, std::size_t bytes, void* self) {
  while (bytes > 0 && static_cast<OutputNode*>(self)->render(stream, bytes)) {
  }
}

// One piece of the bytes that are wanted; false when the server can't take it.
bool OutputNode::render(pa_stream* stream, std::size_t& bytes) {
  void* memory = nullptr;
  std::size_t room = bytes;
  if (pa_stream_begin_write(stream, &memory, &room) < 0) return false;
  const std::size_t channels = planes_.size();
  const std::size_t frameBytes = channels * sizeof(float);
  const auto frames = static_cast<std::uint32_t>(
      std::min<std::size_t>({room / frameBytes, bytes / frameBytes, kLongestPiece}));
  if (frames == 0) {
    pa_stream_cancel_write(stream);
    return false;
  }
  bool isSilence = false;
  source_->block(isSilence, frames, list_);
  auto* to = static_cast<float*>(memory);
  for (std::size_t frame = 0; frame < frames; ++frame) {
    for (std::size_t channel = 0; channel < channels; ++channel) *to++ = planes_[channel][frame];
  }
  bytes -= frames * frameBytes;
  return pa_stream_write(stream, memory, frames * frameBytes, nullptr, 0, PA_SEEK_RELATIVE) == 0;
}

}  // namespace vlm::platform::pulse
