//! Captures of windows, applications and displays.

use crate::callback::{Object, Target};
use crate::frame::Frame;
use crate::windows::{rectangle, Rectangle};
use crate::{above_zero, with_text};
use std::ffi::c_void;
use std::sync::Mutex;
use velmora_sys as sys;

/// Whether the screen can be captured now.
pub fn can_capture() -> bool {
    // SAFETY: it takes nothing.
    unsafe { sys::vlm_screen_capture_ready() }
}

/// The first window, front to back, of such an application and with that in its title.
pub fn find_window(bundle_prefix: Option<&str>, title_part: Option<&str>) -> Option<u32> {
    // SAFETY: the texts live through the call.
    let find = |prefix| {
        with_text(title_part, |title| unsafe {
            sys::vlm_capture_find_window(prefix, title)
        })
    };
    with_text(bundle_prefix, find)?.and_then(above_zero)
}

#[derive(Debug, Clone, Copy)]
pub enum Source<'a> {
    Window(u32),
    /// By the beginning of its bundle identifier.
    App(&'a str),
    /// 0 is the first one.
    Display(u32),
}

/// Upper limits of a capture.
#[derive(Debug, Clone, Copy)]
pub struct Limits {
    pub fps: i32,
    /// Pixels; 0 in either is no limit.
    pub size: (i32, i32),
}

impl Default for Limits {
    fn default() -> Self {
        Limits {
            fps: 30,
            size: (0, 0),
        }
    }
}

type OnFrame = Box<dyn FnMut(Frame) + Send>;
type OnSound = Box<dyn FnMut(&[f32], i32, i32) + Send>;
type Handlers = (Mutex<OnFrame>, Option<Mutex<OnSound>>);

unsafe extern "C" fn frame_cb(pixbuf: *mut c_void, w: i32, h: i32, pts: i64, user: *mut c_void) {
    let frame = Frame::retained(pixbuf, w, h, pts);
    Target::<Handlers>::run(user, |(on_frame, _)| on_frame.lock().unwrap()(frame));
}

unsafe extern "C" fn audio_cb(
    samples: *const f32,
    frames: i32,
    channels: i32,
    rate: i32,
    user: *mut c_void,
) {
    let block = std::slice::from_raw_parts(samples, frames as usize * channels as usize);
    Target::<Handlers>::run(user, |(_, on_sound)| {
        if let Some(on_sound) = on_sound {
            on_sound.lock().unwrap()(block, channels, rate);
        }
    });
}

/// Delivers frames, and sound where it is asked for, until it is dropped. Both closures run on one
/// thread of the library.
pub struct Capture(Object<Handlers>);

impl Capture {
    pub fn new(
        source: Source,
        limits: Limits,
        on_frame: impl FnMut(Frame) + Send + 'static,
    ) -> Option<Self> {
        Self::start(source, limits, (Mutex::new(Box::new(on_frame)), None))
    }

    /// `on_sound` gets interleaved samples, the number of channels and frames a second.
    pub fn with_sound(
        source: Source,
        limits: Limits,
        on_frame: impl FnMut(Frame) + Send + 'static,
        on_sound: impl FnMut(&[f32], i32, i32) + Send + 'static,
    ) -> Option<Self> {
        let on_sound: OnSound = Box::new(on_sound);
        let handlers = (
            Mutex::new(Box::new(on_frame) as OnFrame),
            Some(Mutex::new(on_sound)),
        );
        Self::start(source, limits, handlers)
    }

    fn start(source: Source, limits: Limits, handlers: Handlers) -> Option<Self> {
        let audio = handlers.1.as_ref().map(|_| audio_cb as sys::vlm_audio_cb);
        let frame = Some(frame_cb as sys::vlm_frame_cb);
        let (fps, (w, h)) = (limits.fps, limits.size);
        // SAFETY: the callbacks and their user pointer belong together; the text lives long enough.
        let start = |user| unsafe {
            match source {
                Source::Window(id) => {
                    sys::vlm_capture_start_window(id, fps, w, h, frame, audio, user)
                }
                Source::Display(id) => {
                    sys::vlm_capture_start_display(id, fps, w, h, frame, audio, user)
                }
                Source::App(prefix) => with_text(Some(prefix), |prefix| {
                    sys::vlm_capture_start_app(prefix, fps, w, h, frame, audio, user)
                })
                .unwrap_or(std::ptr::null_mut()),
            }
        };
        // SAFETY: stop waits for the last callback.
        unsafe { Object::start(handlers, sys::vlm_capture_stop, start) }.map(Capture)
    }

    /// What was captured when the capture started, in points.
    pub fn bounds(&self) -> Option<Rectangle> {
        // SAFETY: borrowed through the call.
        rectangle(|x, y, w, h| unsafe { sys::vlm_capture_bounds(self.0.handle, x, y, w, h) })
    }
}
