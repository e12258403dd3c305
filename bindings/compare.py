"""Compares a binding with the header: compare.py python|rust|csharp|swift

No function, callback, field or constant may be missing, be there in vain, or have another type; and
the safe layer above the declarations leaves no function out.
"""

from __future__ import annotations

import re
import sys
from collections.abc import Callable
from pathlib import Path

from header import Header, read_header

HERE = Path(__file__).resolve().parent
Table = dict[str, tuple[str, ...]]
NUMBERS = {
    "int32_t": ("c_int32", "i32", "int"),
    "int64_t": ("c_int64", "i64", "long"),
    "uint8_t": ("c_uint8", "u8", "byte"),
    "uint16_t": ("c_uint16", "u16", "ushort"),
    "uint32_t": ("c_uint32", "u32", "uint"),
    "uint64_t": ("c_uint64", "u64", "ulong"),
    "float": ("c_float", "f32", "float"),
    "double": ("c_double", "f64", "double"),
    "bool": ("c_bool", "bool", "bool"),
    "char": ("c_char", "c_char", "byte"),
}


def differences(expected: Table, found: Table) -> list[str]:
    lines = [f"missing: {name}" for name in sorted(expected.keys() - found.keys())]
    lines += [f"not in the header: {name}" for name in sorted(found.keys() - expected.keys())]
    for name in expected.keys() & found.keys():
        if expected[name] != found[name]:
            lines.append(f"{name}: header {expected[name]}, binding {found[name]}")
    return lines


def translated(header: Header, one: Callable[[str], str]) -> Table:
    """The header in another language's types; a field is a table's entry like any other."""
    table = {name: tuple(map(one, types)) for name, types in header.functions.items()}
    table |= {name: tuple(map(one, types)) for name, types in header.callbacks.items()}
    table["fields"] = tuple(f"{name}: {one(kind)}" for name, kind in header.window_entry)
    table |= {name: (str(value),) for name, value in header.constants.items()}
    return table


def compare_python(header: Header) -> list[str]:
    sys.path.insert(0, str(HERE / "python"))
    import ctypes

    from velmora import _native
    from velmora.present import Shown

    callbacks = {
        "vlm_frame_cb": _native.FrameCallback,
        "vlm_audio_cb": _native.AudioCallback,
        "vlm_encoded_cb": _native.EncodedCallback,
        "vlm_track_cb": _native.TrackCallback,
        "vlm_hotkey_cb": _native.HotkeyCallback,
        "vlm_mic_cb": _native.MicrophoneCallback,
    }

    def one(kind: str) -> str:
        kind = kind.replace("const ", "")
        if kind in callbacks:
            return str(callbacks[kind])
        if kind == "void":
            return str(None)
        fixed = {"void*": ctypes.c_void_p, "uint8_t[128]": ctypes.c_uint8 * 128}
        if kind in fixed:
            return str(fixed[kind])
        if kind.startswith("VlmWindowEntry"):
            base: type = _native.WindowEntry
        else:
            base = getattr(ctypes, NUMBERS[kind.rstrip("*")][0])
        for _ in range(kind.count("*")):
            base = ctypes.POINTER(base)
        return str(base)

    expected = translated(header, one)
    for name, types in header.functions.items():
        # Text in has a type of its own in ctypes.
        text = [str(ctypes.c_char_p) if kind == "const char*" else one(kind) for kind in types]
        expected[name] = tuple(text)
    found = {
        name: (str(result), *map(str, parameters))
        for name, (result, parameters) in _native.SIGNATURES.items()
    }
    for name, kind in callbacks.items():
        found[name] = (str(kind._restype_), *map(str, kind._argtypes_))
    found["fields"] = tuple(f"{name}: {kind}" for name, kind in _native.WindowEntry._fields_)
    found |= {f"VLM_PRESENT_{one.name}": (str(one.value),) for one in Shown}
    return differences(expected, found)


