import CHost

/// The window lives as long as the process.
func window(around view: UInt32, title: String, width: UInt32, height: UInt32) -> Bool {
  guard let display = XOpenDisplay(nil) else { return false }
  let root = XDefaultRootWindow(display)
  let window = XCreateSimpleWindow(display, root, 0, 0, width, height, 0, 0, 0)
  XStoreName(display, window, title)
  XReparentWindow(display, CHost.Window(view), window, 0, 0)
  XMapWindow(display, CHost.Window(view))
  XMapWindow(display, window)
  XSync(display, 0)
  return true
}

func turnMainLoop() {
  while g_main_context_iteration(nil, 0) != 0 {}
}
