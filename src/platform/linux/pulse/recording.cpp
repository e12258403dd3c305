#include "platform/linux/pulse/recording.h"

#include <algorithm>
#include <utility>

namespace vlm::platform::pulse {
namespace {

pa_sample_spec specOf(const AVAudioFormat& format) {
  return {PA_SAMPLE_FLOAT32NE, static_cast<std::uint32_t>(format.sampleRate()),
          static_cast<std::uint8_t>(format.channelCount())};
}

}  // namespace

Recording::Recording(Connection& connection, Tap tap)
    : connection_(connection),
      tap_(std::move(tap)),
      filling_(AVAudioPCMBuffer::initWithPCMFormat(tap_.format, tap_.frames)) {}

std::shared_ptr<Recording> Recording::start(Connection& connection, const RecordingSource& source,
                                            const Tap& tap) {
  auto recording = std::make_shared<Recording>(connection, tap);
  return recording->connect(source) ? recording : nullptr;
}

bool Recording::connect(const RecordingSource& source) {
  const Connection::Lock lock(connection_);
  const auto format = specOf(*tap_.format);
  // Half a tap's worth at a time keeps the pieces evenly spaced.
  pa_buffer_attr sizes{};
  sizes.maxlength = static_cast<std::uint32_t>(-1);
  sizes.fragsize = static_cast<std::uint32_t>(pa_frame_size(&format) * ((tap_.frames + 1) / 2));
  const char* name = source.name.empty() ? nullptr : source.name.c_str();
  const auto flags = static_cast<pa_stream_flags_t>(
      PA_STREAM_ADJUST_LATENCY | (name ? PA_STREAM_DONT_MOVE : PA_STREAM_NOFLAGS));
  stream_ = connection_.makeStream("microphone", format, &source.channels, [&](pa_stream* stream) {
    pa_stream_set_read_callback(stream, onReadable, this);
    return pa_stream_connect_record(stream, name, &sizes, flags);
  });
  return stream_ != nullptr;
}

void Recording::end() {
  const Connection::Lock lock(connection_);
  stream_ = nullptr;
}

void Recording::onReadable(pa_stream*, std::size_t, void* self) {
  // Held for as long as this takes.
  const auto recording = static_cast<Recording*>(self)->shared_from_this();
  recording->read();
}

void Recording::read() {
  while (stream_ && pa_stream_readable_size(stream_.get()) > 0) {
    const void* data = nullptr;
    std::size_t bytes = 0;
    if (pa_stream_peek(stream_.get(), &data, &bytes) < 0 || bytes == 0) return;
    append(static_cast<const float*>(data), bytes / sizeof(float) / tap_.format->channelCount());
    if (stream_) pa_stream_drop(stream_.get());
  }
}

// Null samples stand for a hole in the recording: silence.
void Recording::append(const float* samples, std::size_t frames) {
  const std::size_t channels = tap_.format->channelCount();
  while (frames > 0 && stream_) {
    const std::uint32_t begin = filling_->frameLength();
    const auto count =
        static_cast<std::uint32_t>(std::min<std::size_t>(frames, tap_.frames - begin));
    float* to = filling_->floatChannelData(0) + begin * channels;
    if (samples != nullptr) {
      std::copy_n(samples, count * channels, to);
      samples += count * channels;
    } else {
      std::fill_n(to, count * channels, 0.0F);
    }
    filling_->setFrameLength(begin + count);
    frames -= count;
    if (filling_->frameLength() == tap_.frames) handOver();
  }
}

void Recording::handOver() {
  tap_.block(
      std::exchange(filling_, AVAudioPCMBuffer::initWithPCMFormat(tap_.format, tap_.frames)));
}

}  // namespace vlm::platform::pulse
