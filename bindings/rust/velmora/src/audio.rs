//! Microphones, playback and sound files.

use crate::callback::{Object, Target};
use crate::with_text;
use std::ffi::c_void;
use std::sync::Mutex;
use velmora_sys as sys;

/// An array of objects with "name" and "uid", as any JSON crate reads it.
pub fn devices_json(inputs: bool) -> Option<String> {
    let mut text = vec![0u8; 4096];
    loop {
        let (into, capacity) = (text.as_mut_ptr().cast(), text.len() as i32);
        // SAFETY: the vector has that capacity.
        match unsafe { sys::vlm_audio_devices_json(inputs.into(), into, capacity) } {
            0 => return None,
            length if length > 0 => {
                text.truncate(length as usize);
                return String::from_utf8(text).ok();
            }
            missing => text.resize(-missing as usize, 0),
        }
    }
}

type OnSamples = Mutex<Box<dyn FnMut(&[f32]) + Send>>;

unsafe extern "C" fn mic_cb(samples: *const f32, count: i32, user: *mut c_void) {
    let block = std::slice::from_raw_parts(samples, count as usize);
    Target::<OnSamples>::run(user, |on_samples| on_samples.lock().unwrap()(block));
}

/// Mono at 48000 Hz until it is dropped.
pub struct Microphone(#[allow(dead_code)] Object<OnSamples>);

impl Microphone {
    /// None or an unknown uid is the default input.
    pub fn new(uid: Option<&str>, on_samples: impl FnMut(&[f32]) + Send + 'static) -> Option<Self> {
        let target: OnSamples = Mutex::new(Box::new(on_samples));
        with_text(uid, |uid| {
            // SAFETY: the callback and its user pointer belong together.
            unsafe {
                Object::start(target, sys::vlm_audio_in_stop, |user| {
                    sys::vlm_audio_in_start(uid, Some(mic_cb), user)
                })
            }
        })?
        .map(Microphone)
    }
}

/// An object without callbacks, which any thread may use.
struct Owned {
    handle: *mut c_void,
    end: unsafe extern "C" fn(*mut c_void),
}

unsafe impl Send for Owned {}
unsafe impl Sync for Owned {}

impl Owned {
    fn new(handle: *mut c_void, end: unsafe extern "C" fn(*mut c_void)) -> Option<Self> {
        (!handle.is_null()).then_some(Owned { handle, end })
    }
}

impl Drop for Owned {
    fn drop(&mut self) {
        // SAFETY: the handle is alive and ends here.
        unsafe { (self.end)(self.handle) }
    }
}

/// Plays interleaved samples at 48000 Hz; dropped, it ends at once.
pub struct Playback(Owned);

impl Playback {
    /// 2 or more channels are stereo.
    pub fn new(uid: Option<&str>, channels: i32) -> Option<Self> {
        // SAFETY: the text lives through the call.
        let start = |uid| unsafe { sys::vlm_audio_out_start(uid, channels) };
        Owned::new(with_text(uid, start)?, sys::vlm_audio_out_stop).map(Playback)
    }

    /// What half a second can't hold is lost.
    pub fn write(&self, samples: &[f32]) {
        let count = samples.len().min(i32::MAX as usize) as i32;
        // SAFETY: the samples are copied during the call.
        unsafe { sys::vlm_audio_out_write(self.0.handle, samples.as_ptr(), count) }
    }
}

/// A sound file, used by one thread at a time: calls need `&mut`.
pub struct Sound(Owned);

impl Sound {
    pub fn open(path: &str) -> Option<Self> {
        // SAFETY: the text lives through the call.
        let create = |path| unsafe { sys::vlm_sfx_create(path) };
        Owned::new(with_text(Some(path), create)?, sys::vlm_sfx_destroy).map(Sound)
    }

    /// From the beginning; negative `loops` never end.
    pub fn play(&mut self, volume: f64, loops: i32) {
        // SAFETY: the handle is borrowed through the call, here and below.
        unsafe { sys::vlm_sfx_play(self.0.handle, volume, loops) }
    }

    pub fn play_from(&mut self, seconds: f64, volume: f64) {
        unsafe { sys::vlm_sfx_play_from(self.0.handle, seconds, volume) }
    }

    pub fn stop(&mut self) {
        unsafe { sys::vlm_sfx_stop(self.0.handle) }
    }

    pub fn seek(&mut self, seconds: f64) {
        unsafe { sys::vlm_sfx_seek(self.0.handle, seconds) }
    }

    pub fn position(&mut self) -> f64 {
        unsafe { sys::vlm_sfx_position(self.0.handle) }
    }

    pub fn duration(&mut self) -> f64 {
        unsafe { sys::vlm_sfx_duration(self.0.handle) }
    }

    pub fn is_playing(&mut self) -> bool {
        unsafe { sys::vlm_sfx_is_playing(self.0.handle) }
    }
}
