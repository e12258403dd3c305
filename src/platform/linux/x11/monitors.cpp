#include "platform/linux/x11/monitors.h"

#include <xcb/randr.h>

#include <algorithm>
#include <span>

#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/reply.h"

namespace vlm::platform::x11 {
namespace {

std::vector<Monitor> monitorsOfRandr(const Connection& connection) {
  if (!supports(connection, Extension::randr)) return {};
  const auto asked = xcb_randr_get_monitors(connection.get(), connection.screen().root, 1);
  const Reply<xcb_randr_get_monitors_reply_t> reply(
      xcb_randr_get_monitors_reply(connection.get(), asked, nullptr));
  if (!reply) return {};
  std::vector<Monitor> monitors;
  auto each = xcb_randr_get_monitors_monitors_iterator(reply.get());
  for (; each.rem > 0; xcb_randr_monitor_info_next(&each)) {
    const auto& info = *each.data;
    // The name's atom: outputs come and go with cables, names are what a person knows them by.
    const Monitor monitor{info.name, {info.x, info.y, info.width, info.height}};
    if (monitor.id == 0 || monitor.frame.isEmpty()) continue;
    monitors.insert(info.primary != 0 ? monitors.begin() : monitors.end(), monitor);
  }
  return monitors;
}

}  // namespace

std::vector<Monitor> listMonitors(const Connection& connection) {
  auto monitors = monitorsOfRandr(connection);
  if (!monitors.empty()) return monitors;
  const xcb_window_t root = connection.screen().root;
  const Reply<xcb_get_geometry_reply_t> geometry(
      xcb_get_geometry_reply(connection.get(), xcb_get_geometry(connection.get(), root), nullptr));
  if (!geometry) return {};
  return {{root, {0, 0, geometry->width, geometry->height}}};
}

std::vector<std::string> namesOfOutputs(const Connection& connection) {
  std::vector<std::string> names;
  if (!supports(connection, Extension::randr)) return names;
  auto* c = connection.get();
  const auto asked = xcb_randr_get_screen_resources_current(c, connection.screen().root);
  const Reply<xcb_randr_get_screen_resources_current_reply_t> resources(
      xcb_randr_get_screen_resources_current_reply(c, asked, nullptr));
  if (!resources) return names;
  const std::span outputs(xcb_randr_get_screen_resources_current_outputs(resources.get()),
                          resources->num_outputs);
  for (const auto output : outputs) {
    const auto askedOutput = xcb_randr_get_output_info(c, output, resources->config_timestamp);
    const Reply<xcb_randr_get_output_info_reply_t> info(
        xcb_randr_get_output_info_reply(c, askedOutput, nullptr));
    if (!info) continue;
    const auto* name = reinterpret_cast<const char*>(xcb_randr_get_output_info_name(info.get()));
    names.emplace_back(name, info->name_len);
  }
  return names;
}

}  // namespace vlm::platform::x11
