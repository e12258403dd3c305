"""The H.264 encoder and decoder."""

from __future__ import annotations

import ctypes
import threading
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from typing import Any

import numpy as np

from ._handle import Error, Handle, dispatch, register
from ._native import EncodedCallback, lib
from .frames import Bytes, Frame, FrameTarget, frame_callback

EncodedTarget = Callable[[bytes, bool, int], None]  # access unit, key frame, time stamp

_byte_pointer = ctypes.POINTER(ctypes.c_uint8)


@EncodedCallback
def _encoded_callback(data: Any, size: int, keyframe: bool, pts_ns: int, user: int | None) -> None:
    dispatch(user, ctypes.string_at(data, size), keyframe, pts_ns)


class _Codec(Handle):
    """One thread at a time, and never the own callback, which such a call may wait for."""

    def __init__(self, handle: int | None, end: Callable[[int], None], key: int) -> None:
        self._one_thread = threading.Lock()
        super().__init__(handle, end, (key,))

    @contextmanager
    def _alone(self) -> Iterator[int]:
        self._refuse_own_callback()
        with self._one_thread, self._borrowed() as handle:
            yield handle


class Encoder(_Codec):
    def __init__(
        self,
        width: int,
        height: int,
        on_encoded: EncodedTarget,
        *,
        fps: int = 30,
        bitrate: int = 8_000_000,
        low_latency: bool = True,
    ) -> None:
        key = register(on_encoded)
        user = ctypes.c_void_p(key)
        handle = lib.vlm_enc_create(
            width, height, fps, bitrate, low_latency, _encoded_callback, user
        )
        super().__init__(handle, lib.vlm_enc_destroy, key)

    def encode(self, frame: Frame, pts_ns: int | None = None, *, keyframe: bool = False) -> None:
        time = frame.pts_ns if pts_ns is None else pts_ns
        with self._alone() as handle, frame._borrowed() as pixbuf:
            if not lib.vlm_enc_encode(handle, pixbuf, time, keyframe):
                raise Error("the frame was refused")

    def encode_bgra(self, picture: Bytes, pts_ns: int, *, keyframe: bool = False) -> None:
        """An array of height x width x 4 bytes; rows may be padded, pixels may not."""
        if picture.dtype != np.uint8 or picture.ndim != 3 or picture.shape[2] != 4:
            raise ValueError("the picture must be height x width x 4 bytes")
        height, width, _ = picture.shape
        if picture.strides[1:] != (4, 1) or picture.strides[0] < width * 4:
            picture = np.ascontiguousarray(picture)
        data = picture.ctypes.data_as(_byte_pointer)
        stride = picture.strides[0]
        with self._alone() as handle:
            if not lib.vlm_enc_encode_bgra(handle, data, width, height, stride, pts_ns, keyframe):
                raise Error("the picture was refused")

    def set_bitrate(self, bitrate: int) -> None:
        with self._alone() as handle:
            lib.vlm_enc_set_bitrate(handle, bitrate)


class Decoder(_Codec):
    def __init__(self, on_frame: FrameTarget, *, bgra: bool = False) -> None:
        key = register(lambda kind, frame: on_frame(frame))
        create = lib.vlm_dec_create_bgra if bgra else lib.vlm_dec_create
        super().__init__(
            create(frame_callback, ctypes.c_void_p(key)), lib.vlm_dec_destroy, key
        )

    def decode(self, unit: bytes, pts_ns: int) -> None:
        data = ctypes.cast(ctypes.c_char_p(unit), _byte_pointer)
        with self._alone() as handle:
            if not lib.vlm_dec_decode(handle, data, len(unit), pts_ns):
                raise Error("the access unit was refused")

    def flush(self) -> None:
        with self._alone() as handle:
            lib.vlm_dec_flush(handle)
