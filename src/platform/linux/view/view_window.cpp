#include "platform/linux/view/view_window.h"

#include <xcb/xfixes.h>

#include <array>
#include <utility>

#include "platform/linux/x11/event.h"
#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/reply.h"
#include "platform/linux/x11/visuals.h"

namespace vlm::platform::view {
namespace {

using x11::Reply;

template <class Event>
const Event& as(const xcb_generic_event_t& event) {
  return reinterpret_cast<const Event&>(event);
}

}  // namespace

std::unique_ptr<ViewWindow> ViewWindow::make(const x11::Connection& connection) {
  const auto visual = x11::findBlueFirstVisual(connection, kDepth);
  if (visual == XCB_NONE) return nullptr;
  std::unique_ptr<ViewWindow> window(new ViewWindow(connection));
  window->create(visual);
  window->refuseInput();
  // The window must exist for the host, which has a connection of its own.
  const Reply<xcb_get_geometry_reply_t> made(xcb_get_geometry_reply(
      connection.get(), xcb_get_geometry(connection.get(), window->id()), nullptr));
  return made ? std::move(window) : nullptr;
}

ViewWindow::ViewWindow(const x11::Connection& connection)
    : connection_(connection.get()),
      root_(connection.screen().root),
      window_(xcb_generate_id(connection_)),
      context_(xcb_generate_id(connection_)),
      colors_(xcb_generate_id(connection_)),
      parent_(root_) {}

// The window itself is gone, or goes with the connection.
ViewWindow::~ViewWindow() {
  if (isAsked_) xcb_discard_reply(connection_, asked_.sequence);
  xcb_free_gc(connection_, context_);
  xcb_free_colormap(connection_, colors_);
}

void ViewWindow::create(xcb_visualid_t visual) {
  xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colors_, root_, visual);
  xcb_create_window_value_list_t values{};
  // Black, and not what happens to lie there, which may be another program's window: that would be
  // seen, and captured with the host's window, until the picture is drawn.
  values.background_pixel = 0;
  values.border_pixel = 0;
  // Where a new size is not drawn at once, what is there stays.
  values.bit_gravity = XCB_GRAVITY_NORTH_WEST;
  // No window manager puts a frame around it, should the host map it too early.
  values.override_redirect = 1;
  values.event_mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_EXPOSURE |
                      XCB_EVENT_MASK_VISIBILITY_CHANGE | XCB_EVENT_MASK_RESIZE_REDIRECT;
  values.colormap = colors_;
  xcb_create_window_aux(connection_, kDepth, window_, root_, 0, 0, 1, 1, 0,
                        XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
                        XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_BIT_GRAVITY |
                            XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
                        &values);
  xcb_create_gc(connection_, context_, window_, 0, nullptr);
}

void ViewWindow::refuseInput() {
  if (!supports(connection_, x11::Extension::fixes)) return;
  const xcb_xfixes_region_t nothing = xcb_generate_id(connection_);
  xcb_xfixes_create_region(connection_, nothing, 0, nullptr);
  xcb_xfixes_set_window_shape_region(connection_, window_, XCB_SHAPE_SK_INPUT, 0, 0, nothing);
  xcb_xfixes_destroy_region(connection_, nothing);
}

ViewWindow::Change ViewWindow::handle(const xcb_generic_event_t& event) {
  switch (x11::typeOf(event)) {
    case XCB_EXPOSE:
      return handleExposure(event);
    case XCB_VISIBILITY_NOTIFY:
      covered_ = as<xcb_visibility_notify_event_t>(event).state == XCB_VISIBILITY_FULLY_OBSCURED;
      viewable_ = true;
      return Change::none;
    case XCB_RESIZE_REQUEST: {
      const auto& request = as<xcb_resize_request_event_t>(event);
      if (request.window == window_) takeHostSize({request.width, request.height});
      return Change::none;
    }
    case XCB_REPARENT_NOTIFY:
    case XCB_CONFIGURE_NOTIFY:
    case XCB_MAP_NOTIFY:
    case XCB_UNMAP_NOTIFY:
    case XCB_DESTROY_NOTIFY:
      return handleStructure(event);
    default:
      return Change::none;
  }
}

ViewWindow::Change ViewWindow::handleExposure(const xcb_generic_event_t& event) {
  const auto& exposure = as<xcb_expose_event_t>(event);
  if (exposure.window != window_) return Change::none;
  viewable_ = true;
  const bool isDrawn = event.full_sequence == drawnResize_;
  return exposure.count == 0 && !isDrawn ? Change::exposed : Change::none;
}

