//! The functions of VelmoraMacNative.h, which is the manual.
#![allow(non_camel_case_types, non_snake_case)]
use std::ffi::c_void;
use std::os::raw::c_char;

pub type vlm_frame_cb = unsafe extern "C" fn(
    pixbuf: *mut c_void,
    width: i32,
    height: i32,
    pts_ns: i64,
    user: *mut c_void,
);
pub type vlm_audio_cb = unsafe extern "C" fn(
    samples: *const f32,
    frames: i32,
    channels: i32,
    sample_rate: i32,
    user: *mut c_void,
);
pub type vlm_encoded_cb = unsafe extern "C" fn(
    data: *const u8,
    size: i32,
    keyframe: bool,
    pts_ns: i64,
    user: *mut c_void,
);
pub type vlm_track_cb =
    unsafe extern "C" fn(event: i32, x: f64, y: f64, width: f64, height: f64, user: *mut c_void);
pub type vlm_hotkey_cb = unsafe extern "C" fn(key: i32);
pub type vlm_mic_cb = unsafe extern "C" fn(samples: *const f32, count: i32, user: *mut c_void);

#[repr(C)]
#[derive(Clone, Copy)]
pub struct VlmWindowEntry {
    pub windowId: u32,
    pub left: i32,
    pub top: i32,
    pub width: i32,
    pub height: i32,
    pub isMain: i32,
    pub title: [u8; 128],
}

pub const VLM_PRESENT_OK: i32 = 0;
pub const VLM_PRESENT_BUSY: i32 = 1;
pub const VLM_PRESENT_FAIL: i32 = -1;
pub const VLM_PRESENT_ARG: i32 = -2;

