//! The view that shows frames in a window of the host.

use crate::frame::Frame;
use std::ffi::c_void;
use velmora_sys as sys;

#[derive(Debug, Clone, Copy, PartialEq, Eq)]
pub enum Shown {
    Ok,
    /// The display could not take it now: drop it, or try again when no other frame comes.
    Busy,
    Fail,
}

/// Made on the main thread, or while the main loop runs there.
pub struct Presenter(*mut c_void);

// The functions may be called from any thread.
unsafe impl Send for Presenter {}
unsafe impl Sync for Presenter {}

impl Presenter {
    pub fn new() -> Option<Self> {
        // SAFETY: it takes nothing.
        let handle = unsafe { sys::vlm_present_create() };
        (!handle.is_null()).then_some(Presenter(handle))
    }

    /// The id of an X11 window. Ask again after a call that destroys the window around it.
    #[cfg(not(target_os = "macos"))]
    pub fn view(&mut self) -> u32 {
        // SAFETY: the id lives as long as the presenter and changes only in this call.
        unsafe { *sys::vlm_present_view(self.0).cast::<u32>() }
    }

    /// The NSView, lent.
    #[cfg(target_os = "macos")]
    pub fn view(&mut self) -> *mut c_void {
        // SAFETY: borrowed through the call.
        unsafe { sys::vlm_present_view(self.0) }
    }

    pub fn show(&self, frame: &Frame) -> Shown {
        // SAFETY: both are borrowed through the call.
        match unsafe { sys::vlm_present_enqueue(self.0, frame.pixbuf, frame.pts_ns) } {
            sys::VLM_PRESENT_OK => Shown::Ok,
            sys::VLM_PRESENT_BUSY => Shown::Busy,
            _ => Shown::Fail,
        }
    }

    pub fn clear(&self) {
        // SAFETY: borrowed through the call.
        unsafe { sys::vlm_present_clear(self.0) }
    }
}

impl Drop for Presenter {
    fn drop(&mut self) {
        // SAFETY: ends the handle of `new`.
        unsafe { sys::vlm_present_destroy(self.0) }
    }
}
