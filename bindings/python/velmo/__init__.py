"""Thermal cameras in Python: the building blocks, the whole camera, and recordings, on numpy arrays."""

from ._arrays import BAD_PIXEL, PIXEL_CORR_INFO, Palette, Picture
from ._velmo import *  # noqa: F401,F403
from ._velmo import __all__ as _names
from ._velmo import __version__  # noqa: F401
from ._velmo import open  # noqa: A004,F401

__all__ = ["BAD_PIXEL", "PIXEL_CORR_INFO", "Palette", "Picture", *_names]
