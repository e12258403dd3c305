"""Windows of other processes."""

from __future__ import annotations

import ctypes
import enum
from collections.abc import Callable
from typing import NamedTuple

from ._handle import Error, Handle, Rectangle, dispatch, rectangle, register, utf8
from ._native import TrackCallback, WindowEntry, lib


class Window(NamedTuple):
    window_id: int
    left: int
    top: int
    width: int
    height: int
    is_main: bool
    title: str


class Change(enum.IntEnum):
    MOVED = 0
    RESIZED = 1
    FOCUSED = 2
    DEACTIVATED = 3
    CLOSED = 4


def _window(entry: WindowEntry) -> Window:
    title = bytes(entry.title).split(b"\0", 1)[0].decode(errors="replace")
    sizes = (entry.left, entry.top, entry.width, entry.height)
    return Window(entry.windowId, *sizes, bool(entry.isMain), title)


def windows_of(pid: int, at_most: int = 256) -> list[Window]:
    entries = (WindowEntry * at_most)()
    count = lib.vlm_window_enumerate(pid, entries, at_most)
    if count < 0:
        raise ValueError("pid and at_most must be above 0")
    return [_window(entry) for entry in entries[:count]]


def find_pid(bundle_prefix: str) -> int | None:
    return lib.vlm_window_find_pid(utf8(bundle_prefix)) or None


def bounds(window_id: int) -> Rectangle | None:
    return rectangle(lib.vlm_window_get_bounds, window_id)


def focused_bounds(pid: int) -> Rectangle | None:
    return rectangle(lib.vlm_window_focused_bounds, pid)


def frontmost_pid() -> int | None:
    return lib.vlm_frontmost_pid() or None


@TrackCallback
def _track_callback(
    event: int, x: float, y: float, width: float, height: float, user: int | None
) -> None:
    dispatch(user, Change(event), (x, y, width, height))


class Tracker(Handle):
    """Follows the windows of a process while the main loop runs, and calls back on its thread."""

    def __init__(self, pid: int, on_change: Callable[[Change, Rectangle], None]) -> None:
        key = register(on_change)
        handle = lib.vlm_window_track(pid, _track_callback, ctypes.c_void_p(key))
        super().__init__(handle, lib.vlm_window_untrack, (key,), ends_in_callback=True)
