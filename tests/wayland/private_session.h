#pragma once

#include <optional>
#include <string>

#include "support/child_process.h"
#include "support/private_session_bus.h"

namespace vlm::test {

// A GNOME desktop without a screen: compositor, PipeWire and its session manager, on a bus that
// starts the portal when it is asked for. While it lives the environment names it, and no X server.
class PrivateSession {
 public:
  static constexpr const char* kToken = "11111111-2222-3333-4444-555555555555";

  static bool isInstalled();
  PrivateSession();

  // Consent of earlier: the token lets its holder share the monitor without a dialog.
  void grant() const;
  std::string file(const std::string& name) const { return bus_.home().file(name); }
  // Turns the monitor on its side, which ends what shares it.
  static void rotateMonitor();
  // The process that serves a name of the bus.
  static pid_t serverOf(const std::string& name);

  ChildProcess& compositor() { return *compositor_; }
  ChildProcess& pipeWire() { return *pipeWire_; }

 private:
  Environment environment_;
  PrivateSessionBus bus_;
  // In the order in which they end, last first.
  std::optional<ChildProcess> pipeWire_;
  std::optional<ChildProcess> sessionManager_;
  std::optional<ChildProcess> compositor_;
};

// A full-screen window of grey on it, see native_client.cpp.
class NativeClient {
 public:
  explicit NativeClient(const PrivateSession& session);
  void fill(const std::string& rectangleAndColor);
  // What it has printed so far: the input that reached it.
  std::string input() const { return contentsOf(output_); }

 private:
  const std::string lines_, output_;
  std::optional<ChildProcess> program_;
  std::ofstream fills_;
};

}  // namespace vlm::test
