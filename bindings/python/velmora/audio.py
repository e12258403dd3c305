"""Microphones, playback and sound files."""

from __future__ import annotations

import ctypes
import json
import os
import threading
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from typing import Any, NamedTuple

import numpy as np

from ._handle import Error, Handle, dispatch, register, utf8
from ._native import MicrophoneCallback, lib
from .capture import Samples, copied_samples


class Device(NamedTuple):
    name: str
    uid: str


def devices(*, inputs: bool) -> list[Device]:
    capacity = 4096
    while True:
        text = ctypes.create_string_buffer(capacity)
        length = lib.vlm_audio_devices_json(int(inputs), text, capacity)
        if length == 0:
            raise Error("the list can't be made")
        if length > 0:
            return [Device(one["name"], one["uid"]) for one in json.loads(text.value)]
        capacity = -length


@MicrophoneCallback
def _microphone_callback(samples: Any, count: int, user: int | None) -> None:
    dispatch(user, copied_samples(samples, count))


class Microphone(Handle):
    def __init__(self, on_samples: Callable[[Samples], None], uid: str | None = None) -> None:
        key = register(on_samples)
        handle = lib.vlm_audio_in_start(utf8(uid), _microphone_callback, ctypes.c_void_p(key))
        super().__init__(handle, lib.vlm_audio_in_stop, (key,))


class Playback(Handle):
    def __init__(self, channels: int = 2, uid: str | None = None) -> None:
        super().__init__(lib.vlm_audio_out_start(utf8(uid), channels), lib.vlm_audio_out_stop)

    def write(self, samples: Samples) -> None:
        """Interleaved: frames x channels, or flat."""
        block = np.ascontiguousarray(samples, np.float32)
        data = block.ctypes.data_as(ctypes.POINTER(ctypes.c_float))
        with self._borrowed() as handle:
            lib.vlm_audio_out_write(handle, data, block.size)


class Sound(Handle):
    """A sound file. Threads that share it take turns."""

    def __init__(self, path: str | os.PathLike[str]) -> None:
        self._one_thread = threading.Lock()
        super().__init__(lib.vlm_sfx_create(os.fsencode(path)), lib.vlm_sfx_destroy)

    def play(self, volume: float = 1, loops: int = 0) -> None:
        with self._alone() as handle:
            lib.vlm_sfx_play(handle, volume, loops)

    def play_from(self, seconds: float, volume: float = 1) -> None:
        with self._alone() as handle:
            lib.vlm_sfx_play_from(handle, seconds, volume)

    def stop(self) -> None:
        with self._alone() as handle:
            lib.vlm_sfx_stop(handle)

    def seek(self, seconds: float) -> None:
        with self._alone() as handle:
            lib.vlm_sfx_seek(handle, seconds)

    @property
    def position(self) -> float:
        with self._alone() as handle:
            return float(lib.vlm_sfx_position(handle))

    @property
    def duration(self) -> float:
        with self._alone() as handle:
            return float(lib.vlm_sfx_duration(handle))

    @property
    def is_playing(self) -> bool:
        with self._alone() as handle:
            return bool(lib.vlm_sfx_is_playing(handle))

    @contextmanager
    def _alone(self) -> Iterator[int]:
        with self._one_thread, self._borrowed() as handle:
            yield handle
