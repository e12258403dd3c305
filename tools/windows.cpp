#include <cstdio>
#include <nlohmann/json.hpp>
#include <vector>

#include "command.h"
#include "desktop_target.h"
#include "failure.h"
#include "library.h"
#include "whole_number.h"

namespace vlm::tools {
namespace {

struct WindowsOptions {
  std::string target;
  bool json = false;
};

std::vector<VlmWindowEntry> windowsOf(std::int32_t pid) {
  // Twice the room while it is all used: there may be more.
  for (std::vector<VlmWindowEntry> entries(64);; entries.resize(entries.size() * 2)) {
    const auto room = static_cast<std::int32_t>(entries.size());
    const auto count = vlm_window_enumerate(pid, entries.data(), room);
    if (count < 0) throw Failure("this is no process id");
    if (count == room) continue;
    entries.resize(static_cast<std::size_t>(count));
    return entries;
  }
}

std::string titleOf(const VlmWindowEntry& entry) {
  return reinterpret_cast<const char*>(entry.title);
}

nlohmann::json describe(const VlmWindowEntry& entry) {
  return {{"id", entry.windowId},   {"x", entry.left},        {"y", entry.top},
          {"width", entry.width},   {"height", entry.height}, {"main", entry.isMain == 1},
          {"title", titleOf(entry)}};
}

int listWindows(const WindowsOptions& options) {
  const auto pid = processNamed(options.target);
  const auto entries = windowsOf(pid);
  if (options.json) {
    nlohmann::json windows = nlohmann::json::array();
    for (const auto& entry : entries) windows.push_back(describe(entry));
    // A title may be anything that its window made it, no UTF-8 too.
    const auto text = nlohmann::json{{"pid", pid}, {"windows", windows}}.dump(
        -1, ' ', false, nlohmann::json::error_handler_t::replace);
    std::printf("%s\n", text.c_str());
    return 0;
  }
  for (const auto& entry : entries) {
    const auto frame = std::to_string(entry.width) + "x" + std::to_string(entry.height) + "+" +
                       std::to_string(entry.left) + "+" + std::to_string(entry.top);
    std::printf("0x%08x %s %-21s %s\n", entry.windowId, entry.isMain == 1 ? "*" : " ",
                frame.c_str(), titleOf(entry).c_str());
  }
  return 0;
}

struct BoundsOptions {
  std::string window;
  bool json = false;
};

// A window's number, or what names a process: its main window then.
bool boundsOf(const std::string& name, double (&frame)[4]) {
  auto& [x, y, width, height] = frame;
  if (name.starts_with("0x")) {
    const auto window = wholeNumber<std::uint32_t>(std::string_view(name).substr(2), 16);
    if (!window) throw Failure(name + " is no window's id");
    return vlm_window_get_bounds(*window, &x, &y, &width, &height);
  }
  return vlm_window_focused_bounds(processNamed(name), &x, &y, &width, &height);
}

int bounds(const BoundsOptions& options) {
  double frame[4];
  if (!boundsOf(options.window, frame)) throw Failure("there is no such window to be seen");
  const auto& [x, y, width, height] = frame;
  if (options.json) {
    const nlohmann::json answer{{"x", x}, {"y", y}, {"width", width}, {"height", height}};
    std::printf("%s\n", answer.dump().c_str());
  } else {
    std::printf("%gx%g%+g%+g\n", width, height, x, y);
  }
  return 0;
}

}  // namespace

void addWindows(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<WindowsOptions>();
  auto& command = addCommand(program, chosen, "windows",
                             "List a process's visible windows; a star marks the main one", options,
                             listWindows);
  command
      .add_option("process", options->target,
                  "Its id, or the beginning of its application's name; else what is in front")
      ->type_name("PID|PREFIX");
  command.add_flag("--json", options->json, "Print a JSON object");
}

void addBounds(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<BoundsOptions>();
  auto& command = addCommand(program, chosen, "bounds", "Print a window's frame", options, bounds);
  command
      .add_option("window", options->window,
                  "The window's id, as 0x..., or a process: its main window")
      ->type_name("ID|PID|PREFIX");
  command.add_flag("--json", options->json, "Print a JSON object");
}

}  // namespace vlm::tools
