#include "support/private_session_bus.h"

#include <cstdlib>
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

fs::path makeFolder() {
  std::string pattern = (fs::temp_directory_path() / "vlm-bus-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no folder for the bus");
  return pattern;
}

void writeFile(const fs::path& path, const std::string& text) {
  std::ofstream(path) << text;
}

}  // namespace

PrivateSessionBus::PrivateSessionBus() : home_(makeFolder()) {
  const fs::path socket = home_ / "bus";
  std::string configuration = kBusConfiguration;
  configuration.replace(configuration.find('%'), 1, socket.string());
  writeFile(home_ / "bus.conf", configuration);
  setVariable("HOME", home_.string());
  setVariable("XDG_DATA_HOME", (home_ / "data").string());
  setVariable("XDG_RUNTIME_DIR", home_.string());
  setVariable("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + socket.string());
  bus_.emplace(std::vector<std::string>{"dbus-daemon", "--nofork", "--nopidfile",
                                        "--config-file=" + (home_ / "bus.conf").string()});
  if (!eventually([&] { return fs::exists(socket); })) throw std::runtime_error("no message bus");
}

PrivateSessionBus::~PrivateSessionBus() {
  keyring_.reset();
  bus_.reset();
  for (const auto& [name, value] : before_) {
    if (value) {
      setenv(name.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name.c_str());
    }
  }
  std::error_code ignored;
  fs::remove_all(home_, ignored);
}

void PrivateSessionBus::setVariable(const std::string& name, const std::string& value) {
  const char* old = std::getenv(name.c_str());
  before_.emplace_back(name, old ? std::optional<std::string>(old) : std::nullopt);
  setenv(name.c_str(), value.c_str(), 1);
}

void PrivateSessionBus::startKeyring() {
  // The daemon takes the password that opens the keyring from its standard input.
  writeFile(home_ / "password", "x");
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
