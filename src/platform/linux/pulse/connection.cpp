#include "platform/linux/pulse/connection.h"

#include <utility>

#include "platform/portable/thread.h"
#include "platform/portable/thread_names.h"

namespace vlm::platform::pulse {
namespace {

// A server that takes longer is as good as gone: no call of the library hangs on it.
constexpr pa_usec_t kLongestWait = 2 * PA_USEC_PER_SEC;

// Wakes the waiting thread when the time is up.
class Alarm {
 public:
  Alarm(pa_threaded_mainloop* mainloop, pa_context* context)
      : mainloop_(mainloop),
        event_(pa_context_rttime_new(context, pa_rtclock_now() + kLongestWait, ring, this)) {}
  ~Alarm() {
    if (event_ != nullptr) pa_threaded_mainloop_get_api(mainloop_)->time_free(event_);
  }
  Alarm(const Alarm&) = delete;
  Alarm& operator=(const Alarm&) = delete;

  bool hasRung() const { return hasRung_ || event_ == nullptr; }

 private:
  static void ring(pa_mainloop_api*, pa_time_event*, const timeval*, void* self) {
    auto& alarm = *static_cast<Alarm*>(self);
    alarm.hasRung_ = true;
    pa_threaded_mainloop_signal(alarm.mainloop_, 0);
  }

  pa_threaded_mainloop* const mainloop_;
  bool hasRung_ = false;
  pa_time_event* const event_;
};

void wakeOnContextState(pa_context*, void* connection) {
  static_cast<Connection*>(connection)->wake();
}

void wakeOnStreamState(pa_stream*, void* connection) {
  static_cast<Connection*>(connection)->wake();
}

}  // namespace

Connection::Lock::Lock(const Connection& connection)
    : mainloop_(pa_threaded_mainloop_in_thread(connection.mainloop_.get()) != 0
                    ? nullptr
                    : connection.mainloop_.get()) {
  if (mainloop_ != nullptr) pa_threaded_mainloop_lock(mainloop_);
}

Connection::Lock::~Lock() {
  if (mainloop_ != nullptr) pa_threaded_mainloop_unlock(mainloop_);
}

std::unique_ptr<Connection> Connection::open() {
  std::unique_ptr<Connection> connection(new Connection());
  return connection->connect() ? std::move(connection) : nullptr;
}

bool Connection::connect() {
  mainloop_.reset(pa_threaded_mainloop_new());
  if (!mainloop_) return false;
  pa_threaded_mainloop_set_name(mainloop_.get(), thread_names::kSound);
  // Its thread blocks the signals of the host by itself.
  if (pa_threaded_mainloop_start(mainloop_.get()) != 0) return false;
  const Lock lock(*this);
  context_.reset(pa_context_new(pa_threaded_mainloop_get_api(mainloop_.get()), nullptr));
  if (!context_) return false;
  pa_context_set_state_callback(context_.get(), wakeOnContextState, this);
  // A library starts no daemons behind the back of whoever uses it.
  if (pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
    return false;
  }
  return waitUntil([this] { return isReady(); });
}

Connection::~Connection() {
  if (!mainloop_) return;
  {
    const Lock lock(*this);
    context_.reset();
  }
  // The last reference can go in a callback. The thread can't wait for its own end.
  if (pa_threaded_mainloop_in_thread(mainloop_.get()) != 0) {
    const std::shared_ptr<pa_threaded_mainloop> mainloop = std::move(mainloop_);
    Thread::startAlone(thread_names::kSound, [mainloop] {});
  }
}

bool Connection::waitUntil(const std::function<bool()>& condition) {
  const Alarm alarm(mainloop_.get(), context_.get());
  while (!condition()) {
    if (alarm.hasRung() || !PA_CONTEXT_IS_GOOD(pa_context_get_state(context_.get()))) return false;
    pa_threaded_mainloop_wait(mainloop_.get());
  }
  return true;
}

bool Connection::finish(pa_operation* operation) {
  if (operation == nullptr) return false;
  const Operation held(operation);
  return waitUntil([&] { return pa_operation_get_state(operation) != PA_OPERATION_RUNNING; }) &&
         pa_operation_get_state(operation) == PA_OPERATION_DONE;
}

Stream Connection::makeStream(const char* name, const pa_sample_spec& format,
                              const pa_channel_map* channels,
                              const std::function<int(pa_stream*)>& connect) {
  Stream stream(pa_stream_new(context(), name, &format, channels));
  if (!stream) return nullptr;
  pa_stream_set_state_callback(stream.get(), wakeOnStreamState, this);
  if (connect(stream.get()) < 0) return nullptr;
  waitUntil([&] {
    const auto state = pa_stream_get_state(stream.get());
    return state == PA_STREAM_READY || !PA_STREAM_IS_GOOD(state);
  });
  return pa_stream_get_state(stream.get()) == PA_STREAM_READY ? std::move(stream) : nullptr;
}

const char* lastError(const Connection& connection) {
  return pa_strerror(pa_context_errno(connection.context()));
}

}  // namespace vlm::platform::pulse
