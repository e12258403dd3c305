#include "platform/linux/screen/server_region.h"

#include <cstdint>
#include <limits>
#include <span>

#include "platform/linux/x11/reply.h"

namespace vlm::platform::screen {

ServerRegion::ServerRegion(const x11::Connection& connection)
    : connection_(connection), id_(xcb_generate_id(connection.get())) {
  xcb_xfixes_create_region(connection.get(), id_, 0, nullptr);
}

ServerRegion::ServerRegion(const x11::Connection& connection, xcb_window_t window)
    : connection_(connection), id_(xcb_generate_id(connection.get())) {
  xcb_xfixes_create_region_from_window(connection.get(), id_, window, XCB_SHAPE_SK_BOUNDING);
}

ServerRegion::~ServerRegion() {
  xcb_xfixes_destroy_region(connection_.get(), id_);
}

void ServerRegion::fill() {
  using Limits = std::numeric_limits<std::int16_t>;
  const xcb_rectangle_t all{Limits::min(), Limits::min(), std::numeric_limits<std::uint16_t>::max(),
                            std::numeric_limits<std::uint16_t>::max()};
  xcb_xfixes_set_region(connection_.get(), id_, 1, &all);
}

void ServerRegion::subtract(xcb_xfixes_region_t other) {
  xcb_xfixes_subtract_region(connection_.get(), id_, other, id_);
}

void ServerRegion::intersect(xcb_xfixes_region_t other) {
  xcb_xfixes_intersect_region(connection_.get(), id_, other, id_);
}

xcb_xfixes_fetch_region_cookie_t ServerRegion::ask() const {
  return xcb_xfixes_fetch_region(connection_.get(), id_);
}

std::vector<x11::Rectangle> ServerRegion::collect(xcb_xfixes_fetch_region_cookie_t asked) const {
  const x11::Reply<xcb_xfixes_fetch_region_reply_t> reply(
      xcb_xfixes_fetch_region_reply(connection_.get(), asked, nullptr));
  return reply ? rectanglesIn(*reply) : std::vector<x11::Rectangle>();
}

std::vector<x11::Rectangle> rectanglesIn(const xcb_xfixes_fetch_region_reply_t& reply) {
  std::vector<x11::Rectangle> rectangles;
  const std::span all(xcb_xfixes_fetch_region_rectangles(&reply),
                      static_cast<std::size_t>(xcb_xfixes_fetch_region_rectangles_length(&reply)));
  rectangles.reserve(all.size());
  for (const auto& each : all) rectangles.push_back({each.x, each.y, each.width, each.height});
  return rectangles;
}

}  // namespace vlm::platform::screen
