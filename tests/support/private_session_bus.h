#pragma once

#include <optional>

#include "support/child_process.h"
#include "support/private_home.h"

namespace vlm::test {

// A message bus of the test's own, with its own home folder and, where one is wanted, a
// keyring daemon whose default keyring is open. While it lives, the environment names it. The bus
// starts services by itself only where that is wanted, so that "no keyring" really is none.
class PrivateSessionBus {
 public:
  enum class Services { none, installed };
  explicit PrivateSessionBus(Services services = Services::none);

  const PrivateHome& home() const { return home_; }

  // Starts the bus, also after its end.
  void start();
  ChildProcess& process() { return *bus_; }
  // Starts the keyring daemon and waits until it answers; throws when it does not.
  void startKeyring();
  ChildProcess& keyring() { return *keyring_; }
  // Locks the open keyring, as a screen lock does.
  void lockKeyring();

 private:
  // Services that a bus starts are nobody's children once it is gone, and end soon after it. This
  // process becomes their parent and waits for that, so that none writes into a home that is gone.
  struct Orphans {
    Orphans();
    ~Orphans();
  };

  PrivateHome home_;
  std::optional<Orphans> orphans_;
  // In the order in which they end, last first.
  std::optional<ChildProcess> bus_;
  std::optional<ChildProcess> keyring_;
};

}  // namespace vlm::test
