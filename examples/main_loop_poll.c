/*
 * A host without GTK or Qt that sleeps until there is work: poll() waits for the host's own
 * descriptors and for those of GLib's default main context, which the library's main-thread work
 * needs. It follows the windows of a process: main_loop_poll PID
 */
#include <VelmoraMacNative.h>
#include <glib.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

static void on_track(int32_t event, double x, double y, double width, double height, void* user) {
  (void)user;
  printf("event %d: %g,%g %gx%g\n", event, x, y, width, height);
}

/* Sleeps until the descriptor can be read (true) or the context had work to do (false). */
static bool wait_for_input(GMainContext* context, int own) {
  GPollFD fds[64];
  gint priority, timeout;
  g_main_context_prepare(context, &priority);
  int count = g_main_context_query(context, priority, &timeout, fds, 63);
  if (count > 63) count = 63; /* the rest waits for the next turn */
  fds[count] = (GPollFD){.fd = own, .events = G_IO_IN, .revents = 0};
  g_poll(fds, (guint)count + 1, timeout);
  if (g_main_context_check(context, priority, fds, count)) g_main_context_dispatch(context);
  return fds[count].revents != 0;
}

int main(int argc, char** argv) {
  void* tracker = argc < 2 ? NULL : vlm_window_track(atoi(argv[1]), on_track, NULL);
  if (tracker == NULL) return 1;
  GMainContext* context = g_main_context_default();
  if (!g_main_context_acquire(context)) return 1;
  puts("Press Return to end.");
  while (!wait_for_input(context, STDIN_FILENO)) {
  }
  g_main_context_release(context);
  vlm_window_untrack(tracker);
  return 0;
}
