"""Lists windows, shares one to a file, views that file, and reaches for the rest: says which machine
this is, puts the pointer somewhere and looks into a sound file:

    demo.py windows PREFIX
    demo.py share PREFIX FILE.h264 SECONDS
    demo.py view FILE.h264 SECONDS
    demo.py services X Y SOUND
"""

from __future__ import annotations

import re
import sys
import threading
import time

import host
from velmora import Capture, Decoder, Encoder, Frame, Presenter, Shown, Sound
from velmora import capture, input, system, windows

FRAME_SECONDS = 1 / 30


def list_windows(prefix: str) -> int:
    pid = windows.find_pid(prefix)
    for one in windows.windows_of(pid) if pid else []:
        print(f"0x{one.window_id:08x} {one.width}x{one.height}+{one.left}+{one.top} {one.title}")
    return 0 if pid else 1


def share(prefix: str, path: str, seconds: float) -> int:
    window = capture.find_window(prefix)
    if window is None:
        return 1
    lock = threading.Lock()
    last: list[Frame] = []

    def keep(frame: Frame) -> None:
        with lock:
            last[:] = [frame]

    with open(path, "wb") as file, Capture.window(window, keep):
        end = time.monotonic() + seconds
        while not last and time.monotonic() < end:
            time.sleep(FRAME_SECONDS)
        if not last:
            return 1
        with Encoder(last[0].width, last[0].height, lambda unit, key, pts: write(file, unit)) as e:
            while time.monotonic() < end:  # a still window is submitted again: it gets sharper
                with lock:
                    frame = last[0]
                e.encode(frame, time.monotonic_ns())
                time.sleep(FRAME_SECONDS)
    return 0


def write(file: object, unit: bytes) -> None:
    file.write(unit)  # type: ignore[attr-defined]


def access_units(stream: bytes) -> list[bytes]:
    """Cuts in front of parameter sets and first slices, whatever comes first after a slice."""
    starts, after_slice = [0], False
    for nal in re.finditer(rb"\x00\x00\x00\x01(.)(.)", stream, re.DOTALL):
        kind, first = nal[1][0] & 31, nal[2][0] >= 128
        is_slice = kind in (1, 5)
        if after_slice and (first or not is_slice):
            starts.append(nal.start())
            after_slice = False
        after_slice = after_slice or is_slice
    return [stream[a:b] for a, b in zip(starts, [*starts[1:], len(stream)])]


def view(path: str, seconds: float) -> int:
    with open(path, "rb") as file:
        units = access_units(file.read())
    with Presenter() as presenter:
        host.window_around(presenter.view(), "Velmora view", 640, 480)
        shown = 0
        last: list[Frame] = []
        end = time.monotonic() + seconds
        with Decoder(lambda frame: last.__setitem__(slice(None), [frame])) as decoder:
            while time.monotonic() < end:
                if units:
                    decoder.decode(units.pop(0), time.monotonic_ns())
                if last:
                    shown += presenter.show(last[0]) == Shown.OK
                host.turn_main_loop()
                time.sleep(FRAME_SECONDS)
    return 0 if shown else 1


def services(x: float, y: float, path: str) -> int:
    print(system.machine_id())
    input.move(x, y)
    print("{:g} {:g}".format(*input.cursor() or ()))
    with Sound(path) as sound:
        print(sound.duration)
    return 0


def main(arguments: list[str]) -> int:
    match arguments:
        case ["windows", prefix]:
            return list_windows(prefix)
        case ["share", prefix, path, seconds]:
            return share(prefix, path, float(seconds))
        case ["view", path, seconds]:
            return view(path, float(seconds))
        case ["services", x, y, path]:
            return services(float(x), float(y), path)
    print(__doc__, file=sys.stderr)
    return 2


sys.exit(main(sys.argv[1:]))
