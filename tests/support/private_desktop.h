#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/private_home.h"

namespace vlm::test {

// An X server of the test's own, with a window manager where one is wanted. While it lives,
// DISPLAY names it, for the library in this process and for every program the test starts. All of
// it is ended by process id, clients first.
class PrivateDesktop {
 public:
  struct Options {
    int width = 1920;
    int height = 1080;
    bool windowManager = true;
    std::vector<std::string> serverArguments = {};
  };

  PrivateDesktop() : PrivateDesktop(Options{}) {}
  // Returns when the server answers and the window manager manages; throws when they don't.
  explicit PrivateDesktop(const Options& options);

  const std::string& display() const { return display_; }
  ChildProcess& server() { return server_; }
  ChildProcess& windowManager() { return *windowManager_; }

  // Starts a client, which ends with the desktop, and waits until its window is on the screen.
  // `name` is the window's title or the instance or class part of its WM_CLASS, and must not be in
  // use by an earlier window.
  std::uint32_t spawnWindow(const std::vector<std::string>& command, const std::string& name);
  ChildProcess& client(std::size_t index) { return clients_[index]; }

  // Ends the server at once, as a crash would: every connection to it breaks.
  void killServer() { server_.end(SIGKILL); }
  // A new server of the same name, without clients.
  void restart();
  void startWindowManager();
  void endClients() { clients_.clear(); }

 private:
  const Options options_;
  Environment environment_;
  std::string display_;  // empty until the first server has chosen it
  // In the order in which they end, last first.
  ChildProcess server_;
  std::optional<ChildProcess> windowManager_;
  std::vector<ChildProcess> clients_;
};

}  // namespace vlm::test
