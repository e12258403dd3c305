#include "platform/linux/screen/capture_thread.h"

#include <exception>
#include <string>
#include <utility>

#include "platform/linux/screen/make_feed.h"
#include "platform/linux/x11/broken_pipe.h"
#include "platform/mutex.h"
#include "platform/portable/thread_names.h"

namespace vlm::platform::screen {
namespace {

Clock::duration intervalOf(CMTime time) {
  if (time.timescale <= 0 || time.value <= 0) return Clock::duration::zero();
  const std::chrono::duration<double> seconds(CMTimeGetSeconds(time));
  return std::chrono::duration_cast<Clock::duration>(seconds);
}

}  // namespace

// Ends the wait for the service from another thread. Both sides hold it, so that either may be gone
// first.
class CaptureThread::Interruption {
 public:
  void ask() {
    MutexLock lock(mutex_);
    isAsked_ = true;
    if (feed_ != nullptr) feed_->hangUp();
  }
  bool isAsked() {
    MutexLock lock(mutex_);
    return isAsked_;
  }

  // Says for as long as it lives which feed to hang up.
  class Target {
   public:
    Target(Interruption& interruption, Feed& feed) : interruption_(interruption) {
      MutexLock lock(interruption_.mutex_);
      interruption_.feed_ = &feed;
      if (interruption_.isAsked_) feed.hangUp();
    }
    ~Target() {
      MutexLock lock(interruption_.mutex_);
      interruption_.feed_ = nullptr;
    }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

   private:
    Interruption& interruption_;
  };

 private:
  Mutex mutex_;
  bool isAsked_ VLM_GUARDED_BY(mutex_) = false;
  Feed* feed_ VLM_GUARDED_BY(mutex_) = nullptr;
};

// What the thread does, and what it reports.
class CaptureThread::Run {
 public:
  Run(std::shared_ptr<const ContentFilter> filter, const SCStreamConfiguration& configuration,
      Handlers handlers, std::shared_ptr<Interruption> interruption)
      : filter_(std::move(filter)),
        configuration_(configuration),
        handlers_(std::move(handlers)),
        interruption_(std::move(interruption)) {}

  void operator()() {
    const x11::BrokenPipeGuard guard;
    std::string reason;
    try {
      reason = capture();
    } catch (const std::exception& failure) {  // no memory
      reason = failure.what();
    }
    if (!isStarted_) {
      handlers_.started(NSError{reason});
    } else if (!interruption_->isAsked()) {
      handlers_.ended(NSError{reason});
    }
  }

 private:
  // Runs the capture to its end and returns why it ended.
  std::string capture() {
    std::string reason;
    const auto feed = makeFeed(filter_, reason);
    if (!feed) return reason;
    const Interruption::Target target(*interruption_, *feed);
    auto* const source = feed->open(reason);
    if (source == nullptr) return reason;
    FrameComposer composer(
        {static_cast<int>(configuration_.width), static_cast<int>(configuration_.height)},
        static_cast<std::size_t>(configuration_.queueDepth));
    isStarted_ = true;
    handlers_.started(std::nullopt);
    return CaptureLoop(*feed, *source, composer, intervalOf(configuration_.minimumFrameInterval),
                       handlers_.picture)
        .run();
  }

  const std::shared_ptr<const ContentFilter> filter_;
  const SCStreamConfiguration configuration_;
  const Handlers handlers_;
  const std::shared_ptr<Interruption> interruption_;
  bool isStarted_ = false;
};

CaptureThread::CaptureThread(std::shared_ptr<const ContentFilter> filter,
                             const SCStreamConfiguration& configuration, Handlers handlers)
    : interruption_(std::make_shared<Interruption>()),
      thread_(thread_names::kScreen,
              Run(std::move(filter), configuration, std::move(handlers), interruption_)) {}

CaptureThread::~CaptureThread() {
  interruption_->ask();
}

}  // namespace vlm::platform::screen
