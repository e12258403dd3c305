"""Pixel buffers: captured and decoded frames as NumPy arrays, without a copy."""

from __future__ import annotations

import ctypes
from collections.abc import Callable

import numpy as np
import numpy.typing as npt

from ._handle import Error, Handle, dispatch
from ._native import FrameCallback, lib

Bytes = npt.NDArray[np.uint8]


class _Lock:
    """A locked buffer with a reference. Every array on its planes refers to it, so the memory lives
    as long as the last of them."""

    def __init__(self, pixbuf: int) -> None:
        self._pixbuf: int | None = None
        luma = ctypes.POINTER(ctypes.c_uint8)()
        chroma = ctypes.POINTER(ctypes.c_uint8)()
        strides = [ctypes.c_int32(), ctypes.c_int32()]
        if not lib.vlm_pixbuf_lock(
            pixbuf,
            ctypes.byref(luma),
            ctypes.byref(strides[0]),
            ctypes.byref(chroma),
            ctypes.byref(strides[1]),
        ):
            raise Error("the buffer has no two planes, or the system refuses")
        lib.vlm_pixbuf_retain(pixbuf)
        self._pixbuf = pixbuf
        self.luma = ctypes.cast(luma, ctypes.c_void_p).value, strides[0].value
        self.chroma = ctypes.cast(chroma, ctypes.c_void_p).value, strides[1].value

    def __del__(self) -> None:
        if self._pixbuf is not None:
            lib.vlm_pixbuf_unlock(self._pixbuf)
            lib.vlm_pixbuf_release(self._pixbuf)


class _Plane:
    """What NumPy asks for: it keeps this object as the array's base."""

    def __init__(
        self, lock: _Lock, plane: tuple[int | None, int], shape: tuple[int, ...]
    ) -> None:
        address, stride = plane
        self._lock = lock
        self.__array_interface__ = {
            "version": 3,
            "typestr": "|u1",
            "shape": shape,
            "strides": (stride, *((2, 1) if len(shape) == 3 else (1,))),
            "data": (address, True),
        }


class Frame(Handle):
    """A picture with a reference to its pixel buffer, which it gives back in close() or when
    nothing refers to it any more. So a callback may keep the frame it gets; a capture skips new
    frames while more than five of its frames are kept."""

    def __init__(self, pixbuf: int, width: int, height: int, pts_ns: int) -> None:
        lib.vlm_pixbuf_retain(pixbuf)
        self.width, self.height, self.pts_ns = width, height, pts_ns
        super().__init__(pixbuf, lib.vlm_pixbuf_release, ends_in_callback=True)

    def planes(self) -> tuple[Bytes, Bytes]:
        """Luma (height x width) and chroma (half of each x 2: Cb, Cr) in place, read-only. The
        buffer stays locked until both arrays and their slices are gone."""
        with self._borrowed() as pixbuf:
            lock = _Lock(pixbuf)
        luma = _Plane(lock, lock.luma, (self.height, self.width))
        half = ((self.height + 1) // 2, (self.width + 1) // 2, 2)
        return np.asarray(luma), np.asarray(_Plane(lock, lock.chroma, half))

    def to_bgra(self) -> Bytes:
        """The picture as a new array, height x width x 4 (see vlm_pixbuf_to_bgra on colours)."""
        picture = np.empty((self.height, self.width, 4), np.uint8)
        target = picture.ctypes.data_as(ctypes.POINTER(ctypes.c_uint8))
        with self._borrowed() as pixbuf:
            if not lib.vlm_pixbuf_to_bgra(pixbuf, target, picture.nbytes):
                raise Error("the picture can't be converted")
        return picture


FrameTarget = Callable[[Frame], None]


@FrameCallback
def frame_callback(pixbuf: int, width: int, height: int, pts_ns: int, user: int | None) -> None:
    dispatch(user, "frame", Frame(pixbuf, width, height, pts_ns))
