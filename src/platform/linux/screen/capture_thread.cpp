#include "platform/linux/screen/capture_thread.h"

#include <pthread.h>

#include <exception>
#include <utility>

#include "platform/linux/screen/make_source.h"
#include "platform/linux/x11/broken_pipe.h"
#include "platform/linux/x11/connection.h"
#include "platform/mutex.h"

namespace vlm::platform::screen {
namespace {

Clock::duration intervalOf(CMTime time) {
  if (time.timescale <= 0 || time.value <= 0) return Clock::duration::zero();
  const std::chrono::duration<double> seconds(CMTimeGetSeconds(time));
  return std::chrono::duration_cast<Clock::duration>(seconds);
}

}  // namespace

// Ends the wait for the server from another thread. Both sides hold it, so that either may be gone
// first.
class CaptureThread::Interruption {
 public:
  // False when the end was asked for before.
  bool watch(const x11::Connection* connection) {
    MutexLock lock(mutex_);
    connection_ = connection;
    return !isAsked_;
  }
  void ask() {
    MutexLock lock(mutex_);
    isAsked_ = true;
    if (connection_ != nullptr) connection_->hangUp();
  }

 private:
  Mutex mutex_;
  bool isAsked_ VLM_GUARDED_BY(mutex_) = false;
  const x11::Connection* connection_ VLM_GUARDED_BY(mutex_) = nullptr;
};

namespace {

// Runs a capture to its end. Nothing when it could not start, which was then told.
template <class Interruption>
std::optional<std::string> capture(const ContentFilter& filter,
                                   const SCStreamConfiguration& configuration,
                                   const CaptureThread::Handlers& handlers,
                                   Interruption& interruption) {
  const auto connection = x11::Connection::open();
  if (!connection) {
    handlers.started(NSError{"the X server can't be reached"});
    return std::nullopt;
  }
  if (!interruption.watch(connection.get())) {
    handlers.started(NSError{"the capture was stopped while it started"});
    return std::nullopt;
  }
  std::string reason;
  if (const auto source = makeSource(*connection, filter, reason)) {
    const Size size{static_cast<int>(configuration.width), static_cast<int>(configuration.height)};
    FrameComposer composer(size, static_cast<std::size_t>(configuration.queueDepth));
    handlers.started(std::nullopt);
    reason = CaptureLoop(*connection, *source, composer,
                         intervalOf(configuration.minimumFrameInterval), handlers.picture)
                 .run();
  } else {
    handlers.started(NSError{std::exchange(reason, {})});
  }
  const bool endedByItself = interruption.watch(nullptr);
  return endedByItself && !reason.empty() ? std::optional(reason) : std::nullopt;
}

}  // namespace

CaptureThread::CaptureThread(std::shared_ptr<const ContentFilter> filter,
                             const SCStreamConfiguration& configuration, Handlers handlers)
    : interruption_(std::make_shared<Interruption>()) {
  thread_ = std::thread([interruption = interruption_, filter = std::move(filter), configuration,
                         handlers = std::move(handlers)] {
    pthread_setname_np(pthread_self(), "vlm.screen");
    const x11::BrokenPipeGuard guard;
    const auto end = capture(*filter, configuration, handlers, *interruption);
    if (end) handlers.ended(NSError{*end});
  });
}

CaptureThread::~CaptureThread() {
  interruption_->ask();
  if (thread_.get_id() == std::this_thread::get_id()) {
    thread_.detach();
  } else {
    thread_.join();
  }
}

}  // namespace vlm::platform::screen
