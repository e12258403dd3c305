//! Captures, the codec and the list of windows of VelmoraMacNative, with ownership and
//! threads checked by the compiler. Other functions are called through `velmora_sys`.
//!
//! A callback can't borrow what ends before its object, and planes can't outlive their frame:
//!
//! ```compile_fail,E0597
//! let mut count = 0;
//! let seen = &mut count;
//! let decoder = velmora::Decoder::new(|_| *seen += 1);
//! # std::mem::forget(decoder);
//! ```
//! ```compile_fail,E0505
//! fn late(frame: velmora::Frame) {
//!     let planes = frame.planes();
//!     drop(frame);
//!     drop(planes);
//! }
//! ```
//! An encoder moves between threads, but two can't use it at once:
//!
//! ```compile_fail,E0596
//! fn twice(encoder: &velmora::Encoder, frame: &velmora::Frame) {
//!     encoder.encode(frame, 0, false);
//! }
//! ```

mod callback;
mod frame;

use callback::{Object, Target};
pub use frame::{Frame, Planes};
use std::ffi::{c_void, CString};
use velmora_sys as sys;

type OnFrame = Box<dyn FnMut(Frame) + Send>;
type OnEncoded = Box<dyn FnMut(&[u8], bool, i64) + Send>;

unsafe extern "C" fn frame_cb(pixbuf: *mut c_void, w: i32, h: i32, pts: i64, user: *mut c_void) {
    let frame = Frame::retained(pixbuf, w, h, pts);
    Target::<OnFrame>::run(user, |on_frame| on_frame(frame));
}

unsafe extern "C" fn encoded_cb(
    data: *const u8,
    size: i32,
    key: bool,
    pts: i64,
    user: *mut c_void,
) {
    let unit = std::slice::from_raw_parts(data, size as usize);
    Target::<OnEncoded>::run(user, |on_encoded| on_encoded(unit, key, pts));
}

/// The first window of an application, front to back.
pub fn find_window(bundle_prefix: &str) -> Option<u32> {
    let prefix = CString::new(bundle_prefix).ok()?;
    // SAFETY: the text lives through the call.
    match unsafe { sys::vlm_capture_find_window(prefix.as_ptr(), std::ptr::null()) } {
        0 => None,
        id => Some(id),
    }
}

pub fn find_pid(bundle_prefix: &str) -> Option<i32> {
    let prefix = CString::new(bundle_prefix).ok()?;
    // SAFETY: the text lives through the call.
    match unsafe { sys::vlm_window_find_pid(prefix.as_ptr()) } {
        0 => None,
        pid => Some(pid),
    }
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

/// A capture of a window, which ends when it is dropped.
pub struct Capture(#[allow(dead_code)] Object<OnFrame>);

impl Capture {
    pub fn window(id: u32, fps: i32, on_frame: impl FnMut(Frame) + Send + 'static) -> Option<Self> {
        let on_frame: OnFrame = Box::new(on_frame);
        // SAFETY: the callback and its user pointer belong together.
        unsafe {
            Object::start(on_frame, sys::vlm_capture_stop, |user| {
                sys::vlm_capture_start_window(id, fps, 0, 0, Some(frame_cb), None, user)
            })
        }
        .map(Capture)
    }
}

/// Used by one thread at a time: its calls need `&mut`.
pub struct Encoder(Object<OnEncoded>);

impl Encoder {
    pub fn new(
        (width, height): (i32, i32),
        fps: i32,
        bitrate: i32,
        on_encoded: impl FnMut(&[u8], bool, i64) + Send + 'static,
    ) -> Option<Self> {
        let target: OnEncoded = Box::new(on_encoded);
        // SAFETY: the callback and its user pointer belong together.
        unsafe {
            Object::start(target, sys::vlm_enc_destroy, |user| {
                sys::vlm_enc_create(width, height, fps, bitrate, true, Some(encoded_cb), user)
            })
        }
        .map(Encoder)
    }

    pub fn encode(&mut self, frame: &Frame, pts_ns: i64, keyframe: bool) -> bool {
        // SAFETY: both are borrowed through the call.
        unsafe { sys::vlm_enc_encode(self.0.handle, frame.pixbuf, pts_ns, keyframe) }
    }

    pub fn set_bitrate(&mut self, bitrate: i32) {
        // SAFETY: borrowed through the call.
        unsafe { sys::vlm_enc_set_bitrate(self.0.handle, bitrate) }
    }
}

/// Used by one thread at a time: its calls need `&mut`.
pub struct Decoder(Object<OnFrame>);

impl Decoder {
    pub fn new(on_frame: impl FnMut(Frame) + Send + 'static) -> Option<Self> {
        let on_frame: OnFrame = Box::new(on_frame);
        // SAFETY: the callback and its user pointer belong together.
        unsafe {
            Object::start(on_frame, sys::vlm_dec_destroy, |user| {
                sys::vlm_dec_create(Some(frame_cb), user)
            })
        }
        .map(Decoder)
    }

    pub fn decode(&mut self, unit: &[u8], pts_ns: i64) -> bool {
        let Ok(size) = i32::try_from(unit.len()) else {
            return false;
        };
        // SAFETY: the bytes are copied during the call.
        unsafe { sys::vlm_dec_decode(self.0.handle, unit.as_ptr(), size, pts_ns) }
    }
}