ViewWindow::Change ViewWindow::handleStructure(const xcb_generic_event_t& event) {
  // These events begin alike: the window that the event was selected on, and the one it is about.
  const auto& notify = as<xcb_unmap_notify_event_t>(event);
  if (notify.window == window_ && notify.event == window_) return handleOwn(event);
  if (notify.window == parent_ && isInHost() && x11::typeOf(event) == XCB_CONFIGURE_NOTIFY) {
    const auto& parent = as<xcb_configure_notify_event_t>(event);
    fillParent({parent.width, parent.height});
  }
  return Change::none;
}

ViewWindow::Change ViewWindow::handleOwn(const xcb_generic_event_t& event) {
  switch (x11::typeOf(event)) {
    case XCB_REPARENT_NOTIFY:
      settleIn(as<xcb_reparent_notify_event_t>(event));
      return Change::moved;
    case XCB_CONFIGURE_NOTIFY: {
      const auto& place = as<xcb_configure_notify_event_t>(event);
      // The corner is also where the window is put when it fills its parent.
      if (!sizedByHost_ && place.x == 0 && place.y == 0) return Change::none;
      hostX_ = place.x;
      hostY_ = place.y;
      return Change::none;
    }
    case XCB_MAP_NOTIFY:
      mapped_ = true;
      covered_ = false;
      viewable_ = true;
      return Change::exposed;
    case XCB_UNMAP_NOTIFY:
      mapped_ = false;
      return Change::none;
    default:
      return Change::gone;
  }
}

void ViewWindow::settleIn(const xcb_reparent_notify_event_t& event) {
  if (isInHost()) {
    constexpr std::uint32_t kNoEvents = 0;
    xcb_change_window_attributes(connection_, parent_, XCB_CW_EVENT_MASK, &kNoEvents);
  }
  parent_ = event.parent;
  hostX_ = event.x;
  hostY_ = event.y;
  viewable_ = true;
  if (!isInHost()) return;
  constexpr std::uint32_t kItsStructure = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(connection_, parent_, XCB_CW_EVENT_MASK, &kItsStructure);
  // Asked after the events were selected, so that no change in between is missed. The answer also
  // brings along a size that the host has set right after moving the window.
  const Reply<xcb_get_geometry_reply_t> geometry(
      xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, parent_), nullptr));
  if (geometry) fillParent({geometry->width, geometry->height});
}

void ViewWindow::fillParent(Size size) {
  if (sizedByHost_) return;
  wanted_ = size;
  if (hostX_ != 0 || hostY_ != 0) mustMove_ = true;
}

void ViewWindow::takeHostSize(Size size) {
  wanted_ = size;
  if (std::exchange(sizedByHost_, true) || !isInHost()) return;
  // The host's place holds from now on. It is known when the event of the move that belongs to this
  // request is here, which the answer brings along.
  mustMove_ = true;
  const Reply<xcb_get_input_focus_reply_t> answer(
      xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

void ViewWindow::resize(bool andDraws) {
  const bool moves = std::exchange(mustMove_, false);
  const std::array<std::uint32_t, 4> place{static_cast<std::uint32_t>(sizedByHost_ ? hostX_ : 0),
                                           static_cast<std::uint32_t>(sizedByHost_ ? hostY_ : 0),
                                           static_cast<std::uint32_t>(wanted_.width),
                                           static_cast<std::uint32_t>(wanted_.height)};
  constexpr std::uint16_t kPlace = XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y;
  constexpr std::uint16_t kSize = XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT;
  const auto request = moves ? xcb_configure_window(connection_, window_, kPlace | kSize, &place[0])
                             : xcb_configure_window(connection_, window_, kSize, &place[2]);
  if (andDraws) drawnResize_ = request.sequence;
  size_ = wanted_;
}

void ViewWindow::askIfViewable() {
  if (std::exchange(isAsked_, true)) xcb_discard_reply(connection_, asked_.sequence);
  asked_ = xcb_get_window_attributes(connection_, window_);
}

void ViewWindow::takeViewable() {
  if (!std::exchange(isAsked_, false)) return;
  const Reply<xcb_get_window_attributes_reply_t> attributes(
      xcb_get_window_attributes_reply(connection_, asked_, nullptr));
  if (attributes) viewable_ = attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

void ViewWindow::showBlack() {
  xcb_clear_area(connection_, 0, window_, 0, 0, 0, 0);
}

void ViewWindow::takeOut() {
  xcb_unmap_window(connection_, window_);
  xcb_reparent_window(connection_, window_, root_, 0, 0);
}

}  // namespace vlm::platform::view
