"""The functions of the library, with their exact types. Hosts use the classes beside this module."""

from __future__ import annotations

import ctypes
import os
import sys
from ctypes import POINTER, c_bool, c_char, c_char_p, c_double, c_float, c_int32, c_int64
from ctypes import c_uint8, c_uint16, c_uint32, c_uint64, c_void_p
from typing import Any

ABI_VERSION = 3


class WindowEntry(ctypes.Structure):
    _fields_ = [
        ("windowId", c_uint32),
        ("left", c_int32),
        ("top", c_int32),
        ("width", c_int32),
        ("height", c_int32),
        ("isMain", c_int32),
        ("title", c_uint8 * 128),
    ]


FrameCallback = ctypes.CFUNCTYPE(None, c_void_p, c_int32, c_int32, c_int64, c_void_p)
AudioCallback = ctypes.CFUNCTYPE(None, POINTER(c_float), c_int32, c_int32, c_int32, c_void_p)
EncodedCallback = ctypes.CFUNCTYPE(None, POINTER(c_uint8), c_int32, c_bool, c_int64, c_void_p)
TrackCallback = ctypes.CFUNCTYPE(
    None, c_int32, c_double, c_double, c_double, c_double, c_void_p
)
HotkeyCallback = ctypes.CFUNCTYPE(None, c_int32)
MicrophoneCallback = ctypes.CFUNCTYPE(None, POINTER(c_float), c_int32, c_void_p)

_bytes = POINTER(c_uint8)
_double = POINTER(c_double)
_capture = [c_int32, c_int32, c_int32, FrameCallback, AudioCallback, c_void_p]

