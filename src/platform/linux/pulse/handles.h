#pragma once

#include <pulse/pulseaudio.h>

#include <memory>

namespace vlm::platform::pulse {

// Contexts, streams and operations are let go of under their loop's lock.
struct MainloopEnd {
  void operator()(pa_threaded_mainloop* mainloop) const {
    pa_threaded_mainloop_stop(mainloop);
    pa_threaded_mainloop_free(mainloop);
  }
};
using Mainloop = std::unique_ptr<pa_threaded_mainloop, MainloopEnd>;

// No callback comes after this.
struct ContextEnd {
  void operator()(pa_context* context) const {
    pa_context_set_state_callback(context, nullptr, nullptr);
    pa_context_set_subscribe_callback(context, nullptr, nullptr);
    pa_context_disconnect(context);
    pa_context_unref(context);
  }
};
using Context = std::unique_ptr<pa_context, ContextEnd>;

struct StreamEnd {
  void operator()(pa_stream* stream) const {
    pa_stream_set_state_callback(stream, nullptr, nullptr);
    pa_stream_set_read_callback(stream, nullptr, nullptr);
    pa_stream_set_write_callback(stream, nullptr, nullptr);
    pa_stream_set_moved_callback(stream, nullptr, nullptr);
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
  }
};
using Stream = std::unique_ptr<pa_stream, StreamEnd>;

struct OperationEnd {
  void operator()(pa_operation* operation) const {
    pa_operation_cancel(operation);
    pa_operation_unref(operation);
  }
};
using Operation = std::unique_ptr<pa_operation, OperationEnd>;

}  // namespace vlm::platform::pulse
