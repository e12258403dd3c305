"""Secrets, the machine's identifier and permissions."""

from __future__ import annotations

import ctypes

from ._handle import Error, utf8
from ._native import lib

_byte_pointer = ctypes.POINTER(ctypes.c_uint8)


def set_secret(service: str, account: str, secret: bytes) -> None:
    data = ctypes.cast(ctypes.c_char_p(secret), _byte_pointer)
    if not lib.vlm_secret_set(utf8(service), utf8(account), data, len(secret)):
        raise Error("the secret was not stored")


def secret(service: str, account: str) -> bytes | None:
    address = utf8(service), utf8(account)
    capacity = 0
    while True:
        buffer = (ctypes.c_uint8 * capacity)()
        length = lib.vlm_secret_get(*address, buffer, capacity)
        if length >= 0:
            found = bytes(buffer[:length])
            ctypes.memset(buffer, 0, capacity)
            return found or None
        capacity = -length


def delete_secret(service: str, account: str) -> bool:
    return bool(lib.vlm_secret_delete(utf8(service), utf8(account)))


def machine_id() -> str | None:
    text = ctypes.create_string_buffer(64)
    return text.value.decode() if lib.vlm_machine_id(text, len(text)) else None


def may_record_screen(request: bool = False) -> bool:
    return bool(lib.vlm_perm_screen_recording(request))


def may_drive_input(prompt: bool = False) -> bool:
    return bool(lib.vlm_perm_accessibility(prompt))


def open_settings(kind: str | None = None) -> bool:
    return bool(lib.vlm_perm_open_settings(utf8(kind)))
