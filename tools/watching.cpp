// The commands that print what happens until they are interrupted.
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "command.h"
#include "desktop_target.h"
#include "failure.h"
#include "library.h"
#include "main_loop.h"

namespace vlm::tools {
namespace {

struct WatchOptions {
  std::string target;
  bool json = false;
};

// Each line is out at once: a pipe may be waiting for it.
void printLine(const std::string& line) {
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

void printEvent(int32_t event, double x, double y, double width, double height, void* options) {
  constexpr std::array kNames{"moved", "resized", "focused", "deactivated", "closed"};
  const char* name = kNames.at(static_cast<std::size_t>(event));
  if (static_cast<const WatchOptions*>(options)->json) {
    printLine(
        nlohmann::json{{"event", name}, {"x", x}, {"y", y}, {"width", width}, {"height", height}}
            .dump());
    return;
  }
  char frame[128];
  std::snprintf(frame, sizeof frame, "%-11s %gx%g%+g%+g", name, width, height, x, y);
  printLine(frame);
}

int track(const WatchOptions& options) {
  MainLoop loop;
  auto shared = options;
  const Handle<vlm_window_untrack> tracker(
      vlm_window_track(processNamed(options.target), printEvent, &shared));
  if (!tracker) throw Failure("this process can't be watched");
  loop.run();
  return 0;
}

bool keysAsJson = false;  // the callback of key presses has no user pointer

void printKey(int32_t key) {
  printLine(keysAsJson ? nlohmann::json{{"key", key}}.dump() : std::to_string(key));
}

int hotkeys(const WatchOptions& options) {
  requireDesktop();
  MainLoop loop;
  keysAsJson = options.json;
  vlm_hotkey_monitor_start(printKey);
  loop.run();
  vlm_hotkey_monitor_stop();
  return 0;
}

}  // namespace

void addTrack(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<WatchOptions>();
  auto& command = addCommand(program, chosen, "track",
                             "Print what happens to a process's windows, with the frame of the "
                             "focused one, until interrupted",
                             options, track);
  command
      .add_option("process", options->target,
                  "Its id, or the beginning of its application's name; else what is in front")
      ->type_name("PID|PREFIX");
  command.add_flag("--json", options->json, "Print a JSON object a line");
}

void addHotkeys(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<WatchOptions>();
  auto& command = addCommand(program, chosen, "hotkeys",
                             "Print the Windows virtual-key code of every key press until "
                             "interrupted",
                             options, hotkeys);
  command.add_flag("--json", options->json, "Print a JSON object a line");
}

}  // namespace vlm::tools
