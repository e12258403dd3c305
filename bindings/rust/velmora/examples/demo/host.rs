//! What the view needs of a host on Linux: a window, and turns of the main loop.

use std::ffi::{c_void, CString};
use std::os::raw::{c_char, c_int, c_uint, c_ulong};
use std::ptr::null_mut;

#[link(name = "X11")]
extern "C" {
    fn XOpenDisplay(name: *const c_char) -> *mut c_void;
    fn XDefaultRootWindow(display: *mut c_void) -> c_ulong;
    fn XCreateSimpleWindow(
        display: *mut c_void,
        parent: c_ulong,
        x: c_int,
        y: c_int,
        width: c_uint,
        height: c_uint,
        border_width: c_uint,
        border: c_ulong,
        background: c_ulong,
    ) -> c_ulong;
    fn XStoreName(display: *mut c_void, window: c_ulong, name: *const c_char) -> c_int;
    fn XReparentWindow(
        display: *mut c_void,
        window: c_ulong,
        parent: c_ulong,
        x: c_int,
        y: c_int,
    ) -> c_int;
    fn XMapWindow(display: *mut c_void, window: c_ulong) -> c_int;
    fn XSync(display: *mut c_void, discard: c_int) -> c_int;
}

#[link(name = "glib-2.0")]
extern "C" {
    fn g_main_context_iteration(context: *mut c_void, may_block: c_int) -> c_int;
}

/// The window lives as long as the process.
pub fn window_around(view: u32, title: &str, width: u32, height: u32) -> Option<()> {
    let title = CString::new(title).ok()?;
    let view = view.into();
    // SAFETY: the display stays open, and the ids are of its server.
    unsafe {
        let display = XOpenDisplay(null_mut());
        if display.is_null() {
            return None;
        }
        let root = XDefaultRootWindow(display);
        let window = XCreateSimpleWindow(display, root, 0, 0, width, height, 0, 0, 0);
        XStoreName(display, window, title.as_ptr());
        XReparentWindow(display, view, window, 0, 0);
        XMapWindow(display, view);
        XMapWindow(display, window);
        XSync(display, 0);
    }
    Some(())
}

pub fn turn_main_loop() {
    // SAFETY: NULL is the default context.
    while unsafe { g_main_context_iteration(null_mut(), 0) } != 0 {}
}
