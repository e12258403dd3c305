#pragma once

#include <functional>
#include <memory>

#include "platform/linux/pulse/handles.h"

namespace vlm::platform::pulse {

// A connection to the sound server and the thread on which all its callbacks run.
class Connection {
 public:
  // Null when no server answers, or none in time. A server that has just failed to answer in time
  // is not waited for again: a call of the library that asks several things waits once.
  static std::unique_ptr<Connection> open();
  // The connection that everything shares whose callbacks call no host. A callback that calls one
  // would make the other streams stutter when the host is slow. Null as with open().
  static std::shared_ptr<Connection> shared();
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Keeps the connection's thread out while it lives; a callback that runs is waited for. On that
  // thread itself, which nothing has to be kept from, it does nothing.
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

  // Another one after renewIfLost().
  pa_context* context() const { return context_.get(); }
  pa_mainloop_api* api() const { return pa_threaded_mainloop_get_api(mainloop_.get()); }
  bool isReady() const { return pa_context_get_state(context_.get()) == PA_CONTEXT_READY; }
  // Connects anew, without waiting, when the server is gone or took too long to let this in. The
  // streams of before are dead.
  void renewIfLost();
  // Waits until the condition holds, which is looked at after each wake(). False when the server is
  // gone, or does not answer in time and so counts as gone. Never on the connection's own thread.
  bool waitUntil(const std::function<bool()>& condition);
  // Waits until an operation, whose callback calls wake(), has been answered.
  bool finish(pa_operation* operation);
  void wake() { pa_threaded_mainloop_signal(mainloop_.get(), 0); }

  // A stream that the server is asked for; null when it can't be. `connect` is given the stream,
  // and its flags are the caller's matter. A state callback that `connect` sets calls wake().
  Stream beginStream(const char* name, const pa_sample_spec& format, const pa_channel_map* channels,
                     const std::function<int(pa_stream*)>& connect);
  // Waits for the server's answer to beginStream(). False when the stream is refused, or null.
  bool isAccepted(const Stream& stream);

 private:
  Connection() = default;
  bool start();
  bool connect();
  bool waitUntilReady();

  Mainloop mainloop_;
  Context context_;
  pa_usec_t begun_ = 0;  // when the context was made
};

// The stream is accepted, or may yet be.
bool isAlive(const Stream& stream);

// Why the server did not do the last thing it was asked.
const char* lastError(const Connection& connection);

}  // namespace vlm::platform::pulse