# name: (result, parameters)
SIGNATURES: dict[str, tuple[Any, list[Any]]] = {
    "vlm_abi_version": (c_int32, []),
    "vlm_screen_capture_ready": (c_bool, []),
    "vlm_capture_find_window": (c_uint32, [c_char_p, c_char_p]),
    "vlm_capture_start_window": (c_void_p, [c_uint32, *_capture]),
    "vlm_capture_start_app": (c_void_p, [c_char_p, *_capture]),
    "vlm_capture_start_display": (c_void_p, [c_uint32, *_capture]),
    "vlm_capture_bounds": (c_bool, [c_void_p, _double, _double, _double, _double]),
    "vlm_capture_stop": (None, [c_void_p]),
    "vlm_pixbuf_retain": (None, [c_void_p]),
    "vlm_pixbuf_release": (None, [c_void_p]),
    "vlm_pixbuf_lock": (
        c_bool,
        [c_void_p, POINTER(_bytes), POINTER(c_int32), POINTER(_bytes), POINTER(c_int32)],
    ),
    "vlm_pixbuf_unlock": (None, [c_void_p]),
    "vlm_pixbuf_to_bgra": (c_bool, [c_void_p, _bytes, c_int32]),
    "vlm_enc_create": (
        c_void_p,
        [c_int32, c_int32, c_int32, c_int32, c_bool, EncodedCallback, c_void_p],
    ),
    "vlm_enc_encode": (c_bool, [c_void_p, c_void_p, c_int64, c_bool]),
    "vlm_enc_encode_bgra": (
        c_bool,
        [c_void_p, _bytes, c_int32, c_int32, c_int32, c_int64, c_bool],
    ),
    "vlm_enc_set_bitrate": (None, [c_void_p, c_int32]),
    "vlm_enc_destroy": (None, [c_void_p]),
    "vlm_dec_create": (c_void_p, [FrameCallback, c_void_p]),
    "vlm_dec_create_bgra": (c_void_p, [FrameCallback, c_void_p]),
    "vlm_dec_decode": (c_bool, [c_void_p, _bytes, c_int32, c_int64]),
    "vlm_dec_flush": (None, [c_void_p]),
    "vlm_dec_destroy": (None, [c_void_p]),
    "vlm_present_create": (c_void_p, []),
    "vlm_present_view": (c_void_p, [c_void_p]),
    "vlm_present_enqueue": (c_int32, [c_void_p, c_void_p, c_int64]),
    "vlm_present_clear": (None, [c_void_p]),
    "vlm_present_destroy": (None, [c_void_p]),
    "vlm_window_enumerate": (c_int32, [c_int32, POINTER(WindowEntry), c_int32]),
    "vlm_window_find_pid": (c_int32, [c_char_p]),
    "vlm_window_get_bounds": (c_bool, [c_uint32, _double, _double, _double, _double]),
    "vlm_window_focused_bounds": (c_bool, [c_int32, _double, _double, _double, _double]),
    "vlm_window_track": (c_void_p, [c_int32, TrackCallback, c_void_p]),
    "vlm_window_untrack": (None, [c_void_p]),
    "vlm_input_mouse_move": (None, [c_double, c_double]),
    "vlm_input_warp_cursor": (None, [c_double, c_double]),
    "vlm_input_mouse_button": (None, [c_int32, c_bool, c_double, c_double]),
    "vlm_input_mouse_wheel": (None, [c_double, c_double]),
    "vlm_input_key": (None, [c_uint16, c_bool, c_uint64]),
    "vlm_input_cursor_pos": (c_bool, [_double, _double]),
    "vlm_frontmost_pid": (c_int32, []),
    "vlm_hotkey_monitor_start": (c_bool, [HotkeyCallback]),
    "vlm_hotkey_monitor_stop": (None, []),
    "vlm_secret_set": (c_bool, [c_char_p, c_char_p, _bytes, c_int32]),
    "vlm_secret_get": (c_int32, [c_char_p, c_char_p, _bytes, c_int32]),
    "vlm_secret_delete": (c_bool, [c_char_p, c_char_p]),
    "vlm_machine_id": (c_int32, [POINTER(c_char), c_int32]),
    "vlm_perm_screen_recording": (c_bool, [c_bool]),
    "vlm_perm_accessibility": (c_bool, [c_bool]),
    "vlm_perm_open_settings": (c_bool, [c_char_p]),
    "vlm_audio_devices_json": (c_int32, [c_int32, POINTER(c_char), c_int32]),
    "vlm_audio_in_start": (c_void_p, [c_char_p, MicrophoneCallback, c_void_p]),
    "vlm_audio_in_stop": (None, [c_void_p]),
    "vlm_audio_out_start": (c_void_p, [c_char_p, c_int32]),
    "vlm_audio_out_write": (None, [c_void_p, POINTER(c_float), c_int32]),
    "vlm_audio_out_stop": (None, [c_void_p]),
    "vlm_sfx_create": (c_void_p, [c_char_p]),
    "vlm_sfx_play": (None, [c_void_p, c_double, c_int32]),
    "vlm_sfx_play_from": (None, [c_void_p, c_double, c_double]),
    "vlm_sfx_stop": (None, [c_void_p]),
    "vlm_sfx_seek": (None, [c_void_p, c_double]),
    "vlm_sfx_position": (c_double, [c_void_p]),
    "vlm_sfx_duration": (c_double, [c_void_p]),
    "vlm_sfx_is_playing": (c_bool, [c_void_p]),
    "vlm_sfx_destroy": (None, [c_void_p]),
}


def _load() -> ctypes.CDLL:
    on_a_mac = sys.platform == "darwin"
    usual = "VelmoraMacNative.dylib" if on_a_mac else "libVelmoraMacNative.so.3"
    library = ctypes.CDLL(os.environ.get("VLM_LIBRARY", usual))
    for name, (result, parameters) in SIGNATURES.items():
        function = getattr(library, name)
        function.restype = result
        function.argtypes = parameters
    if library.vlm_abi_version() != ABI_VERSION:
        raise ImportError("the library has another interface than this package")
    return library


# A call gives up Python's lock while it runs, so that a call that waits for callbacks lets them run.
lib = _load()
