#!/usr/bin/env python3
"""How much a call from Python costs, and how far ahead the library is of numpy and cv2. Prints ratios.

PYTHONPATH=build/release/bindings/python python3 bench/bench_python.py [--quick]
"""

import sys
import threading
import time

import numpy as np
import velmo

try:
    import cv2

    cv2.setNumThreads(1)
except ImportError:  # its rows are left out
    cv2 = None

QUICK = "--quick" in sys.argv[1:]
ROWS, COLS = 480, 640
RANDOM = np.random.default_rng(1)
FRAMES = [RANDOM.normal(8000, 40, (ROWS, COLS)).astype(np.uint16) for _ in range(2 if QUICK else 8)]


def interleaved(**works):
    """Seconds of processor time per call: of works that take turns, a low quantile of each."""
    times = {name: [] for name in works}
    for turn in range(1 if QUICK else 60):
        for name, work in works.items():
            begin = time.thread_time()
            for frame in FRAMES:
                work(frame)
            times[name].append((time.thread_time() - begin) / len(FRAMES))
    return {name: float(np.quantile(each, 0.2)) for name, each in times.items()}


def overhead():
    """Of a call that has one pixel to work on; the share of it in a call with a whole frame."""
    works, tiny = {}, np.full((1, 1), 8000, np.uint16)
    calls = {
        "temporal": (velmo.TemporalNoiseReduction(16, 1843).process, np.uint16),
        "pattern": (velmo.StaticPatternRemover().process, np.int16),
        "spatial": (velmo.SpatialNoiseRemover(12).process, np.int16),
        "colours": (velmo.ColorPaletteConverter().palletize_fast, np.uint16),
    }
    palette = velmo.palette("Ironbow")
    calls["colours"][0].__self__.resize_lookup_table(7000, 9000, palette)
    repeat = 1 if QUICK else 200
    for name, (process, dtype) in calls.items():
        outs = [np.empty((*shape, 3) if name == "colours" else shape, np.uint8 if name == "colours" else dtype)
                for shape in ((1, 1), (ROWS, COLS))]

        def small(_, process=process, frame=tiny.view(dtype), out=outs[0]):
            for _ in range(repeat):
                process(frame, out=out)

        works[name + " tiny"] = small
        works[name] = lambda frame, process=process, dtype=dtype, out=outs[1]: process(frame.view(dtype), out=out)
    times = interleaved(**works)
    print("overhead of a call from Python, with out=, as a share of a 640 x 480 frame")
    for name in calls:
        print(f"  {name:10} {100 * times[name + ' tiny'] / repeat / times[name]:6.2f} %")


def peers():
    """Beside what a user would write."""
    denoiser = velmo.Camera(denoise="normal", range="7800:8200")
    chain = velmo.Camera(pattern="15:8:4", temporal="16:1843", spatial=4, range="7800:8200")
    colour = velmo.Camera(range="7800:8200")
    picture = np.empty((ROWS, COLS, 3), np.uint8)
    state = np.full((ROWS, COLS), 8000, np.float32)

    def normalised(frame):
        clipped = np.clip(frame, 7800, 8200).astype(np.float32)
        return ((clipped - 7800) * (255 / 400)).astype(np.uint8)

    def numpy_denoise(frame):
        nonlocal state
        state += (frame - state) * np.float32(0.1)
        return state.astype(np.uint16)

    temporal, out = velmo.TemporalNoiseReduction(16, 1843), np.empty((ROWS, COLS), np.uint16)
    works = {
        "ours denoised": lambda frame: denoiser.show(frame, out=picture),
        "ours filtered": lambda frame: chain.show(frame, out=picture),
        "ours coloured": lambda frame: colour.show(frame, out=picture),
        "ours temporal": lambda frame: temporal.process(frame, out=out),
        "numpy temporal": numpy_denoise,
    }
    if cv2:
        works["cv2 coloured"] = lambda frame: cv2.applyColorMap(normalised(frame), cv2.COLORMAP_INFERNO)
        works["cv2 denoised"] = lambda frame: cv2.applyColorMap(
            normalised(cv2.medianBlur(numpy_denoise(frame), 3)), cv2.COLORMAP_INFERNO
        )
        works["cv2 bilateral"] = lambda frame: cv2.applyColorMap(
            cv2.bilateralFilter(normalised(numpy_denoise(frame)), 5, 20, 2), cv2.COLORMAP_INFERNO
        )
    times = interleaved(**works)
    print("times as fast as what a user would write")
    rows = [("temporal filter: numpy, a fixed weight", "numpy temporal", "ours temporal")]
    if cv2:
        rows += [
            ("colours: normalise, applyColorMap", "cv2 coloured", "ours coloured"),
        ]
        for ours, name in (("ours filtered", "three filters and colours"), ("ours denoised", "denoise and colours")):
            rows.append((f"{name}: mean over time, medianBlur, normalise, applyColorMap", "cv2 denoised", ours))
            rows.append((f"{name}: mean over time, bilateralFilter, applyColorMap", "cv2 bilateral", ours))
    for title, peer, ours in rows:
        print(f"  {times[peer] / times[ours]:6.2f}  {title}")


def threads():
    """Two filters on two threads: frames per second against one, by the clock."""

    def run(count):
        filters = [velmo.StaticPatternRemover() for _ in range(count)]
        repeat = 1 if QUICK else 100

        def work(filter, out):
            for _ in range(repeat):
                for frame in FRAMES:
                    filter.process(frame.view(np.int16), out=out)

        workers = [threading.Thread(target=work, args=(each, np.empty((ROWS, COLS), np.int16))) for each in filters]
        begin = time.perf_counter()
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()
        return count / (time.perf_counter() - begin)

    best = [max(run(count) for _ in range(1 if QUICK else 5)) for count in (1, 2)]
    print(f"two threads against one: {best[1] / best[0]:.2f}")


if __name__ == "__main__":
    overhead()
    peers()
    threads()
