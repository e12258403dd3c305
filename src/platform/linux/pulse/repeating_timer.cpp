#include "platform/linux/pulse/repeating_timer.h"

#include <utility>

namespace vlm::platform::pulse {

RepeatingTimer::RepeatingTimer(Connection& connection, pa_usec_t period, std::function<void()> work)
    : connection_(connection),
      period_(period),
      work_(std::move(work)),
      api_(connection.api()),
      event_(pa_context_rttime_new(connection.context(), pa_rtclock_now() + period, ring, this)) {}

RepeatingTimer::~RepeatingTimer() {
  if (event_ != nullptr) api_->time_free(event_);
}

void RepeatingTimer::ring(pa_mainloop_api*, pa_time_event* event, const timeval*, void* self) {
  auto& timer = *static_cast<RepeatingTimer*>(self);
  timer.work_();
  pa_context_rttime_restart(timer.connection_.context(), event, pa_rtclock_now() + timer.period_);
}

}  // namespace vlm::platform::pulse
