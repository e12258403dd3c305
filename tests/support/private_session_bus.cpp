#include "support/private_session_bus.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace vlm::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kBusConfiguration = R"(<busconfig>
  <type>session</type>
  <listen>unix:path=%</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

void writeFile(const fs::path& path, const std::string& text) {
  std::ofstream(path) << text;
}

}  // namespace

PrivateSessionBus::PrivateSessionBus() {
  const fs::path socket = home_.path() / "bus";
  std::string configuration = kBusConfiguration;
  configuration.replace(configuration.find('%'), 1, socket.string());
  writeFile(home_.path() / "bus.conf", configuration);
  home_.setVariable("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + socket.string());
  bus_.emplace(std::vector<std::string>{"dbus-daemon", "--nofork", "--nopidfile",
                                        "--config-file=" + (home_.path() / "bus.conf").string()});
  if (!eventually([&] { return fs::exists(socket); })) throw std::runtime_error("no message bus");
}

PrivateSessionBus::~PrivateSessionBus() {
  keyring_.reset();
  bus_.reset();
}

void PrivateSessionBus::startKeyring() {
  // The daemon takes the password that opens the keyring from its standard input.
  writeFile(home_.path() / "password", "x");
  keyring_.emplace(std::vector<std::string>{
      "sh", "-c",
      "exec gnome-keyring-daemon --foreground --unlock --components=secrets <\"$HOME/password\" "
      ">/dev/null 2>&1"});
  const bool answers = eventually([] {
    return runCommand({"gdbus", "call", "--session", "--dest", "org.freedesktop.secrets",
                       "--object-path", "/org/freedesktop/secrets/aliases/default", "--method",
                       "org.freedesktop.DBus.Peer.Ping"})
               .status == 0;
  });
  if (!answers) throw std::runtime_error("no keyring");
}

void PrivateSessionBus::lockKeyring() {
  outputOf({"gdbus", "call", "--session", "--dest", "org.freedesktop.secrets", "--object-path",
            "/org/freedesktop/secrets", "--method", "org.freedesktop.Secret.Service.Lock",
            "['/org/freedesktop/secrets/collection/login']"});
}

}  // namespace vlm::test
