#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "platform/screen_capture_kit.h"

namespace vlm::platform::screen {

class PickedScreen;

struct WindowTarget {
  std::uint32_t windowID = 0;
};
struct ApplicationsTarget {
  std::shared_ptr<const SCDisplay> display;
  std::vector<std::shared_ptr<const SCRunningApplication>> applications;
  std::vector<std::uint32_t> excepting;
};
struct DisplayTarget {
  std::shared_ptr<const SCDisplay> display;
  std::vector<std::uint32_t> excluding;
};
// A screen that a person picked in a dialog of the desktop; without one, why they did not.
struct PickedTarget {
  std::shared_ptr<PickedScreen> screen;
  std::string refusal;
};
using CaptureTarget = std::variant<WindowTarget, ApplicationsTarget, DisplayTarget, PickedTarget>;

class ContentFilter final : public SCContentFilter {
 public:
  ContentFilter(CaptureTarget target, const CGRect& contentRect, double scale = 1)
      : target_(std::move(target)), contentRect_(contentRect), scale_(scale) {}

  CGRect contentRect() const override { return contentRect_; }
  double pointPixelScale() const override { return scale_; }
  const CaptureTarget& target() const { return target_; }

 private:
  const CaptureTarget target_;
  const CGRect contentRect_;
  const double scale_;
};

}  // namespace vlm::platform::screen