def compare_rust(header: Header) -> list[str]:
    text = (HERE / "rust/velmora-sys/src/lib.rs").read_text()

    def one(kind: str) -> str:
        if kind in header.callbacks:
            return f"Option<{kind}>"
        pointer = "*const " if kind.startswith("const ") else "*mut "
        base = kind.replace("const ", "").rstrip("*")
        if base == "uint8_t[128]":
            return "[u8; 128]"
        fixed = {"void": "c_void" if "*" in kind else "()", "VlmWindowEntry": base}
        name = fixed.get(base) or NUMBERS[base][1]
        return pointer * kind.count("*") + name

    def types(result: str, parameters: str) -> tuple[str, ...]:
        return (result.strip() or "()", *re.findall(r"\w+: ([^,]+)", parameters.replace("\n", " ")))

    found: Table = {
        name: types(result, parameters)
        for name, parameters, result in re.findall(
            r"pub fn (vlm_\w+)\(([^)]*)\)(?: -> ([^;]+))?;", text
        )
    }
    for name, parameters in re.findall(
        r'pub type (vlm_\w+) =\s+unsafe extern "C" fn\(([^)]*)\);', text
    ):
        found[name] = types("", parameters)
    body = text.split("pub struct VlmWindowEntry {")[1].split("}")[0]
    found["fields"] = tuple(f"{name}: {kind}" for name, kind in re.findall(r"pub (\w+): (.+),", body))
    constants = re.findall(r"pub const (VLM_PRESENT_\w+): i32 = (-?\d+);", text)
    found |= {name: (value,) for name, value in constants}
    return differences(translated(header, one), found)


def compare_csharp(header: Header) -> list[str]:
    text = (HERE / "csharp/Native.cs").read_text()
    delegates = {
        "vlm_frame_cb": "FrameCallback",
        "vlm_audio_cb": "AudioCallback",
        "vlm_encoded_cb": "EncodedCallback",
        "vlm_track_cb": "TrackCallback",
        "vlm_hotkey_cb": "HotkeyCallback",
        "vlm_mic_cb": "MicrophoneCallback",
    }
    byte_bool = "[MarshalAs(UnmanagedType.U1)] bool"  # bool alone has four bytes

    def one(kind: str) -> str:
        if kind == "uint8_t[128]":
            return "[MarshalAs(UnmanagedType.ByValArray, SizeConst = 128)] byte[]"
        fixed = delegates | {"void": "void", "bool": byte_bool}
        return "IntPtr" if "*" in kind else fixed.get(kind) or NUMBERS[kind][2]

    def types(result: str, parameters: str) -> tuple[str, ...]:
        each = re.findall(r"([^,]+?) \w+(?:,|$)", parameters)
        return (result, *(" ".join(kind.split()) for kind in each))

    found: Table = {}
    for of_bool, result, name, parameters in re.findall(
        r"\[DllImport\(Library, CallingConvention = CallingConvention.Cdecl\)\]\s+"
        r"(?:\[return: (.*)\]\s+)?public static extern (\w+) (vlm_\w+)\((.*)\);",
        text,
    ):
        found[name] = types(f"[{of_bool}] {result}" if of_bool else result, parameters)
    for result, delegate, parameters in re.findall(
        r"Cdecl\)\]\s+public delegate (\w+) (\w+)\((.*)\);", text
    ):
        name = next(name for name, other in delegates.items() if other == delegate)
        found[name] = types(result, parameters)
    body = " ".join(text.split("public struct WindowEntry {")[1].split("}")[0].split())
    fields = re.findall(r"(\[.*?\] )?public (\S+) (\w+);", body)
    found["fields"] = tuple(f"{name}: {how}{kind}" for how, kind, name in fields)
    constants = re.findall(r"public const int (VLM_PRESENT_\w+) = (-?\d+);", text)
    found |= {name: (value,) for name, value in constants}
    return differences(translated(header, one), found)


def compare_swift(_: Header) -> list[str]:
    return []  # its module map is the header itself


# By language: the sources of the safe layer, and how they name a declared function.
SAFE = {
    "python": ("python/velmora/*.py", r"\blib(?:rary)?\."),
    "rust": ("rust/velmora/src/*.rs", r"\bsys::"),
    "csharp": ("csharp/*.cs", r"\bNative\."),
    "swift": ("swift/Sources/Velmora/*.swift", r"\b"),
}


def left_out(header: Header, language: str) -> list[str]:
    pattern, prefix = SAFE[language]
    text = "".join(path.read_text() for path in sorted(HERE.glob(pattern)))
    used = set(re.findall(prefix + r"(vlm_\w+)", text))
    return [f"not in the safe layer: {name}" for name in sorted(header.functions.keys() - used)]


def main(language: str) -> int:
    header = read_header()
    lines = globals()[f"compare_{language}"](header) + left_out(header, language)
    for line in lines:
        print(f"{language}: {line}", file=sys.stderr)
    return 1 if lines else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
