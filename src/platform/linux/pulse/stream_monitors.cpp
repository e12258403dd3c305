#include "platform/linux/pulse/stream_monitors.h"

#include <unistd.h>

#include <string>
#include <string_view>
#include <utility>

namespace vlm::platform::pulse {
namespace {

constexpr pa_sample_spec kFormat{PA_SAMPLE_FLOAT32NE, 48000, MixInput::kChannels};
constexpr std::uint32_t kPieceBytes = 480 * MixInput::kChannels * sizeof(float);

std::string_view property(const pa_proplist* properties, const char* key) {
  const char* value = pa_proplist_gets(properties, key);
  return value != nullptr ? value : "";
}

// Forgets an operation whose answer comes to a callback.
void leave(pa_operation* operation) {
  if (operation != nullptr) pa_operation_unref(operation);
}

}  // namespace

std::unique_ptr<StreamMonitors> StreamMonitors::open(bool excludesOwnProcess) {
  auto connection = Connection::open();
  if (!connection) return nullptr;
  auto monitors = std::make_unique<StreamMonitors>(std::move(connection), excludesOwnProcess);
  return monitors->subscribe() ? std::move(monitors) : nullptr;
}

StreamMonitors::StreamMonitors(std::unique_ptr<Connection> connection, bool excludesOwnProcess)
    : connection_(std::move(connection)), excludesOwnProcess_(excludesOwnProcess) {}

StreamMonitors::~StreamMonitors() {
  const Connection::Lock lock(*connection_);
  pa_context_set_subscribe_callback(connection_->context(), nullptr, nullptr);
  monitors_.clear();
}

bool StreamMonitors::subscribe() {
  const Connection::Lock lock(*connection_);
  pa_context_set_subscribe_callback(connection_->context(), onEvent, this);
  const auto wake = [](pa_context*, int, void* connection) {
    static_cast<Connection*>(connection)->wake();
  };
  if (!connection_->finish(pa_context_subscribe(
          connection_->context(), PA_SUBSCRIPTION_MASK_SINK_INPUT, wake, connection_.get()))) {
    return false;
  }
  leave(pa_context_get_sink_input_info_list(connection_->context(), onStreamInfo, this));
  return true;
}

bool StreamMonitors::isLost() const {
  const Connection::Lock lock(*connection_);
  return !connection_->isReady();
}

void StreamMonitors::mixInto(std::span<float> block) {
  const Connection::Lock lock(*connection_);
  for (auto entry = monitors_.begin(); entry != monitors_.end();) {
    auto& [index, monitor] = *entry;
    monitor.input.addTo(block);
    const auto state = pa_stream_get_state(monitor.stream.get());
    if (state == PA_STREAM_READY) monitor.hasRun = true;
    if (PA_STREAM_IS_GOOD(state)) {
      ++entry;
      continue;
    }
    // The server ends what listens to a stream that moves to another device. What was never
    // allowed to listen is not tried again.
    if (monitor.hasRun) ask(index);
    entry = monitors_.erase(entry);
  }
}

void StreamMonitors::onEvent(pa_context*, pa_subscription_event_type_t type, std::uint32_t index,
                             void* self) {
  auto& monitors = *static_cast<StreamMonitors*>(self);
  if ((type & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_REMOVE) {
    monitors.monitors_.erase(index);
  } else if (!monitors.monitors_.contains(index)) {
    monitors.ask(index);
  }
}

void StreamMonitors::ask(std::uint32_t index) {
  leave(pa_context_get_sink_input_info(connection_->context(), index, onStreamInfo, this));
}

void StreamMonitors::onStreamInfo(pa_context*, const pa_sink_input_info* info, int last,
                                  void* self) {
  if (last == 0) static_cast<StreamMonitors*>(self)->consider(*info);
}

bool StreamMonitors::isOwn(const pa_sink_input_info& info) const {
  // Programs in different containers may have the same number, but not often the same name.
  char binary[256] = "";
  pa_get_binary_name(binary, sizeof binary);
  return property(info.proplist, PA_PROP_APPLICATION_PROCESS_ID) == std::to_string(getpid()) &&
         property(info.proplist, PA_PROP_APPLICATION_PROCESS_BINARY) == binary;
}

void StreamMonitors::consider(const pa_sink_input_info& info) {
  // A stream that belongs to no client is a part of the server that passes on other streams, which
  // are listened to themselves.
  if (info.client == PA_INVALID_INDEX || monitors_.contains(info.index)) return;
  if (excludesOwnProcess_ && isOwn(info)) return;
  Stream stream(pa_stream_new(connection_->context(), "system audio", &kFormat, nullptr));
  if (!stream) return;
  auto& monitor = monitors_[info.index];
  pa_stream_set_read_callback(stream.get(), onReadable, &monitor);
  pa_buffer_attr sizes{};
  sizes.maxlength = static_cast<std::uint32_t>(-1);
  sizes.fragsize = kPieceBytes;
  constexpr auto kFlags =
      static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE);
  pa_stream_set_monitor_stream(stream.get(), info.index);
  pa_stream_connect_record(stream.get(), nullptr, &sizes, kFlags);
  monitor.stream = std::move(stream);
}

void StreamMonitors::onReadable(pa_stream* stream, std::size_t, void* monitor) {
  auto& input = static_cast<Monitor*>(monitor)->input;
  while (pa_stream_readable_size(stream) > 0) {
    const void* data = nullptr;
    std::size_t bytes = 0;
    if (pa_stream_peek(stream, &data, &bytes) < 0 || bytes == 0) return;
    const std::size_t samples = bytes / sizeof(float);
    if (data != nullptr) {
      input.push({static_cast<const float*>(data), samples});
    } else {
      input.pushSilence(samples);
    }
    pa_stream_drop(stream);
  }
}

}  // namespace vlm::platform::pulse
