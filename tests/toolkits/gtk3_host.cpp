// Places the view as a child of a drawing area, by Xlib: the view fills the area.
#include <gdk/gdkx.h>
#include <gtk/gtk.h>

#include "toolkits/host.h"

namespace vlm::test {
namespace {

class GtkHostWindow final : public HostWindow {
 public:
  explicit GtkHostWindow(const std::string& title) : top_(gtk_window_new(GTK_WINDOW_TOPLEVEL)) {
    gtk_window_set_title(GTK_WINDOW(top_), title.c_str());
    gtk_window_set_default_size(GTK_WINDOW(top_), kHostWidth, kHostHeight);
    gtk_container_add(GTK_CONTAINER(top_), area_);
    gtk_widget_show_all(top_);
  }
  ~GtkHostWindow() override { gtk_widget_destroy(top_); }

  void embed(std::uint32_t view) override {
    GdkWindow* const window = gtk_widget_get_window(area_);
    gdk_window_ensure_native(window);
    Display* const display = GDK_WINDOW_XDISPLAY(window);
    XReparentWindow(display, view, GDK_WINDOW_XID(window), 0, 0);
    XMapWindow(display, view);
    XFlush(display);
  }
  void resize(int width, int height) override {
    gtk_window_resize(GTK_WINDOW(top_), width, height);
  }
  void show(bool visible) override { gtk_widget_set_visible(top_, visible); }
  void fullScreen(bool full) override {
    full ? gtk_window_fullscreen(GTK_WINDOW(top_)) : gtk_window_unfullscreen(GTK_WINDOW(top_));
  }
  // The area's X window goes with its realisation.
  void remake() override {
    g_object_ref(area_);
    gtk_container_remove(GTK_CONTAINER(top_), area_);
    gtk_container_add(GTK_CONTAINER(top_), area_);
    g_object_unref(area_);
    XSync(gdk_x11_get_default_xdisplay(), False);
  }

 private:
  GtkWidget* const top_;
  GtkWidget* const area_ = gtk_drawing_area_new();
};

}  // namespace
}  // namespace vlm::test

int main(int argc, char** argv) {
  using namespace vlm::test;
  gtk_init(&argc, &argv);
  serve(
      std::stoi(argv[1]),
      [](const std::string& title) { return std::make_unique<GtkHostWindow>(title); },
      gtk_main_quit);
  gtk_main();
}
