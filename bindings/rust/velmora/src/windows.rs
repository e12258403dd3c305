//! Windows of other processes.

use crate::callback::{Object, Target};
use crate::{above_zero, with_text};
use std::ffi::c_void;
use velmora_sys as sys;

/// Points in global display space.
#[derive(Debug, Clone, Copy, PartialEq, Default)]
pub struct Rectangle {
    pub x: f64,
    pub y: f64,
    pub width: f64,
    pub height: f64,
}

pub(crate) fn rectangle(
    ask: impl FnOnce(&mut f64, &mut f64, &mut f64, &mut f64) -> bool,
) -> Option<Rectangle> {
    let mut r = Rectangle::default();
    ask(&mut r.x, &mut r.y, &mut r.width, &mut r.height).then_some(r)
}

#[derive(Debug, Clone)]
pub struct Window {
    pub id: u32,
    pub left: i32,
    pub top: i32,
    pub width: i32,
    pub height: i32,
    pub is_main: bool,
    pub title: String,
}

/// The visible windows of a process, at most 256.
pub fn windows_of(pid: i32) -> Vec<Window> {
    const MOST: usize = 256;
    let mut entries = Vec::<sys::VlmWindowEntry>::with_capacity(MOST);
    // SAFETY: the library writes as many entries as it answers.
    unsafe {
        let count = sys::vlm_window_enumerate(pid, entries.as_mut_ptr(), MOST as i32);
        entries.set_len(count.max(0) as usize);
    }
    let window = |e: &sys::VlmWindowEntry| Window {
        id: e.windowId,
        left: e.left,
        top: e.top,
        width: e.width,
        height: e.height,
        is_main: e.isMain != 0,
        title: String::from_utf8_lossy(e.title.split(|byte| *byte == 0).next().unwrap()).into(),
    };
    entries.iter().map(window).collect()
}

/// The process of an application.
pub fn find_pid(bundle_prefix: &str) -> Option<i32> {
    // SAFETY: the text lives through the call.
    with_text(Some(bundle_prefix), |prefix| unsafe {
        sys::vlm_window_find_pid(prefix)
    })
    .and_then(above_zero)
}

/// The process of the application in front.
pub fn frontmost_pid() -> Option<i32> {
    // SAFETY: it takes nothing.
    above_zero(unsafe { sys::vlm_frontmost_pid() })
}

pub fn bounds(window_id: u32) -> Option<Rectangle> {
    // SAFETY: the numbers live through the call.
    rectangle(|x, y, w, h| unsafe { sys::vlm_window_get_bounds(window_id, x, y, w, h) })
}

pub fn focused_bounds(pid: i32) -> Option<Rectangle> {
    // SAFETY: the numbers live through the call.
    rectangle(|x, y, w, h| unsafe { sys::vlm_window_focused_bounds(pid, x, y, w, h) })
}

#[derive(Debug, Clone, Copy, PartialEq, Eq)]
pub enum Change {
    Moved,
    Resized,
    /// Another window has the focus, or the application came to the front.
    Focused,
    Deactivated,
    Closed,
}

type OnChange = Box<dyn Fn(Change, Rectangle) + Send>;

unsafe extern "C" fn track_cb(
    event: i32,
    x: f64,
    y: f64,
    width: f64,
    height: f64,
    user: *mut c_void,
) {
    let change = match event {
        0 => Change::Moved,
        1 => Change::Resized,
        2 => Change::Focused,
        3 => Change::Deactivated,
        _ => Change::Closed,
    };
    let frame = Rectangle {
        x,
        y,
        width,
        height,
    };
    Target::<OnChange>::run(user, |on_change| on_change(change, frame));
}

/// Follows the windows of a process while the main loop runs, on its thread, until it is dropped.
pub struct Tracker(#[allow(dead_code)] Object<OnChange>);

impl Tracker {
    pub fn new(pid: i32, on_change: impl Fn(Change, Rectangle) + Send + 'static) -> Option<Self> {
        let on_change: OnChange = Box::new(on_change);
        // SAFETY: the callback and its user pointer belong together.
        unsafe {
            Object::start(on_change, sys::vlm_window_untrack, |user| {
                sys::vlm_window_track(pid, Some(track_cb), user)
            })
        }
        .map(Tracker)
    }
}
