#include "support/private_desktop.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace vlm::test {
namespace {

constexpr int kStartLimitMs = 20'000;

// The server picks a free display number itself and writes it to a pipe when it is ready.
struct NumberPipe {
  NumberPipe() {
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
  }
  ~NumberPipe() {
    close(ends[0]);
    close(ends[1]);
  }

  std::string read() const {
    std::string text;
    for (char c = 0; c != '\n'; text += c) {
      pollfd wanted{ends[0], POLLIN, 0};
      if (poll(&wanted, 1, kStartLimitMs) != 1 || ::read(ends[0], &c, 1) != 1) {
        throw std::runtime_error("the X server did not start");
      }
    }
    text.pop_back();
    return text;
  }

  int ends[2] = {-1, -1};
};

ChildProcess startServer(const PrivateDesktop::Options& options, std::string& display) {
  const NumberPipe number;
  const std::string screen =
      std::to_string(options.width) + "x" + std::to_string(options.height) + "x24";
  std::vector<std::string> command{"Xvfb",      "-displayfd", std::to_string(number.ends[1]),
                                   "-screen",   "0",          screen,
                                   "-nolisten", "tcp",        "-noreset"};
  command.insert(command.end(), options.serverArguments.begin(), options.serverArguments.end());
  ChildProcess server(command, number.ends[1]);
  display = ":" + number.read();
  return server;
}

// The list of clients is the last thing that the window manager sets up; it announces itself well
// before it takes notice of new windows.
bool isManaged() {
  const auto answer = runCommand({"xprop", "-root", "_NET_CLIENT_LIST"});
  return answer.output.find("window id") != std::string::npos;
}

}  // namespace

PrivateDesktop::PrivateDesktop(const Options& options) : server_(startServer(options, display_)) {
  if (const char* before = std::getenv("DISPLAY")) displayBefore_ = before;
  setenv("DISPLAY", display_.c_str(), 1);
  if (!options.windowManager) return;
  windowManager_.emplace(std::vector<std::string>{"openbox", "--sm-disable"});
  if (!eventually(isManaged, std::chrono::milliseconds(kStartLimitMs))) {
    throw std::runtime_error("the window manager did not start");
  }
}

PrivateDesktop::~PrivateDesktop() {
  clients_.clear();
  windowManager_.reset();
  server_.end();
  if (displayBefore_) {
    setenv("DISPLAY", displayBefore_->c_str(), 1);
  } else {
    unsetenv("DISPLAY");
  }
}

std::size_t PrivateDesktop::spawn(const std::vector<std::string>& command) {
  clients_.emplace_back(command);
  return clients_.size() - 1;
}

std::uint32_t PrivateDesktop::spawnWindow(const std::vector<std::string>& command,
                                          const std::string& name) {
  spawn(command);
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
