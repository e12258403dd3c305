#pragma once

#include <xcb/xcb.h>

#include <optional>
#include <vector>

#include "platform/linux/screen/damage_watch.h"
#include "platform/linux/screen/server_region.h"
#include "platform/linux/screen/source.h"
#include "platform/linux/screen/window_picture.h"
#include "platform/linux/x11/connection.h"

namespace vlm::platform::screen {

// A window that the server draws into memory of its own, so that its picture is whole wherever it
// is and whatever covers it. It keeps looking to its user as before.
//
// The server gives a window a new picture when it is shown, when its size changes and when it is
// redirected, and fills that with what is behind the window. So a new picture is not used before
// the window's owner has painted, and never where nothing was painted.
class RedirectedWindow {
 public:
  // A window that is new on the screen may not be painted yet even if it was redirected before.
  RedirectedWindow(const x11::Connection& connection, xcb_window_t window, bool isNew);
  ~RedirectedWindow();
  RedirectedWindow(const RedirectedWindow&) = delete;
  RedirectedWindow& operator=(const RedirectedWindow&) = delete;

  xcb_window_t id() const { return window_; }
  void handle(const xcb_generic_event_t& event);

  // Destroyed; nothing will come any more.
  bool isClosed() const { return isClosed_; }
  bool hasChanges() const;
  // When hasChanges() becomes true without an event.
  std::optional<Clock::time_point> wakeAt() const;

  // The changes are taken in three steps: several windows ask before the first one waits, and every
  // event that came along with the answers is handled before take() judges them. The areas are
  // relative to the picture; all of it when it is another one.
  void ask();
  void await();
  void take(std::vector<Rectangle>& changes);

  // As of the last take(); nothing for a window that is not shown.
  const std::optional<WindowPicture>& picture() const { return picture_; }

 private:
  // The wait for the owner, who paints a new picture.
  struct Wait {
    Clock::time_point due;
    Clock::time_point limit;
    Clock::time_point countsFrom;  // damage of before proves nothing
    bool sawDamage = false;
  };
  // What the server reported last.
  struct Outline {
    Size size;
    int border = 0;
    friend bool operator==(const Outline&, const Outline&) = default;
  };

  void redirect(bool isNew);
  void handleDamage();
  void handleStructure(const xcb_generic_event_t& event);
  void handleNewPicture(const xcb_generic_event_t& event);
  void handleMove(const xcb_generic_event_t& event);
  void beginWait();
  void takePainted();
  void askForRepaint();

  const x11::Connection& connection_;
  const xcb_window_t window_;
  const bool hasShape_;
  const xcb_atom_t shadow_;  // the property's name
  DamageWatch damage_;
  ServerRegion unpainted_;        // of the newest picture; what nothing has been painted on
  std::uint32_t redirected_ = 0;  // the number of the request
  std::optional<Wait> wait_;
  // Painting may have gone unnoticed, so that the owner has to be asked to paint again.
  bool mayHaveMissed_ = false;
  std::optional<Outline> outline_;
  bool isClosed_ = false;
  bool isStale_ = true;  // there may be another picture by now, or none

  // Underway between ask() and take().
  bool isAsked_ = false;
  bool isRenewing_ = false;
  std::vector<Rectangle> damaged_;
  std::optional<WindowPicture> next_;

  std::optional<WindowPicture> picture_;
};

}  // namespace vlm::platform::screen
