#include "torture/services.h"

namespace vlm::test {

Services::Services() {
  bus_.startKeyring();
  outputOf({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=duration=0.2", effect()});
  startClient();
}

ChildProcess& Services::process(Service service) {
  switch (service) {
    case Service::display:
      return desktop_.server();
    case Service::windowManager:
      return desktop_.windowManager();
    case Service::sound:
      return sound_.process();
    case Service::bus:
      return bus_.process();
    case Service::keyring:
      return bus_.keyring();
    case Service::client:
      break;
  }
  return desktop_.client(0);
}

Services::Faults::Faults(Services& services, const std::vector<Fault>& faults)
    : thread_([&services, faults] {
        auto due = std::chrono::steady_clock::now();
        for (const auto& fault : faults) {
          std::this_thread::sleep_until(due += fault.after);
          services.process(fault.service).signal(fault.signal);
        }
      }) {}

void Services::restore(const std::vector<Fault>& faults) {
  std::set<Service> ended;
  for (const auto& fault : faults) ended.insert(fault.service);
  for (const auto service : ended) process(service).end(SIGKILL);
  if (ended.contains(Service::display)) {
    desktop_.restart();
  } else if (ended.contains(Service::windowManager)) {
    desktop_.startWindowManager();
  }
  if (ended.contains(Service::sound)) sound_.start();
  if (ended.contains(Service::bus)) bus_.start();
  if (ended.contains(Service::bus) || ended.contains(Service::keyring)) bus_.startKeyring();
  if (ended.contains(Service::display) || ended.contains(Service::client)) startClient();
}

void Services::startClient() {
  desktop_.endClients();
  window_ = desktop_.spawnWindow({"sh", "-c",
                                  "exec xterm -geometry 40x12+20+20 -T busy -class Busy -e sh -c "
                                  "'while :; do date +%N; sleep 0.05; done' 2>/dev/null"},
                                 "busy");
}

}  // namespace vlm::test
