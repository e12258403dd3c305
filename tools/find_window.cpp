#include <cstdio>
#include <optional>

#include "command.h"
#include "failure.h"
#include "library.h"

namespace vlm::tools {
namespace {

struct FindWindowOptions {
  std::string application;
  std::optional<std::string> title;
};

int findWindow(const FindWindowOptions& options) {
  if (!vlm_screen_capture_ready()) throw Failure("there is no screen that can be captured");
  const char* title = options.title ? options.title->c_str() : nullptr;
  const auto window = vlm_capture_find_window(options.application.c_str(), title);
  if (window == 0) throw Failure("no such window is on the screen");
  std::printf("0x%x\n", window);
  return 0;
}

}  // namespace

void addFindWindow(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<FindWindowOptions>();
  auto& command =
      addCommand(program, chosen, "find-window",
                 "Print the id of the frontmost window that matches", options, findWindow);
  command
      .add_option("--app", options->application,
                  "Beginning of its application's name (the class in WM_CLASS)")
      ->type_name("PREFIX");
  command.add_option("--title", options->title, "Part of its title, in any case")
      ->type_name("PART");
}

}  // namespace vlm::tools
