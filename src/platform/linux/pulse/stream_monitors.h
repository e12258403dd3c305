#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>

#include "platform/linux/pulse/connection.h"
#include "platform/portable/mix_input.h"

namespace vlm::platform::pulse {

// Listens to every stream that programs play, each by itself, since a device's monitor gives the
// mixture of all and our own can't be taken out of it any more.
class StreamMonitors {
 public:
  // Null when there is no server.
  static std::unique_ptr<StreamMonitors> open(bool excludesOwnProcess);
  StreamMonitors(std::unique_ptr<Connection> connection, bool excludesOwnProcess);
  ~StreamMonitors();
  StreamMonitors(const StreamMonitors&) = delete;
  StreamMonitors& operator=(const StreamMonitors&) = delete;

  // The server has gone.
  bool isLost() const;
  // Adds the next block of every stream.
  void mixInto(std::span<float> block);

 private:
  // One stream that another program plays.
  struct Monitor {
    MixInput input;
    Stream stream;
    bool hasRun = false;
  };

  static void onEvent(pa_context* context, pa_subscription_event_type_t type, std::uint32_t index,
                      void* self);
  static void onStreamInfo(pa_context* context, const pa_sink_input_info* info, int last,
                           void* self);
  static void onReadable(pa_stream* stream, std::size_t bytes, void* monitor);
  bool subscribe();
  void consider(const pa_sink_input_info& info);
  void ask(std::uint32_t index);
  bool isOwn(const pa_sink_input_info& info) const;

  const std::unique_ptr<Connection> connection_;
  const bool excludesOwnProcess_;
  // By the server's number of the stream that is listened to. Under the connection's lock, without
  // an annotation: the connection's thread holds it in every callback, where the analysis can't see
  // it.
  std::map<std::uint32_t, Monitor> monitors_;
};

}  // namespace vlm::platform::pulse
