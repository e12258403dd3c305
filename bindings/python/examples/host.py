"""What the view needs of a host on Linux: a window, and turns of the main loop."""

from __future__ import annotations

import ctypes
from ctypes import c_int, c_uint, c_ulong, c_void_p

_x = ctypes.CDLL("libX11.so.6")
_glib = ctypes.CDLL("libglib-2.0.so.0")
_x.XOpenDisplay.restype = c_void_p
_x.XDefaultRootWindow.argtypes = [c_void_p]
_x.XDefaultRootWindow.restype = c_ulong
_x.XCreateSimpleWindow.argtypes = [
    c_void_p, c_ulong, c_int, c_int, c_uint, c_uint, c_uint, c_ulong, c_ulong,
]  # fmt: skip
_x.XCreateSimpleWindow.restype = c_ulong
_x.XStoreName.argtypes = [c_void_p, c_ulong, ctypes.c_char_p]
_x.XReparentWindow.argtypes = [c_void_p, c_ulong, c_ulong, c_int, c_int]
_x.XMapWindow.argtypes = [c_void_p, c_ulong]
_x.XSync.argtypes = [c_void_p, c_int]
_glib.g_main_context_iteration.argtypes = [c_void_p, c_int]


def window_around(view: int, title: str, width: int, height: int) -> None:
    display = _x.XOpenDisplay(None)
    if not display:
        raise SystemExit("the X server can't be reached")
    root = _x.XDefaultRootWindow(display)
    window = _x.XCreateSimpleWindow(display, root, 0, 0, width, height, 0, 0, 0)
    _x.XStoreName(display, window, title.encode())
    _x.XReparentWindow(display, view, window, 0, 0)
    _x.XMapWindow(display, view)
    _x.XMapWindow(display, window)
    _x.XSync(display, 0)


def turn_main_loop() -> None:
    while _glib.g_main_context_iteration(None, 0):
        pass
