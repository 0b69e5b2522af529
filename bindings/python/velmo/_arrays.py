"""Classes and types of the arrays that come out: notebooks show pictures and palettes."""

from __future__ import annotations

import struct
import zlib
from typing import Any

import numpy as np
from numpy.typing import NDArray

_PIXEL = [("x", np.int16), ("y", np.int16)]

BAD_PIXEL = np.dtype([("pixel", _PIXEL), ("replace_pixel", _PIXEL, 4)])
"""A defective pixel and the four good ones that stand in for it."""

PIXEL_CORR_INFO = np.dtype([("offset", np.int16), ("weights", np.uint16, 4)])
"""Where one pixel of a corrected image comes from."""


def _png(rgb: NDArray[np.uint8]) -> bytes:
    """A PNG of rows x cols x 3 uint8: red, green, blue."""
    rows, cols, _ = rgb.shape

    def chunk(kind: bytes, data: bytes) -> bytes:
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    lines = np.zeros((rows, 1 + 3 * cols), np.uint8)  # each begins with its filter: none
    lines[:, 1:] = rgb.reshape(rows, 3 * cols)
    return (
        b"\x89PNG\r\n\x1a\n"
        + chunk(b"IHDR", struct.pack(">IIBBBBB", cols, rows, 8, 2, 0, 0, 0))
        + chunk(b"IDAT", zlib.compress(lines.tobytes(), 1))
        + chunk(b"IEND", b"")
    )


class Picture(np.ndarray[Any, np.dtype[np.uint8]]):
    """Colours, rows x cols x 3 uint8: blue, green, red. A notebook shows it.

    `rgb` is a view with red first, as Matplotlib and Pillow take it.
    """

    @property
    def rgb(self) -> NDArray[np.uint8]:
        """A view with red first."""
        return self.view(np.ndarray)[..., ::-1]

    def _repr_png_(self) -> bytes | None:
        if self.ndim != 3 or self.shape[2] != 3 or self.size == 0 or self.dtype != np.uint8:
            return None  # a part of one that is no picture
        return _png(self.rgb)


class Palette(np.ndarray[Any, np.dtype[np.uint8]]):
    """Colour points, N x 3 uint8: red, green, blue, the coldest first. A notebook shows it as a strip."""

    def _repr_html_(self) -> str | None:
        if self.ndim != 2 or self.shape[1] != 3 or len(self) == 0 or self.dtype != np.uint8:
            return None
        colours = ", ".join(f"#{red:02x}{green:02x}{blue:02x}" for red, green, blue in self.tolist())
        gradient = f"linear-gradient(to right, {colours}, {colours.split(', ')[-1]})"
        return f'<div style="width: 512px; height: 32px; background: {gradient}"></div>'
