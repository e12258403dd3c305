/*
 * A host with SDL's event loop that sleeps in GLib and is woken by its X connection. It shows the
 * window of an application in its own: main_loop_sdl PREFIX
 */
#include <SDL.h>
#include <SDL_syswm.h>
#include <VelmoraMacNative.h>
#include <glib-unix.h>

static gboolean woken(gint fd, GIOCondition condition, gpointer user) {
  (void)fd, (void)condition, (void)user;
  return G_SOURCE_CONTINUE;
}

static void on_frame(void* pixbuf, int32_t width, int32_t height, int64_t ptsNs, void* presenter) {
  (void)width, (void)height;
  vlm_present_enqueue(presenter, pixbuf, ptsNs);
}

/* The view fills the window from now on. */
static Display* place(void* presenter, SDL_Window* window) {
  SDL_SysWMinfo info;
  SDL_VERSION(&info.version);
  if (!SDL_GetWindowWMInfo(window, &info) || info.subsystem != SDL_SYSWM_X11) return NULL;
  Display* display = info.info.x11.display;
  const uint32_t view = *(uint32_t*)vlm_present_view(presenter);
  XReparentWindow(display, view, info.info.x11.window, 0, 0);
  XMapWindow(display, view);
  XFlush(display);
  return display;
}

int main(int argc, char** argv) {
  const uint32_t shared = argc == 2 ? vlm_capture_find_window(argv[1], NULL) : 0;
  if (shared == 0 || SDL_Init(SDL_INIT_VIDEO) != 0) return 1;
  SDL_Window* window = SDL_CreateWindow("Shown by SDL", 0, 0, 640, 480, SDL_WINDOW_RESIZABLE);
  void* presenter = window == NULL ? NULL : vlm_present_create();
  Display* display = presenter == NULL ? NULL : place(presenter, window);
  if (display == NULL) return 1;
  void* capture = vlm_capture_start_window(shared, 30, 0, 0, on_frame, NULL, presenter);

  g_unix_fd_add(ConnectionNumber(display), G_IO_IN, woken, NULL);
  for (bool running = capture != NULL; running;) {
    SDL_Event event;
    while (SDL_PollEvent(&event)) running = running && event.type != SDL_QUIT;
    if (running && XPending(display) == 0) g_main_context_iteration(NULL, TRUE);
  }
  vlm_capture_stop(capture);
  vlm_present_destroy(presenter);
  SDL_Quit();
  return 0;
}
