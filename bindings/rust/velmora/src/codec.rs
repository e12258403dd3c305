//! The H.264 encoder and decoder. Each is used by one thread at a time: calls need `&mut`.

use crate::callback::{Object, Target};
use crate::frame::Frame;
use std::ffi::c_void;
use std::sync::Mutex;
use velmora_sys as sys;

type OnFrame = Mutex<Box<dyn FnMut(Frame) + Send>>;
type OnEncoded = Mutex<Box<dyn FnMut(&[u8], bool, i64) + Send>>;

unsafe extern "C" fn frame_cb(pixbuf: *mut c_void, w: i32, h: i32, pts: i64, user: *mut c_void) {
    let frame = Frame::retained(pixbuf, w, h, pts);
    Target::<OnFrame>::run(user, |on_frame| on_frame.lock().unwrap()(frame));
}

unsafe extern "C" fn encoded_cb(
    data: *const u8,
    size: i32,
    key: bool,
    pts: i64,
    user: *mut c_void,
) {
    let unit = std::slice::from_raw_parts(data, size as usize);
    Target::<OnEncoded>::run(user, |on_encoded| {
        on_encoded.lock().unwrap()(unit, key, pts)
    });
}

pub struct Encoder(Object<OnEncoded>);

impl Encoder {
    /// `on_encoded` gets each access unit, whether it is a key frame, and its time stamp.
    pub fn new(
        (width, height): (i32, i32),
        fps: i32,
        bitrate: i32,
        low_latency: bool,
        on_encoded: impl FnMut(&[u8], bool, i64) + Send + 'static,
    ) -> Option<Self> {
        let target: OnEncoded = Mutex::new(Box::new(on_encoded));
        let cb = Some(encoded_cb as sys::vlm_encoded_cb);
        // SAFETY: the callback and its user pointer belong together.
        unsafe {
            Object::start(target, sys::vlm_enc_destroy, |user| {
                sys::vlm_enc_create(width, height, fps, bitrate, low_latency, cb, user)
            })
        }
        .map(Encoder)
    }

    pub fn encode(&mut self, frame: &Frame, pts_ns: i64, keyframe: bool) -> bool {
        // SAFETY: both are borrowed through the call.
        unsafe { sys::vlm_enc_encode(self.0.handle, frame.pixbuf, pts_ns, keyframe) }
    }

    /// Rows of `stride` bytes, of which the last may end with its last pixel.
    pub fn encode_bgra(
        &mut self,
        bgra: &[u8],
        (width, height): (i32, i32),
        stride: i32,
        pts_ns: i64,
        keyframe: bool,
    ) -> bool {
        let (row, rows) = (i64::from(width) * 4, i64::from(height));
        if width < 1 || rows < 1 || i64::from(stride) < row {
            return false;
        }
        if (bgra.len() as i64) < (rows - 1) * i64::from(stride) + row {
            return false;
        }
        // SAFETY: the rows are in the slice, which is read during the call.
        unsafe {
            let (handle, data) = (self.0.handle, bgra.as_ptr());
            sys::vlm_enc_encode_bgra(handle, data, width, height, stride, pts_ns, keyframe)
        }
    }

    pub fn set_bitrate(&mut self, bitrate: i32) {
        // SAFETY: borrowed through the call.
        unsafe { sys::vlm_enc_set_bitrate(self.0.handle, bitrate) }
    }
}

pub struct Decoder(Object<OnFrame>);

type Create = unsafe extern "C" fn(Option<sys::vlm_frame_cb>, *mut c_void) -> *mut c_void;

impl Decoder {
    /// Delivers '420v' frames.
    pub fn new(on_frame: impl FnMut(Frame) + Send + 'static) -> Option<Self> {
        Self::made_by(sys::vlm_dec_create, on_frame)
    }

    /// Delivers 'BGRA' frames.
    pub fn bgra(on_frame: impl FnMut(Frame) + Send + 'static) -> Option<Self> {
        Self::made_by(sys::vlm_dec_create_bgra, on_frame)
    }

    fn made_by(create: Create, on_frame: impl FnMut(Frame) + Send + 'static) -> Option<Self> {
        let on_frame: OnFrame = Mutex::new(Box::new(on_frame));
        // SAFETY: the callback and its user pointer belong together.
        unsafe {
            Object::start(on_frame, sys::vlm_dec_destroy, |user| {
                create(Some(frame_cb), user)
            })
        }
        .map(Decoder)
    }

    pub fn decode(&mut self, unit: &[u8], pts_ns: i64) -> bool {
        let size = match i32::try_from(unit.len()) {
            Ok(size) => size,
            Err(_) => return false,
        };
        // SAFETY: the bytes are copied during the call.
        unsafe { sys::vlm_dec_decode(self.0.handle, unit.as_ptr(), size, pts_ns) }
    }

    /// Waits until every submitted frame has been delivered; never in the decoder's own callback.
    pub fn flush(&mut self) {
        // SAFETY: borrowed through the call.
        unsafe { sys::vlm_dec_flush(self.0.handle) }
    }
}
