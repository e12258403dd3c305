#pragma once

#include <functional>

#include "platform/linux/pulse/connection.h"

namespace vlm::platform::pulse {

// Does its work again and again on the connection's thread, also while there is no server. Made and
// ended under the connection's lock.
class RepeatingTimer {
 public:
  RepeatingTimer(Connection& connection, pa_usec_t period, std::function<void()> work);
  ~RepeatingTimer();
  RepeatingTimer(const RepeatingTimer&) = delete;
  RepeatingTimer& operator=(const RepeatingTimer&) = delete;

 private:
  static void ring(pa_mainloop_api* api, pa_time_event* event, const timeval* time, void* self);

  Connection& connection_;
  const pa_usec_t period_;
  const std::function<void()> work_;
  pa_mainloop_api* const api_;
  pa_time_event* event_;
};

// How often what has to outlive its server looks after its stream.
inline constexpr pa_usec_t kLookAfterStream = 250 * PA_USEC_PER_MSEC;

}  // namespace vlm::platform::pulse
