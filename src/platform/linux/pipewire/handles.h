#pragma once

#include <pipewire/pipewire.h>

#include <memory>

// One owner for each kind of thing that PipeWire hands out.
namespace vlm::platform::pipewire {

struct LoopEnd {
  void operator()(pw_loop* loop) const { pw_loop_destroy(loop); }
};
using Loop = std::unique_ptr<pw_loop, LoopEnd>;

struct ContextEnd {
  void operator()(pw_context* context) const { pw_context_destroy(context); }
};
using Context = std::unique_ptr<pw_context, ContextEnd>;

struct CoreEnd {
  void operator()(pw_core* core) const { pw_core_disconnect(core); }
};
using Core = std::unique_ptr<pw_core, CoreEnd>;

struct StreamEnd {
  void operator()(pw_stream* stream) const { pw_stream_destroy(stream); }
};
using Stream = std::unique_ptr<pw_stream, StreamEnd>;

}  // namespace vlm::platform::pipewire
