//! VelmoraMacNative with ownership and threads checked by the compiler. Names are those of the C
//! header, which is the manual, without the prefix; a failure is `None` or `false`, its reason is in
//! the system's log.
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

pub mod audio;
mod callback;
mod capture;
mod codec;
mod frame;
pub mod input;
mod present;
pub mod system;
pub mod windows;

pub use audio::{Microphone, Playback, Sound};
pub use capture::{can_capture, find_window, Capture, Limits, Source};
pub use codec::{Decoder, Encoder};
pub use frame::{Frame, Planes};
pub use present::{Presenter, Shown};
use std::ffi::CString;
use std::os::raw::c_char;
use velmora_sys as sys;
pub use windows::{Change, Rectangle, Tracker, Window};

/// The version of the loaded library's interface.
pub fn abi_version() -> i32 {
    // SAFETY: it takes nothing.
    unsafe { sys::vlm_abi_version() }
}

/// Text for the time of a call; None becomes NULL. A text with a NUL in it names nothing: `None`.
fn with_text<T>(text: Option<&str>, call: impl FnOnce(*const c_char) -> T) -> Option<T> {
    match text.map(CString::new) {
        None => Some(call(std::ptr::null())),
        Some(Ok(text)) => Some(call(text.as_ptr())),
        Some(Err(_)) => None,
    }
}

fn above_zero<T: Default + PartialOrd>(value: T) -> Option<T> {
    (value > T::default()).then_some(value)
}
