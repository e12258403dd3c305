/*
 * Prints the windows of an application and where they are:
 *
 *   list_windows PREFIX
 *
 * PREFIX is the beginning of the application's bundle identifier. Each number printed is one that
 * vlm_capture_start_window takes.
 */
#include <VelmoraMacNative.h>
#include <stdio.h>

enum { MOST_WINDOWS = 64 };

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: list_windows PREFIX\n");
    return 2;
  }
  const int32_t pid = vlm_window_find_pid(argv[1]);
  if (pid == 0) {
    fprintf(stderr, "list_windows: no application '%s...' is running\n", argv[1]);
    return 1;
  }
  VlmWindowEntry windows[MOST_WINDOWS];
  const int32_t count = vlm_window_enumerate(pid, windows, MOST_WINDOWS);
  for (int32_t i = 0; i < count; ++i) {
    const VlmWindowEntry* window = &windows[i];
    printf("0x%08x  %d x %d at %d, %d%s  %s\n", (unsigned)window->windowId, (int)window->width,
           (int)window->height, (int)window->left, (int)window->top, window->isMain ? ", main" : "",
           (const char*)window->title);
  }
  return count > 0 ? 0 : 1;
}
