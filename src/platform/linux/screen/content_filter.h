#pragma once

#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

#include "platform/screen_capture_kit.h"

namespace vlm::platform::screen {

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
using CaptureTarget = std::variant<WindowTarget, ApplicationsTarget, DisplayTarget>;

class ContentFilter final : public SCContentFilter {
 public:
  ContentFilter(CaptureTarget target, const CGRect& contentRect)
      : target_(std::move(target)), contentRect_(contentRect) {}

  CGRect contentRect() const override { return contentRect_; }
  double pointPixelScale() const override { return 1; }
  const CaptureTarget& target() const { return target_; }

 private:
  const CaptureTarget target_;
  const CGRect contentRect_;
};

}  // namespace vlm::platform::screen
