//! Pointer and keyboard: what the host of a session does on behalf of a viewer.

use std::sync::{Arc, Mutex};
use velmora_sys as sys;

#[derive(Debug, Clone, Copy, PartialEq, Eq)]
pub enum Button {
    Left = 0,
    Right = 1,
    Centre = 2,
}

/// Modifiers, to be joined by `|`.
pub mod flags {
    pub const CAPS_LOCK: u64 = 0x10000;
    pub const SHIFT: u64 = 0x20000;
    pub const CONTROL: u64 = 0x40000;
    pub const OPTION: u64 = 0x80000;
    pub const COMMAND: u64 = 0x100000;
}

pub fn move_pointer(x: f64, y: f64) {
    // SAFETY: numbers only, here and below.
    unsafe { sys::vlm_input_mouse_move(x, y) }
}

/// Without any event.
pub fn warp_pointer(x: f64, y: f64) {
    unsafe { sys::vlm_input_warp_cursor(x, y) }
}

pub fn button(which: Button, down: bool, x: f64, y: f64) {
    unsafe { sys::vlm_input_mouse_button(which as i32, down, x, y) }
}

pub fn wheel(horizontal: f64, vertical: f64) {
    unsafe { sys::vlm_input_mouse_wheel(horizontal, vertical) }
}

/// `key_code` is a macOS virtual key code.
pub fn key(key_code: u16, down: bool, flags: u64) {
    unsafe { sys::vlm_input_key(key_code, down, flags) }
}

pub fn pointer() -> Option<(f64, f64)> {
    let (mut x, mut y) = (0.0, 0.0);
    unsafe { sys::vlm_input_cursor_pos(&mut x, &mut y) }.then_some((x, y))
}

type Watcher = Arc<dyn Fn(i32) + Send + Sync>;
static WATCHER: Mutex<Option<Watcher>> = Mutex::new(None);

unsafe extern "C" fn hotkey_cb(key: i32) {
    // Called without the lock: it may start another watcher.
    let watcher = WATCHER.lock().unwrap().clone();
    if let Some(watcher) = watcher {
        watcher(key);
    }
}

/// One watcher a process, on the main thread and while the main loop runs; it replaces another.
pub fn watch_keys(on_key: impl Fn(i32) + Send + Sync + 'static) -> bool {
    // Dropped without the lock: what a closure owns may watch keys again when it ends.
    let earlier = WATCHER.lock().unwrap().replace(Arc::new(on_key));
    drop(earlier);
    // SAFETY: a function that stays.
    unsafe { sys::vlm_hotkey_monitor_start(Some(hotkey_cb)) }
}

pub fn stop_watching_keys() {
    // SAFETY: it takes nothing.
    unsafe { sys::vlm_hotkey_monitor_stop() }
    let watcher = WATCHER.lock().unwrap().take();
    drop(watcher);
}