#[link(name = "VelmoraMacNative")]
extern "C" {
    pub fn vlm_abi_version() -> i32;
    pub fn vlm_screen_capture_ready() -> bool;
    pub fn vlm_capture_find_window(bundle_prefix: *const c_char, title_part: *const c_char) -> u32;
    pub fn vlm_capture_start_window(
        window_id: u32,
        fps: i32,
        max_w: i32,
        max_h: i32,
        frame_cb: Option<vlm_frame_cb>,
        audio_cb: Option<vlm_audio_cb>,
        user: *mut c_void,
    ) -> *mut c_void;
    pub fn vlm_capture_start_app(
        bundle_prefix: *const c_char,
        fps: i32,
        max_w: i32,
        max_h: i32,
        frame_cb: Option<vlm_frame_cb>,
        audio_cb: Option<vlm_audio_cb>,
        user: *mut c_void,
    ) -> *mut c_void;
    pub fn vlm_capture_start_display(
        display_id: u32,
        fps: i32,
        max_w: i32,
        max_h: i32,
        frame_cb: Option<vlm_frame_cb>,
        audio_cb: Option<vlm_audio_cb>,
        user: *mut c_void,
    ) -> *mut c_void;
    pub fn vlm_capture_bounds(
        handle: *mut c_void,
        x: *mut f64,
        y: *mut f64,
        width: *mut f64,
        height: *mut f64,
    ) -> bool;
    pub fn vlm_capture_stop(handle: *mut c_void);
    pub fn vlm_pixbuf_retain(pixbuf: *mut c_void);
    pub fn vlm_pixbuf_release(pixbuf: *mut c_void);
    pub fn vlm_pixbuf_lock(
        pixbuf: *mut c_void,
        luma_base: *mut *mut u8,
        luma_stride: *mut i32,
        chroma_base: *mut *mut u8,
        chroma_stride: *mut i32,
    ) -> bool;
    pub fn vlm_pixbuf_unlock(pixbuf: *mut c_void);
    pub fn vlm_pixbuf_to_bgra(pixbuf: *mut c_void, dst: *mut u8, capacity: i32) -> bool;
    pub fn vlm_enc_create(
        width: i32,
        height: i32,
        fps: i32,
        bitrate_bps: i32,
        low_latency: bool,
        cb: Option<vlm_encoded_cb>,
        user: *mut c_void,
    ) -> *mut c_void;
    pub fn vlm_enc_encode(
        handle: *mut c_void,
        pixbuf: *mut c_void,
        pts_ns: i64,
        force_keyframe: bool,
    ) -> bool;
    pub fn vlm_enc_encode_bgra(
        handle: *mut c_void,
        bgra: *const u8,
        width: i32,
        height: i32,
        stride: i32,
        pts_ns: i64,
        force_keyframe: bool,
    ) -> bool;
    pub fn vlm_enc_set_bitrate(handle: *mut c_void, bitrate_bps: i32);
    pub fn vlm_enc_destroy(handle: *mut c_void);
    pub fn vlm_dec_create(cb: Option<vlm_frame_cb>, user: *mut c_void) -> *mut c_void;
    pub fn vlm_dec_create_bgra(cb: Option<vlm_frame_cb>, user: *mut c_void) -> *mut c_void;
    pub fn vlm_dec_decode(handle: *mut c_void, data: *const u8, size: i32, pts_ns: i64) -> bool;
    pub fn vlm_dec_flush(handle: *mut c_void);
    pub fn vlm_dec_destroy(handle: *mut c_void);
    pub fn vlm_present_create() -> *mut c_void;
    pub fn vlm_present_view(handle: *mut c_void) -> *mut c_void;
    pub fn vlm_present_enqueue(handle: *mut c_void, pixbuf: *mut c_void, pts_ns: i64) -> i32;
    pub fn vlm_present_clear(handle: *mut c_void);
    pub fn vlm_present_destroy(handle: *mut c_void);
    pub fn vlm_window_enumerate(pid: i32, out: *mut VlmWindowEntry, capacity: i32) -> i32;
    pub fn vlm_window_find_pid(bundle_prefix: *const c_char) -> i32;
    pub fn vlm_window_get_bounds(
        window_id: u32,
        x: *mut f64,
        y: *mut f64,
        width: *mut f64,
        height: *mut f64,
    ) -> bool;
    pub fn vlm_window_focused_bounds(
        pid: i32,
        x: *mut f64,
        y: *mut f64,
        width: *mut f64,
        height: *mut f64,
    ) -> bool;
    pub fn vlm_window_track(pid: i32, cb: Option<vlm_track_cb>, user: *mut c_void) -> *mut c_void;
    pub fn vlm_window_untrack(handle: *mut c_void);
    pub fn vlm_input_mouse_move(x: f64, y: f64);
    pub fn vlm_input_warp_cursor(x: f64, y: f64);
    pub fn vlm_input_mouse_button(button: i32, down: bool, x: f64, y: f64);
    pub fn vlm_input_mouse_wheel(horizontal: f64, vertical: f64);
    pub fn vlm_input_key(key_code: u16, down: bool, flags: u64);
    pub fn vlm_input_cursor_pos(x: *mut f64, y: *mut f64) -> bool;
    pub fn vlm_frontmost_pid() -> i32;
    pub fn vlm_hotkey_monitor_start(cb: Option<vlm_hotkey_cb>) -> bool;
    pub fn vlm_hotkey_monitor_stop();
    pub fn vlm_secret_set(
        service: *const c_char,
        account: *const c_char,
        data: *const u8,
        size: i32,
    ) -> bool;
    pub fn vlm_secret_get(
        service: *const c_char,
        account: *const c_char,
        out: *mut u8,
        capacity: i32,
    ) -> i32;
    pub fn vlm_secret_delete(service: *const c_char, account: *const c_char) -> bool;
    pub fn vlm_machine_id(out: *mut c_char, capacity: i32) -> i32;
    pub fn vlm_perm_screen_recording(request: bool) -> bool;
    pub fn vlm_perm_accessibility(prompt: bool) -> bool;
    pub fn vlm_perm_open_settings(kind: *const c_char) -> bool;
    pub fn vlm_audio_devices_json(input: i32, out: *mut c_char, capacity: i32) -> i32;
    pub fn vlm_audio_in_start(
        device_uid: *const c_char,
        cb: Option<vlm_mic_cb>,
        user: *mut c_void,
    ) -> *mut c_void;
    pub fn vlm_audio_in_stop(handle: *mut c_void);
    pub fn vlm_audio_out_start(device_uid: *const c_char, channels: i32) -> *mut c_void;
    pub fn vlm_audio_out_write(handle: *mut c_void, samples: *const f32, count: i32);
    pub fn vlm_audio_out_stop(handle: *mut c_void);
    pub fn vlm_sfx_create(path: *const c_char) -> *mut c_void;
    pub fn vlm_sfx_play(handle: *mut c_void, volume: f64, loops: i32);
    pub fn vlm_sfx_play_from(handle: *mut c_void, start_seconds: f64, volume: f64);
    pub fn vlm_sfx_stop(handle: *mut c_void);
    pub fn vlm_sfx_seek(handle: *mut c_void, seconds: f64);
    pub fn vlm_sfx_position(handle: *mut c_void) -> f64;
    pub fn vlm_sfx_duration(handle: *mut c_void) -> f64;
    pub fn vlm_sfx_is_playing(handle: *mut c_void) -> bool;
    pub fn vlm_sfx_destroy(handle: *mut c_void);
}
