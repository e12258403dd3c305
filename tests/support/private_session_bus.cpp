#include "support/private_session_bus.h"

#include <sys/prctl.h>
#include <sys/wait.h>

#include <cerrno>
#include <stdexcept>

namespace vlm::test {
namespace {

constexpr const char* kBusConfiguration = R"(<busconfig>
  <type>session</type>
  <listen>unix:path=%</listen>
  <!--services-->
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

}  // namespace

PrivateSessionBus::Orphans::Orphans() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
}

PrivateSessionBus::Orphans::~Orphans() {
  eventually(
      [] {
        while (waitpid(-1, nullptr, WNOHANG) > 0) {
        }
        return errno == ECHILD;
      },
      std::chrono::seconds(3));
}

PrivateSessionBus::PrivateSessionBus(Services services) {
  const std::string socket = home_.file("bus");
  std::string configuration = kBusConfiguration;
  configuration.replace(configuration.find('%'), 1, socket);
  constexpr std::string_view kServices = "<!--services-->";
  if (services == Services::installed) {
    orphans_.emplace();
    configuration.replace(configuration.find(kServices), kServices.size(),
                          "<standard_session_servicedirs/>");
  }
  writeFile(home_.file("bus.conf"), configuration);
  home_.environment.set("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + socket);
  start();
}

void PrivateSessionBus::start() {
  const std::string socket = home_.file("bus");
  std::filesystem::remove(socket);
  // It logs every service that it starts, and what those log.
  bus_.emplace(std::vector<std::string>{
      "sh", "-c", "exec dbus-daemon --nofork --nopidfile --config-file=\"$0\" 2>/dev/null",
      home_.file("bus.conf")});
  if (!eventually([&] { return std::filesystem::exists(socket); })) {
    throw std::runtime_error("no message bus");
  }
}

void PrivateSessionBus::startKeyring() {
  // The daemon takes the password that opens the keyring from its standard input.
  writeFile(home_.file("password"), std::string("x"));
  keyring_.emplace(std::vector<std::string>{
      "sh", "-c",
      "exec gnome-keyring-daemon --foreground --unlock --components=secrets <\"$0\" "
      ">/dev/null 2>&1",
      home_.file("password")});
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
