#include "platform/linux/view/view_window.h"

#include <xcb/xfixes.h>

#include <algorithm>
#include <array>

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
      parent_(root_) {}

void ViewWindow::create(xcb_visualid_t visual) {
  const xcb_colormap_t colors = xcb_generate_id(connection_);
  xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colors, root_, visual);
  xcb_create_window_value_list_t values{};
  values.background_pixel = 0;
  values.border_pixel = 0;
  // What is there stays while the window grows, until the picture is drawn in the new size.
  values.bit_gravity = XCB_GRAVITY_NORTH_WEST;
  // No window manager puts a frame around it, should the host map it too early.
  values.override_redirect = 1;
  values.event_mask =
      XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_VISIBILITY_CHANGE;
  values.colormap = colors;
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
      return as<xcb_expose_event_t>(event).count == 0 ? Change::exposed : Change::none;
    case XCB_VISIBILITY_NOTIFY:
      covered_ = as<xcb_visibility_notify_event_t>(event).state == XCB_VISIBILITY_FULLY_OBSCURED;
      return Change::none;
    case XCB_REPARENT_NOTIFY:
    case XCB_CONFIGURE_NOTIFY:
    case XCB_MAP_NOTIFY:
    case XCB_UNMAP_NOTIFY:
    case XCB_DESTROY_NOTIFY:
      break;
    default:
      return Change::none;
  }
  // These five begin alike: the window that the event was selected on, and the one it is about.
  const auto& notify = as<xcb_unmap_notify_event_t>(event);
  if (notify.window == window_ && notify.event == window_) return handleOwn(event);
  if (notify.window == parent_ && isInHost()) return handleParents(event);
  return Change::none;
}

ViewWindow::Change ViewWindow::handleOwn(const xcb_generic_event_t& event) {
  switch (x11::typeOf(event)) {
    case XCB_REPARENT_NOTIFY:
      settleIn(as<xcb_reparent_notify_event_t>(event).parent);
      return Change::moved;
    case XCB_CONFIGURE_NOTIFY: {
      const auto& size = as<xcb_configure_notify_event_t>(event);
      if (size.width == width_ && size.height == height_) return Change::none;
      width_ = size.width;
      height_ = size.height;
      return isInHost() ? Change::resized : Change::none;
    }
    case XCB_MAP_NOTIFY:
      mapped_ = true;
      covered_ = false;
      return Change::exposed;
    case XCB_UNMAP_NOTIFY:
      mapped_ = false;
      return Change::none;
    default:
      mapped_ = false;
      parent_ = root_;
      return Change::gone;
  }
}

ViewWindow::Change ViewWindow::handleParents(const xcb_generic_event_t& event) {
  switch (x11::typeOf(event)) {
    case XCB_CONFIGURE_NOTIFY: {
      const auto& size = as<xcb_configure_notify_event_t>(event);
      fillParent(size.width, size.height);
      return Change::none;
    }
    case XCB_MAP_NOTIFY:
      parentMapped_ = true;
      return Change::exposed;
    case XCB_UNMAP_NOTIFY:
      parentMapped_ = false;
      return Change::none;
    default:
      return Change::none;
  }
}

void ViewWindow::settleIn(xcb_window_t parent) {
  if (isInHost()) {
    constexpr std::uint32_t kNoEvents = 0;
    xcb_change_window_attributes(connection_, parent_, XCB_CW_EVENT_MASK, &kNoEvents);
  }
  parent_ = parent;
  parentMapped_ = true;
  if (!isInHost()) return;
  constexpr std::uint32_t kItsStructure = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(connection_, parent_, XCB_CW_EVENT_MASK, &kItsStructure);
  // Asked after the events were selected, so that no change in between is missed.
  const auto attributesAsked = xcb_get_window_attributes(connection_, parent_);
  const auto geometryAsked = xcb_get_geometry(connection_, parent_);
  const Reply<xcb_get_window_attributes_reply_t> attributes(
      xcb_get_window_attributes_reply(connection_, attributesAsked, nullptr));
  const Reply<xcb_get_geometry_reply_t> geometry(
      xcb_get_geometry_reply(connection_, geometryAsked, nullptr));
  if (attributes) parentMapped_ = attributes->map_state != XCB_MAP_STATE_UNMAPPED;
  if (geometry) fillParent(geometry->width, geometry->height);
}

void ViewWindow::fillParent(std::uint16_t width, std::uint16_t height) {
  const std::array<std::uint32_t, 4> place{0, 0, width, height};
  xcb_configure_window(connection_, window_,
                       XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                           XCB_CONFIG_WINDOW_HEIGHT,
                       place.data());
}

void ViewWindow::showBlack() {
  constexpr std::uint32_t kBlack = 0;
  xcb_change_window_attributes(connection_, window_, XCB_CW_BACK_PIXEL, &kBlack);
  xcb_clear_area(connection_, 0, window_, 0, 0, 0, 0);
}

void ViewWindow::showDrawing() {
  constexpr std::uint32_t kNone = XCB_BACK_PIXMAP_NONE;
  xcb_change_window_attributes(connection_, window_, XCB_CW_BACK_PIXMAP, &kNone);
}

void ViewWindow::takeOut() {
  xcb_unmap_window(connection_, window_);
  xcb_reparent_window(connection_, window_, root_, 0, 0);
}

}  // namespace vlm::platform::view
