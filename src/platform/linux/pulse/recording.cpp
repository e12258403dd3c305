#include "platform/linux/pulse/recording.h"

#include <algorithm>
#include <span>
#include <utility>

namespace vlm::platform::pulse {
namespace {

pa_sample_spec specOf(const AVAudioFormat& format) {
  return {PA_SAMPLE_FLOAT32NE, static_cast<std::uint32_t>(format.sampleRate()),
          static_cast<std::uint8_t>(format.channelCount())};
}

media::ChannelPlace placeOf(pa_channel_position_t position) {
  using enum media::ChannelPlace;
  switch (position) {
    case PA_CHANNEL_POSITION_MONO:
    case PA_CHANNEL_POSITION_FRONT_CENTER:
      return centre;
    case PA_CHANNEL_POSITION_FRONT_LEFT:
    case PA_CHANNEL_POSITION_FRONT_RIGHT:
    case PA_CHANNEL_POSITION_FRONT_LEFT_OF_CENTER:
    case PA_CHANNEL_POSITION_FRONT_RIGHT_OF_CENTER:
      return front;
    default:
      return position >= PA_CHANNEL_POSITION_AUX0 && position <= PA_CHANNEL_POSITION_AUX31 ? nowhere
                                                                                           : other;
  }
}

media::ChannelPlaces placesOf(const pa_channel_map& channels) {
  media::ChannelPlaces places;
  for (const auto position : std::span(channels.map).first(channels.channels)) {
    places.push_back(placeOf(position));
  }
  return places;
}

}  // namespace

Recording::Recording(Connection& connection, RecordingSource source, Tap tap)
    : connection_(connection),
      source_(std::move(source)),
      places_(placesOf(source_.channels)),
      tap_(std::move(tap)),
      filling_(AVAudioPCMBuffer::initWithPCMFormat(tap_.format, tap_.frames)) {}

std::shared_ptr<Recording> Recording::start(Connection& connection, const RecordingSource& source,
                                            const Tap& tap) {
  auto recording = std::make_shared<Recording>(connection, source, tap);
  if (recording->start()) return recording;
  recording->end();
  return nullptr;
}

bool Recording::start() {
  const Connection::Lock lock(connection_);
  begin();
  if (!connection_.isAccepted(stream_)) return false;
  if (!connection_.waitUntil([this] { return isMicrophone_ || !stream_; }) || !stream_) {
    return false;
  }
  timer_.emplace(connection_, kLookAfterStream, [this] { keepUp(); });
  return true;
}

void Recording::begin() {
  const auto format = specOf(*tap_.format);
  // Half a tap's worth at a time keeps the pieces evenly spaced.
  pa_buffer_attr sizes{};
  sizes.maxlength = static_cast<std::uint32_t>(-1);
  sizes.fragsize = static_cast<std::uint32_t>(pa_frame_size(&format) * ((tap_.frames + 1) / 2));
  const char* name = source_.name.empty() ? nullptr : source_.name.c_str();
  const auto flags = static_cast<pa_stream_flags_t>(
      PA_STREAM_ADJUST_LATENCY | (name ? PA_STREAM_DONT_MOVE : PA_STREAM_NOFLAGS));
  isMicrophone_ = false;
  stream_ =
      connection_.beginStream("microphone", format, &source_.channels, [&](pa_stream* stream) {
        pa_stream_set_state_callback(stream, onState, this);
        pa_stream_set_moved_callback(stream, onMoved, this);
        pa_stream_set_read_callback(stream, onReadable, this);
        return pa_stream_connect_record(stream, name, &sizes, flags);
      });
}

void Recording::end() {
  isEnding_ = true;
  const Connection::Lock lock(connection_);
  timer_.reset();
  question_ = nullptr;
  stream_ = nullptr;
}

void Recording::keepUp() {
  connection_.renewIfLost();
  if (isAlive(stream_) || !connection_.isReady()) return;
  stream_ = nullptr;
  const char* name = source_.name.empty() ? "@DEFAULT_SOURCE@" : source_.name.c_str();
  question_.reset(pa_context_get_source_info_by_name(connection_.context(), name, onSource, this));
}

void Recording::onState(pa_stream* stream, void* self) {
  auto& recording = *static_cast<Recording*>(self);
  if (pa_stream_get_state(stream) == PA_STREAM_READY) recording.askForSourceOfStream();
  recording.connection_.wake();
}

void Recording::onMoved(pa_stream*, void* self) {
  static_cast<Recording*>(self)->askForSourceOfStream();
}

void Recording::askForSourceOfStream() {
  isMicrophone_ = false;
  question_.reset(pa_context_get_source_info_by_index(
      connection_.context(), pa_stream_get_device_index(stream_.get()), onSource, this));
}

void Recording::onSource(pa_context*, const pa_source_info* info, int last, void* self) {
  auto& recording = *static_cast<Recording*>(self);
  if (last == 0) recording.lookAtSource(*info);
  // Without an answer the source is gone again.
  if (last < 0) recording.stream_ = nullptr;
  recording.connection_.wake();
}

// The source of the stream, or the one that a stream could begin with.
void Recording::lookAtSource(const pa_source_info& source) {
  if (source.monitor_of_sink != PA_INVALID_INDEX) {
    stream_ = nullptr;
  } else if (stream_) {
    isMicrophone_ = true;
  } else {
    begin();
  }
}

void Recording::onReadable(pa_stream*, std::size_t, void* self) {
  // Held for as long as this takes.
  const auto recording = static_cast<Recording*>(self)->shared_from_this();
  recording->read();
}

void Recording::read() {
  while (stream_ && !isEnding_ && pa_stream_readable_size(stream_.get()) > 0) {
    const void* data = nullptr;
    std::size_t bytes = 0;
    if (pa_stream_peek(stream_.get(), &data, &bytes) < 0 || bytes == 0) return;
    if (isMicrophone_) {
      append(static_cast<const float*>(data), bytes / sizeof(float) / tap_.format->channelCount());
    }
    if (stream_) pa_stream_drop(stream_.get());
  }
}

// Null samples mean a hole in the recording: silence.
void Recording::append(const float* samples, std::size_t frames) {
  const std::size_t channels = tap_.format->channelCount();
  while (frames > 0 && !isEnding_) {
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
  auto full =
      std::exchange(filling_, AVAudioPCMBuffer::initWithPCMFormat(tap_.format, tap_.frames));
  tap_.block(std::make_shared<media::PlacedBuffer>(std::move(full), places_));
}

}  // namespace vlm::platform::pulse
