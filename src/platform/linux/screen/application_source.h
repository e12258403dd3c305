#pragma once

#include <memory>
#include <vector>

#include "platform/linux/screen/content_filter.h"
#include "platform/linux/screen/display_source.h"
#include "platform/linux/screen/layered_reader.h"
#include "platform/linux/screen/redirected_window.h"
#include "platform/linux/screen/x11_source.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/window_list.h"

namespace vlm::platform::screen {

// The windows of some applications on one display, at their places before black, and nothing of
// any other application. Windows are taken in and let go as they come and go.
class ApplicationSource final : public X11Source {
 public:
  ApplicationSource(const x11::Connection& connection, const ApplicationsTarget& target);

  void handle(const xcb_generic_event_t& event) override;
  bool hasChanges() const override;
  void askChanges() override;
  std::vector<Rectangle> takeChanges() override;
  Size size() const override { return place_.frame().size(); }
  void read(std::span<const Rectangle> areas, const Receiver& receive) override;
  std::optional<Clock::time_point> wakeAt() const override;
  std::optional<std::string> ended() const override { return place_.ended(); }

 private:
  struct Shown {
    std::unique_ptr<RedirectedWindow> window;
    xcb_window_t topLevel = XCB_NONE;
    Rectangle frame;  // relative to the root
  };

  using Windows = std::vector<x11::StackedWindow>;

  bool isOfTarget(const x11::Window& window) const;
  bool isOurs(const x11::Window& window, const Windows& all) const;
  bool isShown(xcb_window_t window) const;
  void handleRoot(const xcb_generic_event_t& event);
  void refreshWindows();
  void watchHidden(const std::vector<xcb_window_t>& hidden);
  Shown takeOver(const x11::StackedWindow& window);
  std::vector<Layer> layers() const;

  const x11::Connection& connection_;
  const ApplicationsTarget target_;
  const xcb_atom_t shadow_;  // the property's name
  MonitorPlace place_;
  std::vector<Shown> windows_;        // back to front
  std::vector<xcb_window_t> hidden_;  // ours as well, but not on the screen
  bool isListStale_ = true;
  bool isFirst_ = true;
  bool isPlaceNew_ = false;
  std::vector<Rectangle> changes_;  // of the windows' places, relative to the root
  LayeredReader reader_;
};

}  // namespace vlm::platform::screen
