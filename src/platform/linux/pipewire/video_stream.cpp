#include "platform/linux/pipewire/video_stream.h"

#include <poll.h>
#include <spa/buffer/meta.h>

#include <algorithm>
#include <new>
#include <utility>

#include "platform/portable/thread.h"

// PipeWire's calls are macros in GNU C.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wsign-compare"

namespace vlm::platform::pipewire {
namespace {

// A compositor that takes longer than this to agree on a format has stopped.
constexpr std::chrono::seconds kPatience{5};

VideoStream& streamOf(void* self) {
  return *static_cast<VideoStream*>(self);
}

// Whatever numbers a compositor gives, sums of these stay numbers.
Rectangle rectangleOf(const spa_region& region) {
  constexpr int kFar = 1 << 16;
  const auto near = [](std::int64_t value) {
    return static_cast<int>(std::clamp<std::int64_t>(value, -kFar, kFar));
  };
  return {near(region.position.x), near(region.position.y), near(region.size.width),
          near(region.size.height)};
}

// Never undone: other parts of the host may use the library too.
void initialise() {
  static const bool done = (pw_init(nullptr, nullptr), true);
  (void)done;
}

}  // namespace

std::unique_ptr<VideoStream> VideoStream::connect(int descriptor, std::uint32_t node,
                                                  std::string& reason) {
  const HostSignalsBlocked blocked;  // on the thread that a context has
  initialise();
  std::unique_ptr<VideoStream> stream(new VideoStream());
  stream->loop_.reset(pw_loop_new(nullptr));
  if (!stream->loop_) throw std::bad_alloc();
  pw_loop_enter(stream->loop_.get());
  if (!stream->open(descriptor, node)) {
    reason = "PipeWire can't be reached";
  } else if (!stream->waitForFormat(kPatience)) {
    reason = stream->ended_.value_or("the desktop does not say what its pictures are like");
  }
  pw_loop_leave(stream->loop_.get());
  return stream->size_.isEmpty() ? nullptr : std::move(stream);
}

void VideoStream::begin() {
  pw_loop_enter(loop_.get());
  owner_ = std::this_thread::get_id();
  onProcess(this);
}

VideoStream::~VideoStream() {
  if (owner_ == std::thread::id()) pw_loop_enter(loop_.get());
  stream_ = nullptr;
  core_ = nullptr;
  context_ = nullptr;
  if (farewell_ != nullptr) pw_loop_destroy_source(loop_.get(), farewell_);
  pw_loop_leave(loop_.get());
}

bool VideoStream::open(int descriptor, std::uint32_t node) {
  static const auto kCoreEvents = [] {
    pw_core_events events{};
    events.version = PW_VERSION_CORE_EVENTS;
    events.error = &onError;
    return events;
  }();
  static const auto kStreamEvents = [] {
    pw_stream_events events{};
    events.version = PW_VERSION_STREAM_EVENTS;
    events.state_changed = &onState;
    events.param_changed = &onFormat;
    events.remove_buffer = &onBufferRemoved;
    events.process = &onProcess;
    return events;
  }();
  farewell_ = pw_loop_add_event(
      loop_.get(), [](void* self, std::uint64_t) { streamOf(self).end("it was hung up"); }, this);
  context_.reset(pw_context_new(loop_.get(), nullptr, 0));
  if (farewell_ == nullptr || !context_) return false;
  core_.reset(pw_context_connect_fd(context_.get(), descriptor, nullptr, 0));
  if (!core_) return false;
  pw_core_add_listener(core_.get(), &coreListener_, &kCoreEvents, this);
  // Without a wish to stay alone, a stream whose node has gone would be given the next one, which
  // may be what a person shares with another program.
  stream_.reset(pw_stream_new(
      core_.get(), "VelmoraMacNative",
      pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY, "Capture",
                        PW_KEY_MEDIA_ROLE, "Screen", PW_KEY_NODE_DONT_RECONNECT, "true", nullptr)));
  if (!stream_) return false;
  pw_stream_add_listener(stream_.get(), &streamListener_, &kStreamEvents, this);
  Offer offer;
  const spa_pod* format = offer.format();
  constexpr auto kFlags =
      static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS);
  return pw_stream_connect(stream_.get(), PW_DIRECTION_INPUT, node, kFlags, &format, 1) >= 0;
}

bool VideoStream::waitForFormat(std::chrono::milliseconds limit) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + limit;
  while (size_.isEmpty() && !ended_) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    if (left.count() <= 0) return false;
    pollfd server{descriptor(), POLLIN, 0};
    if (poll(&server, 1, static_cast<int>(left.count())) > 0) dispatch();
  }
  return !ended_;
}

int VideoStream::descriptor() const {
  return pw_loop_get_fd(loop_.get());
}

