"""The view that shows frames in a window of the host."""

from __future__ import annotations

import ctypes
import enum
import sys

from ._handle import Error, Handle
from ._native import lib
from .frames import Frame


class Shown(enum.IntEnum):
    OK = 0
    BUSY = 1
    FAIL = -1
    ARG = -2


class Presenter(Handle):
    """Make it on the main thread, or while the main loop runs there."""

    def __init__(self) -> None:
        super().__init__(lib.vlm_present_create(), lib.vlm_present_destroy, ends_in_callback=True)

    def view(self) -> int:
        """On Linux the id of an X11 window, on macOS the address of an NSView. Ask again after a
        call that destroys the window around it."""
        with self._borrowed() as handle:
            view = lib.vlm_present_view(handle)
            if not view:
                raise Error("there is no view")
            if sys.platform == "darwin":
                return int(view)
            return ctypes.c_uint32.from_address(view).value

    def show(self, frame: Frame) -> Shown:
        with self._borrowed() as handle, frame._borrowed() as pixbuf:
            return Shown(lib.vlm_present_enqueue(handle, pixbuf, frame.pts_ns))

    def clear(self) -> None:
        with self._borrowed() as handle:
            lib.vlm_present_clear(handle)
