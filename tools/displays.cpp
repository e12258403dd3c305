#include "displays.h"

#include <xcb/randr.h>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "command.h"
#include "failure.h"
#include "x_connection.h"

namespace vlm::tools {
namespace {

using Connection = std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)>;

std::string nameOf(const Connection& connection, xcb_atom_t atom) {
  const XReply<xcb_get_atom_name_reply_t> reply(xcb_get_atom_name_reply(
      connection.get(), xcb_get_atom_name(connection.get(), atom), nullptr));
  if (!reply) return "";
  return {xcb_get_atom_name_name(reply.get()),
          static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

bool hasMonitors(const Connection& connection) {
  const auto* extension = xcb_get_extension_data(connection.get(), &xcb_randr_id);
  if (extension == nullptr || extension->present == 0) return false;
  const XReply<xcb_randr_query_version_reply_t> version(xcb_randr_query_version_reply(
      connection.get(), xcb_randr_query_version(connection.get(), 1, 5), nullptr));
  return version && (version->major_version > 1 || version->minor_version >= 5);
}

std::vector<Display> monitors(const Connection& connection, xcb_window_t root) {
  if (!hasMonitors(connection)) return {};
  const XReply<xcb_randr_get_monitors_reply_t> reply(xcb_randr_get_monitors_reply(
      connection.get(), xcb_randr_get_monitors(connection.get(), root, 1), nullptr));
  if (!reply) return {};
  std::vector<Display> displays;
  for (auto each = xcb_randr_get_monitors_monitors_iterator(reply.get()); each.rem > 0;
       xcb_randr_monitor_info_next(&each)) {
    const auto& monitor = *each.data;
    if (monitor.width == 0 || monitor.height == 0) continue;
    displays.insert(monitor.primary != 0 ? displays.begin() : displays.end(),
                    Display{monitor.name,
                            nameOf(connection, monitor.name),
                            {monitor.x, monitor.y, {monitor.width, monitor.height}}});
  }
  return displays;
}

struct DisplaysOptions {
  bool json = false;
};

int print(const DisplaysOptions& options) {
  nlohmann::json list = nlohmann::json::array();
  for (const auto& [id, name, frame] : listDisplays()) {
    list.push_back({{"id", id},
                    {"name", name},
                    {"x", frame.x},
                    {"y", frame.y},
                    {"width", frame.size.width},
                    {"height", frame.size.height}});
    if (options.json) continue;
    std::printf("%-6u %-12s %dx%d%+d%+d\n", id, name.c_str(), frame.size.width, frame.size.height,
                frame.x, frame.y);
  }
  if (options.json) std::printf("%s\n", list.dump().c_str());
  return 0;
}

}  // namespace

std::vector<Display> listDisplays() {
  int number = 0;
  const Connection connection(xcb_connect(nullptr, &number), xcb_disconnect);
  if (xcb_connection_has_error(connection.get()) != 0) throw Failure("there is no X server");
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
  for (; number > 0 && screens.rem > 1; --number) xcb_screen_next(&screens);
  const auto& screen = *screens.data;
  auto displays = monitors(connection, screen.root);
  // A server that knows of no monitors has the whole root window as one.
  if (displays.empty()) {
    displays.push_back(
        {screen.root, "", {0, 0, {screen.width_in_pixels, screen.height_in_pixels}}});
  }
  return displays;
}

Display displayWithId(std::uint32_t id) {
  const auto displays = listDisplays();
  const auto found = std::ranges::find(displays, id, &Display::id);
  if (found == displays.end()) {
    throw Failure("there is no display " + std::to_string(id) + "; `vlm displays` lists them");
  }
  return *found;
}

void addDisplays(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<DisplaysOptions>();
  auto& command = addCommand(program, chosen, "displays",
                             "List the displays: id, name, size and place", options, print);
  command.add_flag("--json", options->json, "Print a JSON array");
}

}  // namespace vlm::tools
