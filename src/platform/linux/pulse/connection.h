#pragma once

#include <functional>
#include <memory>

#include "platform/linux/pulse/handles.h"

namespace vlm::platform::pulse {

// A connection to the sound server with a thread of its own, on which all its callbacks run. So
// nobody who is slow in a callback makes another stream stutter.
class Connection {
 public:
  // Null when no server answers, or none in time.
  static std::unique_ptr<Connection> open();
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Keeps the connection's thread out while it lives; a callback that runs is waited for. On that
  // thread itself, which is out of everybody's way anyhow, it does nothing.
  class Lock {
   public:
    explicit Lock(const Connection& connection);
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

   private:
    pa_threaded_mainloop* const mainloop_;  // null on the connection's own thread
  };

  // What follows is used under a Lock.

  pa_context* context() const { return context_.get(); }
  bool isReady() const { return pa_context_get_state(context_.get()) == PA_CONTEXT_READY; }
  // Waits until the condition holds, which is looked at after each wake(). False when it does not
  // although the wait was long, or the server is gone. Never on the connection's own thread.
  bool waitUntil(const std::function<bool()>& condition);
  // Waits until an operation, whose callback calls wake(), has been answered.
  bool finish(pa_operation* operation);
  void wake() { pa_threaded_mainloop_signal(mainloop_.get(), 0); }

  // A stream that waits until it is ready; null when the server refuses it. `connect` is given the
  // stream and its flags are the caller's matter.
  Stream makeStream(const char* name, const pa_sample_spec& format, const pa_channel_map* channels,
                    const std::function<int(pa_stream*)>& connect);

 private:
  Connection() = default;
  bool connect();

  Mainloop mainloop_;
  Context context_;
};

// Why the server did not do the last thing it was asked.
const char* lastError(const Connection& connection);

}  // namespace vlm::platform::pulse
