#include "platform/linux/pulse/connection.h"

#include <atomic>
#include <utility>

#include "platform/mutex.h"
#include "platform/portable/thread.h"
#include "platform/portable/thread_names.h"

namespace vlm::platform::pulse {
namespace {

// A server that takes longer is as good as gone: no call of the library hangs on it.
constexpr pa_usec_t kLongestWait = 2 * PA_USEC_PER_SEC;
// After such a wait. Long enough for what else the same call of the library asks, and over before a
// host that tries again could miss a server that has come back.
constexpr pa_usec_t kNoSecondWait = 100 * PA_USEC_PER_MSEC;

// When a server was last found not to answer in time; 0 for never.
std::atomic<pa_usec_t> lastSilence = 0;

bool hasJustBeenSilent() {
  const pa_usec_t last = lastSilence;
  return last != 0 && pa_rtclock_now() - last < kNoSecondWait;
}

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
  if (hasJustBeenSilent()) return nullptr;
  std::unique_ptr<Connection> connection(new Connection());
  return connection->start() ? std::move(connection) : nullptr;
}

std::shared_ptr<Connection> Connection::shared() {
  struct Shared {
    Mutex mutex;
    std::weak_ptr<Connection> connection VLM_GUARDED_BY(mutex);
  };
  static auto* const only = new Shared();
  const MutexLock lock(only->mutex);
  std::shared_ptr<Connection> connection = only->connection.lock();
  if (connection) return connection->waitUntilReady() ? connection : nullptr;
  connection = open();
  only->connection = connection;
  return connection;
}

bool Connection::start() {
  mainloop_.reset(pa_threaded_mainloop_new());
  if (!mainloop_) return false;
  pa_threaded_mainloop_set_name(mainloop_.get(), thread_names::kSound);
  // Its thread blocks the signals of the host by itself.
  if (pa_threaded_mainloop_start(mainloop_.get()) != 0) return false;
  const Lock lock(*this);
  return connect() && waitUntil([this] { return isReady(); });
}

// Begins to connect; false when not even that can be done.
bool Connection::connect() {
  begun_ = pa_rtclock_now();
  Context context(pa_context_new(api(), nullptr));
  if (!context) return false;
  context_ = std::move(context);
  pa_context_set_state_callback(context_.get(), wakeOnContextState, this);
  // A library starts no daemons behind the back of its host.
  return pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) >= 0;
}

bool Connection::waitUntilReady() {
  const Lock lock(*this);
  if (isReady()) return true;
  if (hasJustBeenSilent()) return false;
  renewIfLost();
  return waitUntil([this] { return isReady(); });
}

void Connection::renewIfLost() {
  const bool isLate = !isReady() && pa_rtclock_now() - begun_ > kLongestWait;
  if (!isLate && PA_CONTEXT_IS_GOOD(pa_context_get_state(context_.get()))) return;
  connect();
}

Connection::~Connection() {
  if (!mainloop_) return;
  {
    const Lock lock(*this);
    context_ = nullptr;
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
    if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context_.get()))) return false;
    if (alarm.hasRung()) {
      lastSilence = pa_rtclock_now();
      pa_context_disconnect(context_.get());
      return false;
    }
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

Stream Connection::beginStream(const char* name, const pa_sample_spec& format,
                               const pa_channel_map* channels,
                               const std::function<int(pa_stream*)>& connect) {
  Stream stream(pa_stream_new(context(), name, &format, channels));
  if (!stream) return nullptr;
  pa_stream_set_state_callback(stream.get(), wakeOnStreamState, this);
  return connect(stream.get()) >= 0 ? std::move(stream) : nullptr;
}

bool Connection::isAccepted(const Stream& stream) {
  const auto isIn = [&](pa_stream_state_t state) {
    return stream && pa_stream_get_state(stream.get()) == state;
  };
  return waitUntil([&] { return !isIn(PA_STREAM_CREATING); }) && isIn(PA_STREAM_READY);
}

bool isAlive(const Stream& stream) {
  return stream && PA_STREAM_IS_GOOD(pa_stream_get_state(stream.get()));
}

const char* lastError(const Connection& connection) {
  return pa_strerror(pa_context_errno(connection.context()));
}

}  // namespace vlm::platform::pulse
