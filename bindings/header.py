"""Reads VelmoraMacNative.h, so that each binding can be compared with it."""

from __future__ import annotations

import re
from dataclasses import dataclass
from pathlib import Path

HEADER = Path(__file__).resolve().parent.parent / "include" / "VelmoraMacNative.h"


@dataclass(frozen=True)
class Header:
    """Types are C types in one spelling, such as "const char*"; functions are (result, *parameters)."""

    functions: dict[str, tuple[str, ...]]
    callbacks: dict[str, tuple[str, ...]]
    window_entry: list[tuple[str, str]]
    constants: dict[str, int]


def _type(declaration: str) -> str:
    """The type in "const char* titlePart". This header writes a pointer's star at its type."""
    words = declaration.split()
    return " ".join(words[:-1]) if len(words) > 1 else words[0]


def _parameters(text: str) -> tuple[str, ...]:
    return () if text.strip() == "void" else tuple(_type(part) for part in text.split(","))


def read_header(path: Path = HEADER) -> Header:
    text = re.sub(r"/\*.*?\*/", " ", path.read_text(), flags=re.DOTALL)
    functions = {
        name: (" ".join(result.split()), *_parameters(parameters))
        for result, name, parameters in re.findall(
            r"VLM_API\s+([\w\s*]+?)\s*\b(vlm_\w+)\(([^)]*)\);", text
        )
    }
    callbacks = {
        name: ("void", *_parameters(parameters))
        for name, parameters in re.findall(r"typedef void \(\*(\w+)\)\(([^)]*)\);", text)
    }
    body = re.search(r"struct VlmWindowEntry \{(.*?)\}", text, re.DOTALL)
    fields = re.findall(r"(\w+) (\w+)(\[\d+\])?;", body.group(1) if body else "")
    constants = re.findall(r"(VLM_PRESENT_\w+) = (-?\d+)", text)
    # What the patterns miss would never be compared.
    assert len(functions) == text.count("VLM_API ") - 1, "a declaration could not be read"
    assert len(callbacks) == text.count("typedef void (*") and fields and constants
    return Header(
        functions,
        callbacks,
        [(name, kind + size) for kind, name, size in fields],
        {name: int(value) for name, value in constants},
    )
