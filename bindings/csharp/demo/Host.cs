// What the view needs of a host on Linux: a window, and turns of the main loop.
using System;
using System.Runtime.InteropServices;

static class Host {
  const string X = "libX11.so.6";

  [DllImport(X)] static extern IntPtr XOpenDisplay(IntPtr name);
  [DllImport(X)] static extern UIntPtr XDefaultRootWindow(IntPtr display);
  [DllImport(X)] static extern UIntPtr XCreateSimpleWindow(
      IntPtr display, UIntPtr parent, int x, int y, uint width, uint height, uint borderWidth,
      UIntPtr border, UIntPtr background);
  [DllImport(X)] static extern int XStoreName(IntPtr display, UIntPtr window, string name);
  [DllImport(X)] static extern int XReparentWindow(
      IntPtr display, UIntPtr window, UIntPtr parent, int x, int y);
  [DllImport(X)] static extern int XMapWindow(IntPtr display, UIntPtr window);
  [DllImport(X)] static extern int XSync(IntPtr display, int discard);
  [DllImport("libglib-2.0.so.0")] static extern int g_main_context_iteration(IntPtr context, int block);

  // The window lives as long as the process.
  public static void WindowAround(uint view, string title, uint width, uint height) {
    IntPtr display = XOpenDisplay(IntPtr.Zero);
    if (display == IntPtr.Zero) throw new Exception("the X server can't be reached");
    var inner = (UIntPtr)view;
    UIntPtr window = XCreateSimpleWindow(display, XDefaultRootWindow(display), 0, 0, width, height,
                                         0, UIntPtr.Zero, UIntPtr.Zero);
    XStoreName(display, window, title);
    XReparentWindow(display, inner, window, 0, 0);
    XMapWindow(display, inner);
    XMapWindow(display, window);
    XSync(display, 0);
  }

  public static void TurnMainLoop() {
    while (g_main_context_iteration(IntPtr.Zero, 0) != 0) {}
  }
}
