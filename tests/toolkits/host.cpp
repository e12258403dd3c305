#include "toolkits/host.h"

#include <glib-unix.h>
#include <unistd.h>

#include <map>
#include <sstream>
#include <utility>

#include "VelmoraMacNative.h"
#include "e2e/quadrants.h"

namespace vlm::test {
namespace {

int keysPressed = 0;

struct Presenter {
  void* const handle = vlm_present_create();
  int lastResult = VLM_PRESENT_ARG;
  ~Presenter() { vlm_present_destroy(handle); }
  std::uint32_t view() const {
    return *static_cast<const std::uint32_t*>(vlm_present_view(handle));
  }
};

class Host {
 public:
  Host(int socket, OpenWindow open, std::function<void()> quit)
      : socket_(socket), open_(std::move(open)), quit_(std::move(quit)) {
    vlm_hotkey_monitor_start([](int32_t) { ++keysPressed; });
    g_unix_fd_add(
        socket_, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP),
        [](gint, GIOCondition, gpointer self) { return static_cast<Host*>(self)->answer(); }, this);
    g_timeout_add(
        20,
        [](gpointer self) -> gboolean {
          for (auto& [name, presenter] : static_cast<Host*>(self)->presenters_) {
            const auto& frame = static_cast<Host*>(self)->frame_;
            presenter.lastResult = vlm_present_enqueue(presenter.handle, frame.get(), 0);
          }
          return G_SOURCE_CONTINUE;
        },
        this);
  }

 private:
  gboolean answer() {
    char command[256];
    const auto length = read(socket_, command, sizeof command);
    if (length <= 0) {
      quit_();
      return G_SOURCE_REMOVE;
    }
    const std::string result =
        execute(std::string(command, static_cast<std::size_t>(length))) + "\n";
    return write(socket_, result.data(), result.size()) > 0;
  }

  std::string execute(const std::string& command) {
    std::istringstream words(command);
    std::string verb, name, target;
    int width = 0, height = 0;
    words >> verb >> name;
    if (verb == "open") windows_[name] = open_(name);
    if (verb == "close") windows_.erase(name);
    if (verb == "embed" && words >> target) {
      const auto view = presenters_[name].view();
      windows_.at(target)->embed(view);
      return "view " + std::to_string(view);
    }
    if (verb == "resize" && words >> width >> height) windows_.at(name)->resize(width, height);
    if (verb == "show" || verb == "hide") windows_.at(name)->show(verb == "show");
    if (verb == "full" || verb == "restore") windows_.at(name)->fullScreen(verb == "full");
    if (verb == "remake") windows_.at(name)->remake();
    if (verb == "destroy") presenters_.erase(name);
    if (verb == "watch") watch(std::stoi(name));
    if (verb == "report") return report(presenters_.at(name));
    return "done";
  }

  void watch(int pid) {
    vlm_window_track(
        pid,
        [](int32_t, double, double, double, double, void* count) { ++*static_cast<int*>(count); },
        &windowEvents_);
  }

  std::string report(const Presenter& presenter) const {
    return std::to_string(presenter.lastResult) + " " + std::to_string(windowEvents_) + " " +
           std::to_string(keysPressed);
  }

  const int socket_;
  const OpenWindow open_;
  const std::function<void()> quit_;
  const platform::Ref<platform::CVPixelBuffer> frame_ =
      makeQuadrants(160, 120, platform::kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange);
  std::map<std::string, std::unique_ptr<HostWindow>> windows_;
  std::map<std::string, Presenter> presenters_;
  int windowEvents_ = 0;
};

}  // namespace

void serve(int socket, OpenWindow open, std::function<void()> quit) {
  static Host host(socket, std::move(open), std::move(quit));
}

}  // namespace vlm::test
