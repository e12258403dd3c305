#include "wayland/private_session.h"

#include <sys/stat.h>

#include <stdexcept>

namespace vlm::test {
namespace {

constexpr auto kStartLimit = std::chrono::seconds(20);

// Desktops talk a lot about services that a machine for tests does not have.
ChildProcess startQuietly(const std::string& command) {
  return ChildProcess({"sh", "-c", "exec " + command + " >/dev/null 2>&1"});
}

// Set before the bus starts: what it starts by itself inherits them.
void setUp(Environment& environment) {
  environment.set("DISPLAY", "");
  environment.set("WAYLAND_DISPLAY", "wayland-test");
  environment.set("XDG_CURRENT_DESKTOP", "GNOME");
  environment.set("GSETTINGS_BACKEND", "memory");
}

Environment& prepared(Environment& environment) {
  setUp(environment);
  return environment;
}

void require(bool came, const char* what) {
  if (!came) throw std::runtime_error(std::string("no ") + what);
}

}  // namespace

bool PrivateSession::isInstalled() {
  return runCommand({"sh", "-c", "command -v mutter pipewire wireplumber"}).status == 0 &&
         std::filesystem::exists("/usr/share/xdg-desktop-portal/portals/gnome.portal");
}

PrivateSession::PrivateSession()
    : bus_((prepared(environment_), PrivateSessionBus::Services::installed)) {
  const auto appears = [this](const char* name) {
    return eventually([&] { return std::filesystem::exists(file(name)); }, kStartLimit);
  };
  pipeWire_ = startQuietly("pipewire");
  require(appears("pipewire-0"), "PipeWire");
  sessionManager_ = startQuietly("wireplumber");
  compositor_ = startQuietly(
      "mutter --wayland --headless --no-x11 --virtual-monitor 1280x720 "
      "--wayland-display wayland-test");
  require(appears("wayland-test"), "compositor");
}

void PrivateSession::grant() const {
  const std::string store = "org.freedesktop.impl.portal.PermissionStore";
  outputOf({"gdbus", "call", "--session", "-d", store, "-o",
            "/org/freedesktop/impl/portal/PermissionStore", "-m", store + ".Set", "screencast",
            "true", kToken, "{'': ['yes']}",
            "<('GNOME', uint32 1, <(int64 1, int64 2, [(uint32 0, uint32 1, "
            "<'MetaVendor:MetaVirtualMonitor:0x00'>)])>)>"});
}

void PrivateSession::rotateMonitor() {
  const std::string name = "org.gnome.Mutter.DisplayConfig";
  const std::vector<std::string> call{
      "gdbus", "call", "--session", "-d", name, "-o", "/org/gnome/Mutter/DisplayConfig", "-m"};
  auto ask = call, apply = call;
  ask.push_back(name + ".GetCurrentState");
  const auto state = outputOf(ask);  // (uint32 2, ...
  const auto serial = state.substr(8, state.find(',') - 8);
  apply.insert(apply.end(),
               {name + ".ApplyMonitorsConfig", serial, "1",
                "[(0, 0, 1.0, uint32 1, true, [('Meta-0', '1280x720@60.000', @a{sv} {})])]", "{}"});
  outputOf(apply);
}

pid_t PrivateSession::serverOf(const std::string& name) {
  const auto answer =
      outputOf({"gdbus", "call", "--session", "-d", "org.freedesktop.DBus", "-o", "/", "-m",
                "org.freedesktop.DBus.GetConnectionUnixProcessID", name});  // (uint32 17,)
  return std::stoi(answer.substr(answer.find(' ')));
}

NativeClient::NativeClient(const PrivateSession& session)
    : lines_(session.file("fills")), output_(session.file("input")) {
  if (mkfifo(lines_.c_str(), 0600) != 0) throw std::runtime_error("no pipe");
  program_ = ChildProcess(
      {"sh", "-c", "exec \"$0\" <\"$1\" >\"$2\" 2>/dev/null", VLM_NATIVE_CLIENT, lines_, output_});
  fills_.open(lines_);
}

void NativeClient::fill(const std::string& rectangleAndColor) {
  fills_ << rectangleAndColor << std::endl;
}

}  // namespace vlm::test
