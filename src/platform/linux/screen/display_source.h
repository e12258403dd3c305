#pragma once

#include <cstdint>
#include <memory>

#include "platform/linux/screen/damage_watch.h"
#include "platform/linux/screen/image_reader.h"
#include "platform/linux/screen/x11_source.h"
#include "platform/linux/x11/connection.h"

namespace vlm::platform::screen {

// The place of a monitor on the root window. A monitor that is moved or resized is followed; a
// removed one has no place any more, since something else may be there.
class MonitorPlace {
 public:
  // The events that its maker must select at the root window.
  static constexpr std::uint32_t kRootEvents = XCB_EVENT_MASK_STRUCTURE_NOTIFY;

  MonitorPlace(const x11::Connection& connection, std::uint32_t id, const Rectangle& frame);

  // True when the event means that the screen may have been set up anew.
  bool handle(const xcb_generic_event_t& event);
  bool isStale() const { return isStale_; }
  void refresh();
  // Relative to the root window and within it; empty for a monitor that was removed.
  const Rectangle& frame() const { return frame_; }
  // Why nothing can come any more.
  std::optional<std::string> ended() const;

 private:
  const x11::Connection& connection_;
  const std::uint32_t id_;
  Rectangle frame_;
  bool isStale_ = true;
  bool isRemoved_ = false;
};

// Everything on one display, as the root window shows it.
class DisplaySource final : public X11Source {
 public:
  DisplaySource(const x11::Connection& connection, std::uint32_t id, const Rectangle& frame);

  void handle(const xcb_generic_event_t& event) override;
  bool hasChanges() const override { return place_.isStale() || damage_.isDamaged(); }
  void askChanges() override;
  std::vector<Rectangle> takeChanges() override;
  Size size() const override { return place_.frame().size(); }
  void read(std::span<const Rectangle> areas, const Receiver& receive) override;
  bool isDoubtful() const override { return place_.isStale(); }
  std::optional<std::string> ended() const override { return place_.ended(); }

 private:
  const x11::Connection& connection_;
  MonitorPlace place_;
  DamageWatch damage_;
  std::vector<Rectangle> damaged_;  // as of the last askChanges()
  bool isMoved_ = false;
  ImageReader reader_;
};

}  // namespace vlm::platform::screen
