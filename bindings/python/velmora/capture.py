"""Captures of windows, applications and displays."""

from __future__ import annotations

import ctypes
from collections.abc import Callable
from typing import Any

import numpy as np
import numpy.typing as npt

from ._handle import Handle, Rectangle, dispatch, rectangle, register, utf8
from ._native import AudioCallback, lib
from .frames import FrameTarget, frame_callback

Samples = npt.NDArray[np.float32]
AudioTarget = Callable[[Samples, int], None]  # frames x channels, frames a second


def copied_samples(samples: Any, count: int) -> Samples:
    """A copy: what the library lends ends with the callback, an array might not."""
    return np.ctypeslib.as_array(samples, (count,)).copy()


@AudioCallback
def _audio_callback(samples: Any, frames: int, channels: int, rate: int, user: int | None) -> None:
    block = copied_samples(samples, frames * channels).reshape(frames, channels)
    dispatch(user, "audio", block, rate)


def ready() -> bool:
    return bool(lib.vlm_screen_capture_ready())


def find_window(bundle_prefix: str | None = None, title_part: str | None = None) -> int | None:
    return lib.vlm_capture_find_window(utf8(bundle_prefix), utf8(title_part)) or None


class Capture(Handle):
    """Delivers frames, and sound where `on_audio` is given, until close(), which waits for the last
    callback and may also be called in one. Both callbacks run on one thread of the library."""

    def __init__(
        self,
        start: Callable[..., int | None],
        subject: int | bytes | None,
        on_frame: FrameTarget,
        on_audio: AudioTarget | None,
        fps: int,
        max_size: tuple[int, int],
    ) -> None:
        def target(kind: str, *values: Any) -> None:
            if kind == "frame":
                on_frame(*values)
            elif on_audio is not None:
                on_audio(*values)

        key = register(target)
        audio = _audio_callback if on_audio is not None else AudioCallback(0)
        handle = start(subject, fps, *max_size, frame_callback, audio, ctypes.c_void_p(key))
        super().__init__(handle, lib.vlm_capture_stop, (key,), ends_in_callback=True)

    @classmethod
    def window(
        cls,
        window_id: int,
        on_frame: FrameTarget,
        on_audio: AudioTarget | None = None,
        *,
        fps: int = 30,
        max_size: tuple[int, int] = (0, 0),
    ) -> Capture:
        return cls(lib.vlm_capture_start_window, window_id, on_frame, on_audio, fps, max_size)

    @classmethod
    def app(
        cls,
        bundle_prefix: str,
        on_frame: FrameTarget,
        on_audio: AudioTarget | None = None,
        *,
        fps: int = 30,
        max_size: tuple[int, int] = (0, 0),
    ) -> Capture:
        prefix = utf8(bundle_prefix)
        return cls(lib.vlm_capture_start_app, prefix, on_frame, on_audio, fps, max_size)

    @classmethod
    def display(
        cls,
        display_id: int,
        on_frame: FrameTarget,
        on_audio: AudioTarget | None = None,
        *,
        fps: int = 30,
        max_size: tuple[int, int] = (0, 0),
    ) -> Capture:
        return cls(lib.vlm_capture_start_display, display_id, on_frame, on_audio, fps, max_size)

    def bounds(self) -> Rectangle | None:
        with self._borrowed() as handle:
            return rectangle(lib.vlm_capture_bounds, handle)
