"""Not run: what mypy has to understand, and what it has to find wrong."""

from typing import Any

import numpy as np
import velmo

frame = np.zeros((4, 4), np.uint16)
signed = np.zeros((4, 4), np.int16)

filtered: np.ndarray[Any, np.dtype[np.uint16]] = velmo.TemporalNoiseReduction(8).process(frame)
velmo.SpatialNoiseRemover(gain=5).process(signed, out=signed)
velmo.SpatialNoiseRemover(5).process(frame)  # type: ignore[arg-type]
velmo.TemporalNoiseReduction("8")  # type: ignore[arg-type]
picture = velmo.ColorPaletteConverter().palletize(frame, 0, 10, velmo.palette("Ironbow"))
picture.rgb.tobytes()
try:
    velmo.decode_storage(b"")
except velmo.Error as error:
    print(error.location.upper())
camera = velmo.Camera(velmo.Settings(denoise=True), unit="centikelvin", range="p1:p99")
with velmo.open(["run/"]) as recording, velmo.PictureWriter("film.avi") as film:
    for raw in recording:
        film.write(camera.show(raw).rgb)
learnt = velmo.FlatLearner().learn()
velmo.Camera(flat=learnt, bad_pixels=velmo.PixelSearch().find()["map"], temporal=(16, 1843))
degrees: np.ndarray[Any, np.dtype[np.float32]] = camera.scale.celsius(frame)
velmo.Scale("kelvin/16").celsius(signed)  # type: ignore[arg-type]
