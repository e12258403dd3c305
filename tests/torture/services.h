#pragma once

#include <chrono>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "support/private_desktop.h"
#include "support/private_session_bus.h"
#include "support/private_sound_server.h"

namespace vlm::test {

enum class Service { display, windowManager, sound, bus, keyring, client };
constexpr const char* kServiceNames[] = {"display", "window manager", "sound",
                                         "bus",     "keyring",        "client"};

struct Fault {
  Service service;
  int signal;
  std::chrono::milliseconds after;
};

// Everything of a desktop that the library talks to. What has ended is started again in the same
// place.
class Services {
 public:
  Services();

  // Brings the faults about while it lives; the end waits for the last of them.
  class Faults {
   public:
    Faults(Services& services, const std::vector<Fault>& faults);

   private:
    std::jthread thread_;
  };
  // Starts again what the faults ended.
  void restore(const std::vector<Fault>& faults);

  // The client's window and process.
  std::uint32_t window() const { return window_; }
  pid_t client() { return desktop_.client(0).pid(); }
  // A short sound.
  std::string effect() const { return sound_.file("effect.wav"); }

 private:
  ChildProcess& process(Service service);
  void startClient();

  PrivateSessionBus bus_;
  PrivateSoundServer sound_;
  PrivateDesktop desktop_{{.width = 640, .height = 480}};
  std::uint32_t window_ = 0;
};

}  // namespace vlm::test
