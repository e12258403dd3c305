"""What the classes promise beyond the C functions, on the real library."""

import gc
import threading
import unittest

import numpy as np

from velmora import Closed, Decoder, Encoder, Error, Frame, system

SIZE = (64, 96)


def units(count: int = 3) -> list[bytes]:
    """Access units of a picture whose left half is black and whose right half is white."""
    picture = np.zeros((*SIZE, 4), np.uint8)
    picture[:, SIZE[1] // 2 :] = 255
    found: list[bytes] = []
    with Encoder(SIZE[1], SIZE[0], lambda unit, key, pts: found.append(unit)) as encoder:
        for i in range(count):
            encoder.encode_bgra(picture, i * 33_000_000)
    return found


def frames(bgra: bool = False) -> list[Frame]:
    kept: list[Frame] = []
    with Decoder(kept.append, bgra=bgra) as decoder:
        for i, unit in enumerate(units()):
            decoder.decode(unit, i * 33_000_000)
    return kept


class Ownership(unittest.TestCase):
    def test_planes_outlive_frame_and_decoder(self) -> None:
        kept = frames()
        self.assertEqual(len(kept), 3)
        luma, chroma = kept[-1].planes()
        right = luma[:, SIZE[1] // 2 + 8 :]
        kept.clear()
        del luma
        gc.collect()
        frames()  # would reuse memory that was given back
        self.assertTrue((abs(right.astype(int) - 235) < 8).all())
        self.assertTrue((abs(chroma.astype(int) - 128) < 8).all())
        self.assertFalse(right.flags.owndata)
        with self.assertRaises(ValueError):
            right[0, 0] = 0

    def test_bgra_has_no_planes(self) -> None:
        frame = frames(bgra=True)[0]
        self.assertLess(frame.to_bgra()[:, :40, :3].max(), 24)
        with self.assertRaises(Error):
            frame.planes()

    def test_closed_objects_refuse(self) -> None:
        frame = frames()[0]
        decoder = Decoder(lambda frame: None)
        for one in (frame, decoder):
            one.close()
            one.close()
        for call in (frame.planes, frame.to_bgra, decoder.flush, lambda: decoder.decode(b"x", 0)):
            with self.assertRaises(Closed):
                call()

    def test_own_callback_may_not_wait_for_itself(self) -> None:
        refused: list[str] = []

        def misbehave(frame: Frame) -> None:
            for call in (decoder.close, decoder.flush):
                try:
                    call()
                except RuntimeError:
                    refused.append(call.__name__)

        with Decoder(misbehave) as decoder:
            decoder.decode(units(1)[0], 0)
        self.assertEqual(refused, ["close", "flush"])

    def test_last_reference_may_go_in_own_callback(self) -> None:
        gone = threading.Event()
        holder: list[Decoder] = []

        def drop(frame: Frame) -> None:
            while len(holder) == 0:
                pass
            holder.clear()
            gone.set()

        decoder = Decoder(drop)
        decoder.decode(units(1)[0], 0)
        holder.append(decoder)
        del decoder
        self.assertTrue(gone.wait(10))

    def test_failures_are_values_or_errors(self) -> None:
        with self.assertRaises(Error):
            Encoder(0, 0, lambda *unit: None).encode_bgra(np.zeros((0, 0, 4), np.uint8), 0)
        with self.assertRaises(ValueError), Encoder(64, 64, lambda *unit: None) as encoder:
            encoder.encode_bgra(np.zeros((64, 64, 3), np.uint8), 0)
        self.assertEqual(len(system.machine_id() or ""), 36)


if __name__ == "__main__":
    unittest.main()
