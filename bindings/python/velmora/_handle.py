"""Ownership: a Python object for each object of the library, and the way back of callbacks."""

from __future__ import annotations

import atexit
import ctypes
import itertools
import threading
import weakref
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from types import TracebackType
from typing import Any, TypeVar

Self = TypeVar("Self", bound="Handle")


class Error(Exception):
    """A call of the library failed; the reason is in the system's log."""


class Closed(Error):
    """The object was used after close()."""


# Callbacks reach Python through one function for each kind, which lives as long as the process: the
# library never calls a function that Python has freed. The user pointer is a key of this table.
_targets: dict[int, Callable[..., None]] = {}
_keys = itertools.count(1)
_running = threading.local()


def register(target: Callable[..., None]) -> int:
    key = next(_keys)
    _targets[key] = target
    return key


def forget(key: int) -> None:
    _targets.pop(key, None)


def dispatch(key: int | None, *arguments: Any) -> None:
    target = _targets.get(key or 0)
    if target is None:
        return
    outer = getattr(_running, "keys", ())
    _running.keys = (*outer, key)
    try:
        target(*arguments)
    finally:
        _running.keys = outer


_open: weakref.WeakSet[Handle] = weakref.WeakSet()


class Handle:
    """Owns one object of the library: a context manager that ends it, once, in close().

    A call in one thread and close() in another don't meet: close() waits for calls that run, and
    calls that come later raise Closed.
    """

    def __init__(
        self,
        handle: int | None,
        end: Callable[[int], None],
        keys: tuple[int, ...] = (),
        ends_in_callback: bool = False,
    ) -> None:
        self._changed = threading.Condition()
        self._users = 0
        self._handle = handle
        self._end = end
        self._keys = keys
        self._ends_in_callback = ends_in_callback
        if handle is None:
            self._forget_callbacks()
            raise Error(f"{type(self).__name__} could not be made")
        if keys:
            _open.add(self)

    def close(self) -> None:
        """Ends the object. It does nothing when that is done already."""
        self._refuse_own_callback()
        self._close()

    def __enter__(self: Self) -> Self:
        return self

    def __exit__(
        self,
        kind: type[BaseException] | None,
        value: BaseException | None,
        trace: TracebackType | None,
    ) -> None:
        self.close()

    def __del__(self) -> None:
        if getattr(self, "_handle", None) is None:
            return
        if self._in_own_callback() and not self._ends_in_callback:
            # The last reference went in the object's own callback, which must not wait for itself.
            threading.Thread(target=self._close).start()
        else:
            self._close()

    @contextmanager
    def _borrowed(self) -> Iterator[int]:
        with self._changed:
            if self._handle is None:
                raise Closed(f"{type(self).__name__} is closed")
            handle = self._handle
            self._users += 1
        try:
            yield handle
        finally:
            with self._changed:
                self._users -= 1
                self._changed.notify_all()

    def _close(self) -> None:
        with self._changed:
            handle, self._handle = self._handle, None
            self._changed.wait_for(lambda: self._users == 0)
        if handle is not None:
            self._end(handle)
            self._forget_callbacks()

    def _forget_callbacks(self) -> None:
        for key in self._keys:
            forget(key)

    def _in_own_callback(self) -> bool:
        return any(key in getattr(_running, "keys", ()) for key in self._keys)

    def _refuse_own_callback(self) -> None:
        if self._in_own_callback() and not self._ends_in_callback:
            raise RuntimeError(f"{type(self).__name__}: not allowed in its own callback")


@atexit.register
def _end_everything() -> None:
    # A callback must not find Python gone.
    for handle in list(_open):
        handle._close()


def utf8(text: str | None) -> bytes | None:
    return None if text is None else text.encode()


Rectangle = tuple[float, float, float, float]


def rectangle(function: Callable[..., bool], subject: int) -> Rectangle | None:
    """x, y, width and height in points, from a function that writes them."""
    values = [ctypes.c_double() for _ in range(4)]
    if not function(subject, *(ctypes.byref(value) for value in values)):
        return None
    x, y, width, height = (value.value for value in values)
    return x, y, width, height
