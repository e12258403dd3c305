// SDL has a loop of its own, which looks after GLib's between two waits. The view fills the window.
#include <SDL.h>
#include <SDL_syswm.h>
#include <glib.h>

#include "toolkits/host.h"

namespace vlm::test {
namespace {

class SdlHostWindow final : public HostWindow {
 public:
  explicit SdlHostWindow(const std::string& title)
      : window_(
            SDL_CreateWindow(title.c_str(), 0, 0, kHostWidth, kHostHeight, SDL_WINDOW_RESIZABLE)) {}
  ~SdlHostWindow() override { SDL_DestroyWindow(window_); }

  void embed(std::uint32_t view) override {
    const auto [display, window] = native();
    XReparentWindow(display, view, window, 0, 0);
    XMapWindow(display, view);
    XFlush(display);
  }
  void resize(int width, int height) override { SDL_SetWindowSize(window_, width, height); }
  void show(bool visible) override { visible ? SDL_ShowWindow(window_) : SDL_HideWindow(window_); }
  void fullScreen(bool full) override {
    SDL_SetWindowFullscreen(window_, full ? SDL_WINDOW_FULLSCREEN_DESKTOP : 0);
  }
  // A renderer by OpenGL needs an X window of another visual.
  void remake() override {
    SDL_CreateRenderer(window_, -1, 0);
    XSync(native().first, False);
  }

 private:
  std::pair<Display*, Window> native() const {
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    SDL_GetWindowWMInfo(window_, &info);
    return {info.info.x11.display, info.info.x11.window};
  }

  SDL_Window* const window_;
};

}  // namespace
}  // namespace vlm::test

int main(int, char** argv) {
  using namespace vlm::test;
  SDL_Init(SDL_INIT_VIDEO);
  bool running = true;
  serve(
      std::stoi(argv[1]),
      [](const std::string& title) { return std::make_unique<SdlHostWindow>(title); },
      [&] { running = false; });
  while (running) {
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
    }
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
    SDL_WaitEventTimeout(nullptr, 10);
  }
}
