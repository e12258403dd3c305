#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/input/event.h"
#include "platform/linux/input/wheel.h"
#include "platform/linux/portal/remote_desktop.h"
#include "platform/mutex.h"

namespace vlm::platform::input {

// Posts events in a Wayland session, once a person gave leave to. Any thread.
class PortalPoster {
 public:
  static PortalPoster& shared();

  // Whether the leave is given at this time.
  bool mayPost() VLM_EXCLUDES(mutex_);
  // Asks a person for it unless it is given, and waits for them. Posting goes on meanwhile.
  bool ask() VLM_EXCLUDES(asking_, mutex_);
  // Without leave nothing is posted, and the log says so once.
  bool post(const Event& event) VLM_EXCLUDES(mutex_);

 private:
  // The modifiers of a posted press, for as long as the key is down.
  struct Press {
    std::uint16_t key;
    std::vector<std::uint16_t> pressed;
    std::vector<std::uint16_t> lifted;
  };

  bool postMouse(const MouseInput& input) VLM_REQUIRES(mutex_);
  bool postScroll(const ScrollInput& input) VLM_REQUIRES(mutex_);
  bool postKey(const KeyInput& input, CGEventFlags flags) VLM_REQUIRES(mutex_);
  void takeModifiers(Press& press, CGEventFlags flags) VLM_REQUIRES(mutex_);
  void giveBackModifiers() VLM_REQUIRES(mutex_);
  void pressAll(const std::vector<std::uint16_t>& keys, bool down) const VLM_REQUIRES(mutex_);
  void forget() VLM_REQUIRES(mutex_);

  Mutex asking_;
  Mutex mutex_;
  std::unique_ptr<portal::RemoteDesktop> desktop_ VLM_GUARDED_BY(mutex_);
  WheelAxis vertical_ VLM_GUARDED_BY(mutex_);
  WheelAxis horizontal_ VLM_GUARDED_BY(mutex_);
  std::vector<std::uint16_t> heldModifiers_ VLM_GUARDED_BY(mutex_);  // posted by themselves
  std::optional<Press> press_ VLM_GUARDED_BY(mutex_);
};

}  // namespace vlm::platform::input
