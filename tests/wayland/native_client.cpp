// A client of a Wayland session and of nothing else: a full-screen window that is grey but for the
// rectangles that lines on its standard input name ("X Y WIDTH HEIGHT RRGGBB"). It prints the input
// that reaches it, one line each.
#include <gtk/gtk.h>

#include <cstdint>
#include <cstdio>
#include <vector>

namespace {

struct Fill {
  double x, y, width, height;
  std::uint32_t color;
};

std::vector<Fill> fills{{0, 0, 1e4, 1e4, 0x707070}};

gboolean draw(GtkWidget*, cairo_t* cairo, gpointer) {
  for (const auto& [x, y, width, height, color] : fills) {
    const auto part = [color = color](int shift) { return ((color >> shift) & 0xFF) / 255.0; };
    cairo_set_source_rgb(cairo, part(16), part(8), part(0));
    cairo_rectangle(cairo, x, y, width, height);
    cairo_fill(cairo);
  }
  return TRUE;
}

gboolean report(GtkWidget*, GdkEvent* event, gpointer) {
  double x = 0, y = 0;
  guint number = 0;
  guint16 key = 0;
  if (event->type == GDK_MOTION_NOTIFY && gdk_event_get_coords(event, &x, &y)) {
    std::printf("motion %.0f %.0f\n", x, y);
  } else if (gdk_event_get_button(event, &number)) {
    std::printf("button %u %s\n", number, event->type == GDK_BUTTON_PRESS ? "down" : "up");
  } else if (event->type == GDK_SCROLL && event->scroll.direction != GDK_SCROLL_SMOOTH) {
    std::printf("scroll %d\n", event->scroll.direction);
  } else if (gdk_event_get_scroll_deltas(event, &x, &y)) {
    std::printf("scroll %+.1f %+.1f\n", x, y);
  } else if (event->type == GDK_FOCUS_CHANGE) {
    std::printf("focus %s\n", event->focus_change.in != 0 ? "in" : "out");
  } else if (gdk_event_get_keycode(event, &key)) {
    std::printf("key %d %s %s\n", key, event->type == GDK_KEY_PRESS ? "down" : "up",
                (event->key.state & GDK_SHIFT_MASK) != 0 ? "shift" : "plain");
  }
  std::fflush(stdout);
  return FALSE;
}

gboolean readFill(GIOChannel*, GIOCondition, gpointer window) {
  Fill fill;
  if (std::scanf("%lf %lf %lf %lf %x", &fill.x, &fill.y, &fill.width, &fill.height, &fill.color) !=
      5) {
    return G_SOURCE_REMOVE;
  }
  fills.push_back(fill);
  gtk_widget_queue_draw_area(GTK_WIDGET(window), int(fill.x), int(fill.y), int(fill.width),
                             int(fill.height));
  return G_SOURCE_CONTINUE;
}

}  // namespace

int main() {
  gdk_set_allowed_backends("wayland");
  std::setvbuf(stdin, nullptr, _IONBF, 0);  // so that GLib sees the next line
  gtk_init(nullptr, nullptr);
  auto* const window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_widget_set_app_paintable(window, TRUE);
  gtk_widget_add_events(window, GDK_ALL_EVENTS_MASK);
  g_signal_connect(window, "draw", G_CALLBACK(draw), nullptr);
  g_signal_connect(window, "event", G_CALLBACK(report), nullptr);
  gtk_window_fullscreen(GTK_WINDOW(window));
  gtk_widget_show_all(window);
  g_io_add_watch(g_io_channel_unix_new(0), G_IO_IN, readFill, window);
  gtk_main();
}