void VideoStream::hangUp() noexcept {
  pw_loop_signal_event(loop_.get(), farewell_);
}

void VideoStream::dispatch() {
  pw_loop_iterate(loop_.get(), 0);
}

void VideoStream::end(const char* reason) {
  if (!ended_) ended_ = reason;
}

std::vector<Rectangle> VideoStream::takeDamage() {
  return std::exchange(damage_, {});
}

void VideoStream::onError(void* self, std::uint32_t id, int, int, const char*) {
  if (id == PW_ID_CORE) streamOf(self).end("the connection to PipeWire was lost");
}

void VideoStream::onState(void* self, pw_stream_state before, pw_stream_state now, const char*) {
  const bool isGone = now == PW_STREAM_STATE_UNCONNECTED && before != now;
  if (isGone || now == PW_STREAM_STATE_ERROR) streamOf(self).end("the desktop ended the capture");
}

void VideoStream::onFormat(void* self, std::uint32_t id, const spa_pod* format) {
  if (id != SPA_PARAM_Format || format == nullptr) return;
  auto& stream = streamOf(self);
  const auto size = agreedSize(format);
  if (!size || size->isEmpty()) {
    stream.end("the desktop's pictures are not of the 32-bit kind");
    return;
  }
  stream.pixels_ = {};  // of another size
  stream.size_ = *size;
  Offer offer;
  auto buffers = offer.buffers();
  pw_stream_update_params(stream.stream_.get(), buffers.data(), buffers.size());
}

void VideoStream::onBufferRemoved(void* self, pw_buffer* buffer) {
  auto& stream = streamOf(self);
  if (stream.held_ != buffer) return;
  stream.held_ = nullptr;
  stream.pixels_ = {};
}

void VideoStream::onProcess(void* self) {
  auto& stream = streamOf(self);
  // While no thread has entered the loop, PipeWire's own calls this. What it has then waits.
  if (std::this_thread::get_id() != stream.owner_) return;
  while (pw_buffer* buffer = pw_stream_dequeue_buffer(stream.stream_.get())) stream.keep(buffer);
}

void VideoStream::keep(pw_buffer* buffer) {
  const auto pixels = pixelsOf(*buffer->buffer);
  if (pixels.pixels == nullptr) {
    pw_stream_queue_buffer(stream_.get(), buffer);
    return;
  }
  // After a change of size, or at first, there is nothing that the damage could be relative to.
  if (pixels_.pixels == nullptr) {
    damage_ = {x11::wholeOf(size_)};
  } else {
    addDamage(*buffer->buffer);
  }
  if (held_ != nullptr) pw_stream_queue_buffer(stream_.get(), held_);
  held_ = buffer;
  pixels_ = pixels;
}

// Buffers without a picture come too, with the pointer's place alone. What the compositor writes
// into shared memory is taken once and held against the size of that memory.
PlaneView VideoStream::pixelsOf(const spa_buffer& buffer) const {
  if (buffer.n_datas == 0 || buffer.datas[0].data == nullptr) return {};
  const auto& data = buffer.datas[0];
  const spa_chunk chunk = *data.chunk;
  if (chunk.size == 0 || (chunk.flags & SPA_CHUNK_FLAG_CORRUPTED) != 0 || chunk.stride <= 0) {
    return {};
  }
  const std::uint64_t row = static_cast<std::uint64_t>(size_.width) * kBytesPerPixel;
  const auto stride = static_cast<std::uint64_t>(chunk.stride);
  const std::uint64_t end =
      chunk.offset + stride * static_cast<std::uint64_t>(size_.height - 1) + row;
  if (stride < row || end > data.maxsize) return {};
  return {static_cast<const std::uint8_t*>(data.data) + chunk.offset,
          static_cast<std::size_t>(stride)};
}

// A compositor that does not say where a picture changed may have changed all of it.
void VideoStream::addDamage(const spa_buffer& buffer) {
  const auto before = damage_.size();
  const auto* regions = static_cast<const spa_meta_region*>(
      spa_buffer_find_meta_data(&buffer, SPA_META_VideoDamage, sizeof(spa_meta_region)));
  const auto* meta = spa_buffer_find_meta(&buffer, SPA_META_VideoDamage);
  const std::size_t count = regions == nullptr ? 0 : meta->size / sizeof(spa_meta_region);
  for (std::size_t i = 0; i < count && spa_meta_region_is_valid(&regions[i]); ++i) {
    const auto& region = regions[i].region;
    damage_.push_back(intersection(rectangleOf(region), x11::wholeOf(size_)));
  }
  if (damage_.size() == before || damage_.size() > kMostDamage * 4) {
    damage_ = {x11::wholeOf(size_)};
  }
}

}  // namespace vlm::platform::pipewire

#pragma GCC diagnostic pop
