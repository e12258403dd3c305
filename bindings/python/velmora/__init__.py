"""VelmoraMacNative for Python. The C header is the manual; names here are its names without the
prefix, and failures are exceptions or None."""

from . import audio, capture, input, system, windows
from ._handle import Closed, Error, Rectangle
from .audio import Microphone, Playback, Sound
from .capture import Capture
from .codec import Decoder, Encoder
from .frames import Frame
from .present import Presenter, Shown
from .windows import Tracker, Window

__all__ = [
    "Capture", "Closed", "Decoder", "Encoder", "Error", "Frame", "Microphone", "Playback",
    "Presenter", "Rectangle", "Shown", "Sound", "Tracker", "Window",
    "audio", "capture", "input", "system", "windows",
]  # fmt: skip
