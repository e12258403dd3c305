"""Pointer and keyboard: what the host of a session does on behalf of a viewer."""

from __future__ import annotations

import ctypes
import enum
from collections.abc import Callable

from ._native import HotkeyCallback, lib


class Button(enum.IntEnum):
    LEFT = 0
    RIGHT = 1
    CENTRE = 2


def move(x: float, y: float) -> None:
    lib.vlm_input_mouse_move(x, y)


def warp(x: float, y: float) -> None:
    lib.vlm_input_warp_cursor(x, y)


def button(which: Button, down: bool, x: float, y: float) -> None:
    lib.vlm_input_mouse_button(which, down, x, y)


def wheel(horizontal: float, vertical: float) -> None:
    lib.vlm_input_mouse_wheel(horizontal, vertical)


def key(key_code: int, down: bool, flags: int = 0) -> None:
    lib.vlm_input_key(key_code, down, flags)


def cursor() -> tuple[float, float] | None:
    x, y = ctypes.c_double(), ctypes.c_double()
    found = lib.vlm_input_cursor_pos(ctypes.byref(x), ctypes.byref(y))
    return (x.value, y.value) if found else None


_watcher: Callable[[int], None] | None = None


@HotkeyCallback
def _hotkey_callback(key: int) -> None:
    watcher = _watcher
    if watcher is not None:
        watcher(key)


def watch_keys(on_key: Callable[[int], None]) -> None:
    """One watcher a process; it runs on the main thread while the main loop runs."""
    global _watcher
    _watcher = on_key
    lib.vlm_hotkey_monitor_start(_hotkey_callback)


def stop_watching_keys() -> None:
    global _watcher
    lib.vlm_hotkey_monitor_stop()
    _watcher = None
