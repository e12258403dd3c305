//! Pixel buffers.

use std::ffi::c_void;
use std::slice;
use velmora_sys as sys;

/// A picture with a reference to its buffer. A capture skips frames while more than five are kept.
pub struct Frame {
    pub(crate) pixbuf: *mut c_void,
    pub width: i32,
    pub height: i32,
    pub pts_ns: i64,
}

// A buffer is counted and only read, from any thread.
unsafe impl Send for Frame {}
unsafe impl Sync for Frame {}

impl Frame {
    /// # Safety
    /// `pixbuf` is a valid pixel buffer.
    pub(crate) unsafe fn retained(
        pixbuf: *mut c_void,
        width: i32,
        height: i32,
        pts_ns: i64,
    ) -> Self {
        sys::vlm_pixbuf_retain(pixbuf);
        Frame {
            pixbuf,
            width,
            height,
            pts_ns,
        }
    }

    /// The planes in place; None for a BGRA frame.
    pub fn planes(&self) -> Option<Planes<'_>> {
        let (mut luma, mut chroma) = (std::ptr::null_mut(), std::ptr::null_mut());
        let (mut luma_stride, mut chroma_stride) = (0, 0);
        // SAFETY: the out-parameters live through the call.
        let locked = unsafe {
            sys::vlm_pixbuf_lock(
                self.pixbuf,
                &mut luma,
                &mut luma_stride,
                &mut chroma,
                &mut chroma_stride,
            )
        };
        let bytes = |stride: i32, rows: i32, width: i32| (stride * (rows - 1) + width) as usize;
        // SAFETY: the planes have that many bytes until the lock ends, which Planes borrows.
        locked.then(|| unsafe {
            let (half_width, half_height) = ((self.width + 1) / 2, (self.height + 1) / 2);
            let luma = slice::from_raw_parts(luma, bytes(luma_stride, self.height, self.width));
            let size = bytes(chroma_stride, half_height, half_width * 2);
            let chroma = slice::from_raw_parts(chroma, size);
            Planes {
                frame: self,
                luma,
                luma_stride,
                chroma,
                chroma_stride,
            }
        })
    }

    pub fn to_bgra(&self) -> Option<Vec<u8>> {
        let mut picture = vec![0; self.width as usize * self.height as usize * 4];
        let size = i32::try_from(picture.len()).ok()?;
        // SAFETY: the vector has that size.
        unsafe { sys::vlm_pixbuf_to_bgra(self.pixbuf, picture.as_mut_ptr(), size) }
            .then_some(picture)
    }
}

impl Drop for Frame {
    fn drop(&mut self) {
        // SAFETY: gives back the reference of `retained`.
        unsafe { sys::vlm_pixbuf_release(self.pixbuf) }
    }
}

/// Locked planes; they can't outlive their frame.
pub struct Planes<'a> {
    frame: &'a Frame,
    luma: &'a [u8],
    pub luma_stride: i32,
    chroma: &'a [u8],
    pub chroma_stride: i32,
}

impl Planes<'_> {
    pub fn luma(&self) -> &[u8] {
        self.luma
    }
    pub fn chroma(&self) -> &[u8] {
        self.chroma
    }
}

impl Drop for Planes<'_> {
    fn drop(&mut self) {
        // SAFETY: ends the lock of `planes`.
        unsafe { sys::vlm_pixbuf_unlock(self.frame.pixbuf) }
    }
}
