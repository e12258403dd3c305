#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/portal/screen_cast.h"

namespace vlm::platform::portal {

enum class Axis : std::uint32_t { vertical = 0, horizontal = 1 };

// A person's leave to use their pointer and keyboard. The desktop shows that it is given until
// this goes. Any thread, one at a time.
class RemoteDesktop {
 public:
  // Asks a person, without a limit to how long they think about it. Null and why without their
  // leave for both, pointer and keyboard.
  static std::unique_ptr<RemoteDesktop> open(std::string& reason);
  ~RemoteDesktop();
  RemoteDesktop(const RemoteDesktop&) = delete;
  RemoteDesktop& operator=(const RemoteDesktop&) = delete;

  // False once it was taken back.
  bool isGiven() const;

  // Points of the whole desktop; beside its monitors, the nearest of theirs. Not waited for: others
  // that come later arrive later.
  void movePointer(double x, double y) const;
  // These are waited for, so that none is lost when the process ends. False when it was refused.
  bool pressButton(std::int32_t evdevCode, bool down) const;
  bool turnWheel(Axis axis, std::int32_t steps) const;
  bool pressKey(std::int32_t evdevCode, bool down) const;

 private:
  explicit RemoteDesktop(std::unique_ptr<DesktopPortal> portal) : portal_(std::move(portal)) {}
  bool start(std::string& reason);

  const std::unique_ptr<DesktopPortal> portal_;
  std::string session_;
  std::vector<Monitor> monitors_;
};

}  // namespace vlm::platform::portal
