#include "support/private_desktop.h"

#include <cstdlib>
#include <map>
#include <stdexcept>

namespace vlm::test {
namespace {

constexpr auto kStartLimit = std::chrono::seconds(20);

ChildProcess startServer(const PrivateDesktop::Options& options, std::string& display) {
  // The server picks a free display number itself, unless it has one, and writes it to a file when
  // it is ready.
  const ScratchFolder folder;
  const auto number = folder.file("display");
  const std::string screen =
      std::to_string(options.width) + "x" + std::to_string(options.height) + "x24";
  std::vector<std::string> command{"sh",      "-c",        "exec Xvfb -displayfd 3 \"$@\" 3>\"$0\"",
                                   number,    "-screen",   "0",
                                   screen,    "-nolisten", "tcp",
                                   "-noreset"};
  if (!display.empty()) command.push_back(display);
  command.insert(command.end(), options.serverArguments.begin(), options.serverArguments.end());
  ChildProcess server(command);
  const auto isReady = [&] { return (display = ":" + contentsOf(number)).ends_with('\n'); };
  if (!eventually(isReady, kStartLimit)) throw std::runtime_error("the X server did not start");
  display.pop_back();
  return server;
}

// The list of clients is the last thing that the window manager sets up; it announces itself well
// before it takes notice of new windows.
bool isManaged() {
  const auto answer = runCommand({"xprop", "-root", "_NET_CLIENT_LIST"});
  return answer.output.find("window id") != std::string::npos;
}

// The one that the environment names, for runs on another than the usual.
std::vector<std::string> windowManagerCommand() {
  static const std::map<std::string, std::vector<std::string>> known{
      {"openbox", {"openbox", "--sm-disable"}},
      {"metacity", {"metacity", "--sm-disable", "--compositor=none"}}};
  const char* name = std::getenv("VLM_TEST_WINDOW_MANAGER");
  return known.at(name != nullptr ? name : "openbox");
}

}  // namespace

PrivateDesktop::PrivateDesktop(const Options& options)
    : options_(options), server_(startServer(options, display_)) {
  environment_.set("DISPLAY", display_);
  environment_.set("WAYLAND_DISPLAY", "");
  if (options.windowManager) startWindowManager();
}

void PrivateDesktop::restart() {
  endClients();
  windowManager_.reset();
  server_.end(SIGKILL);
  server_ = startServer(options_, display_);
  if (options_.windowManager) startWindowManager();
}

void PrivateDesktop::startWindowManager() {
  windowManager_.emplace(windowManagerCommand());
  if (!eventually(isManaged, kStartLimit)) {
    throw std::runtime_error("the window manager did not start");
  }
}

std::uint32_t PrivateDesktop::spawnWindow(const std::vector<std::string>& command,
                                          const std::string& name) {
  clients_.emplace_back(command);
  std::uint32_t window = 0;
  const auto isShown = [&] {
    for (const char* by : {"--name", "--class", "--classname"}) {
      const auto found = runCommand({"xdotool", "search", "--onlyvisible", by, "^" + name + "$"});
      if (found.status != 0 || found.output.empty()) continue;
      window = static_cast<std::uint32_t>(std::stoul(found.output));
      return true;
    }
    return false;
  };
  if (!eventually(isShown)) throw std::runtime_error("no window of " + command.front());
  return window;
}

}  // namespace vlm::test
