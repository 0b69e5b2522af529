"""What arrays the building blocks take, what they give, and that nothing a caller does brings Python down."""

import pickle
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pytest
import velmo


def frame(rows=24, cols=32, dtype=np.int16, seed=1):
    return np.random.default_rng(seed).integers(7990, 8010, (rows, cols)).astype(dtype)


def ten_frames(filter, dtype=np.int16):
    return [filter.process(frame(dtype=dtype, seed=n)) for n in range(10)]


FILTERS = {
    "temporal": lambda: velmo.TemporalNoiseReduction(8, 1900),
    "reference": lambda: velmo.TemporalNoiseReductionRef(8, 1900),
    "pattern": lambda: velmo.StaticPatternRemover(20, 10, 5),
    "spatial": lambda: velmo.SpatialNoiseRemover(12),
}
every_filter = pytest.mark.parametrize("make", FILTERS.values(), ids=FILTERS)


@every_filter
def test_rows_may_be_padded_and_out_may_be_the_frame_itself(make):
    expected = ten_frames(make())
    assert any((after != frame(seed=n)).any() for n, after in enumerate(expected))

    padded = make()
    for n, wanted in enumerate(expected):
        wide_in, wide_out = np.zeros((24, 50), np.int16), np.full((24, 40), -7, np.int16)
        wide_in[:, 5:37] = frame(seed=n)
        out = wide_out[:, 3:35]
        assert padded.process(wide_in[:, 5:37], out) is out
        assert (out == wanted).all()
        assert (wide_out[:, :3] == -7).all() and (wide_out[:, 35:] == -7).all()

    in_place = make()
    for n, wanted in enumerate(expected):  # it lies a row below itself, and comes out where it was
        whole = np.zeros((25, 32), np.int16)
        whole[n % 2 :][:24] = frame(seed=n)
        assert (in_place.process(whole[n % 2 :][:24], out=whole[:24]) == wanted).all()


@every_filter
@pytest.mark.parametrize("shape", [(0, 0), (0, 5), (5, 0), (1, 1), (1, 9), (9, 1)])
def test_takes_frames_of_any_size(make, shape):
    result = make().process(np.ones(shape, np.int16))
    assert result.shape == shape and result.flags.owndata and result.flags.writeable


FRAME = frame()
READ_ONLY = frame()
READ_ONLY.flags.writeable = False
UNALIGNED = np.zeros(24 * 32 * 2 + 1, np.uint8)[1:].view(np.int16).reshape(24, 32)
FALSE_FRAMES = [
    (FRAME.astype(np.float64), TypeError, "frame: an array of float64"),
    (FRAME.tolist(), TypeError, "frame: a list"),
    (None, TypeError, "frame: a NoneType"),
    (FRAME.astype(">i2"), TypeError, "frame: an array of >i2"),
    (FRAME[0], ValueError, "frame: shape 32, where rows x cols"),
    (FRAME[None], ValueError, "frame: shape 1 x 24 x 32"),
    (np.array(5, np.int16), ValueError, "frame: shape without dimensions"),
    (FRAME[:, ::2], ValueError, "side by side"),
    (FRAME[::-1], ValueError, "side by side"),
    (np.broadcast_to(FRAME[0], (24, 32)), ValueError, "side by side"),
    (UNALIGNED, ValueError, "addresses"),
]
FALSE_OUTPUTS = [
    (READ_ONLY, ValueError, "out: the array is read-only"),
    (np.empty((24, 31), np.int16), ValueError, "out: shape 24 x 31, where 24 x 32"),
    (np.empty((24, 32), np.int32), TypeError, "out: an array of int32, where int16"),
    (np.empty((24, 64), np.int16)[:, ::2], ValueError, "out: .*side by side"),
    ("frame.png", TypeError, "out: a str"),
]


@every_filter
@pytest.mark.parametrize("image, error, message", FALSE_FRAMES)
def test_refuses_a_frame_and_says_what_to_pass(make, image, error, message):
    with pytest.raises(error, match=message):
        make().process(image)


@every_filter
@pytest.mark.parametrize("out, error, message", FALSE_OUTPUTS)
def test_refuses_an_output_and_says_what_to_pass(make, out, error, message):
    with pytest.raises(error, match=message):
        make().process(FRAME, out)


def test_a_temporal_filter_starts_anew_with_frames_of_another_type():
    filter = velmo.TemporalNoiseReduction(8, 1900)
    for dtype in (np.uint16, np.int16, np.uint16):
        assert (filter.process(frame(dtype=dtype)) == frame()).all()
        assert (filter.process(frame(dtype=dtype) + 3) != frame() + 3).any()


@every_filter
def test_a_pickle_holds_the_parameters_and_not_the_state(make):
    filter = make()
    expected = ten_frames(filter)
    again = pickle.loads(pickle.dumps(filter))
    assert all((left == right).all() for left, right in zip(ten_frames(again), expected))


@pytest.mark.parametrize(
    "set_it, error",
    [
        (lambda: velmo.SpatialNoiseRemover(32), ValueError),
        (lambda: velmo.SpatialNoiseRemover(gain=-1), ValueError),
        (lambda: velmo.SpatialNoiseRemover(1.5), TypeError),
        (lambda: velmo.StaticPatternRemover(line_limit=32), ValueError),
        (lambda: velmo.StaticPatternRemover(threshold=101), ValueError),
        (lambda: velmo.TemporalNoiseReduction(256), ValueError),
        (lambda: setattr(velmo.TemporalNoiseReduction(), "control_gain", 17), ValueError),
        (lambda: setattr(velmo.TemporalNoiseReduction(), "feedback_factor", 10**30), ValueError),
    ],
)
def test_refuses_parameters_outside_their_range(set_it, error):
    with pytest.raises(error, match="(is not from 0 to|whole number)"):
        set_it()


def test_an_error_has_message_and_location():
    assert (velmo.DownSize.resize_240_to_120(np.ones((180, 240), np.int16)) == np.ones((90, 120))).all()
    with pytest.raises(velmo.Error, match="240 x 180, not 32 x 24") as caught:
        velmo.DownSize.resize_240_to_160(FRAME)
    assert "DownSize.cpp: " in caught.value.location


def test_a_frame_is_coloured_by_a_table_of_its_range():
    converter, palette = velmo.ColorPaletteConverter(bgr=False), np.array([[0, 0, 0], [250, 100, 50]], np.uint8)
    values = np.array([[0, 1000, 1500, 65535]], np.uint16)
    picture = converter.palletize(values, 1000, 2000, palette)
    assert picture[0, :2].tolist() == [[0, 0, 0], [0, 0, 0]] and picture.shape == (1, 4, 3)
    assert (abs(picture[0, 2].astype(int) - [125, 50, 25]) <= 2).all()
    converter.create_color_region(1, upper=1500, lower=1400, color=0x102030)
    converter.resize_lookup_table(1000, 2000, palette)
    assert converter.palletize_fast(values)[0, 2].tolist() == [0x10, 0x20, 0x30]
    stretched = np.zeros((1, 2000, 3), np.uint8)
    converter.fill_color_regions_rgb(stretched)
    assert set(np.flatnonzero(stretched.any(axis=2))) == set(range(1400, 1501))
    for call, message in (
        (lambda: converter.fill_color_regions_rgb(np.zeros((2, 9, 3), np.uint8)), "table: 2 rows"),
        (lambda: converter.palletize(values, 6, 5, palette), "max: 5 is below min, 6"),
        (lambda: converter.palletize(values, 5, 6, palette[:0]), "one colour at least"),
    ):
        with pytest.raises(ValueError, match=message):
            call()


def test_palettes_are_arrays_that_notebooks_show():
    ironbow = velmo.palette("IRONBOW")
    assert isinstance(ironbow, velmo.Palette) and ironbow.shape[1] == 3 and "Ironbow" in velmo.palette_names()
    assert velmo.expand_palette(ironbow, 7)[[0, -1]].tolist() == ironbow[[0, -1]].tolist()
    assert "#%02x%02x%02x" % tuple(ironbow[-1]) in ironbow._repr_html_()
    velmo.ColorPaletteManager.add_palette("mine", ironbow[:3].copy())
    assert (velmo.ColorPaletteManager.get_palette_colors("mine") == ironbow[:3]).all()
    with pytest.raises(velmo.Error, match="nothing"):
        velmo.palette("nothing")


def test_a_picture_shows_as_a_png(tmp_path):
    cv2 = pytest.importorskip("cv2")
    picture = velmo.ColorPaletteConverter().palletize(frame(dtype=np.uint16), 7000, 9000, velmo.palette("rainbow"))
    decoded = cv2.imdecode(np.frombuffer(picture._repr_png_(), np.uint8), cv2.IMREAD_COLOR)
    assert (decoded == picture).all() and (picture.rgb[..., 0] == picture[..., 2]).all()
    assert picture[..., 0]._repr_png_() is None


@pytest.mark.parametrize(
    "name, source, expected",
    [
        ("convert_uyvy_to_bgr", [[128, 50], [128, 200]], [[39] * 3, [214] * 3]),  # 1.164 (Y - 16)
        ("convert_uy1vy0_to_rgb", [[128, 50], [128, 200]], [[214] * 3, [40] * 3]),
        ("convert_ycbcr_to_brg", [[77, 128, 128]], [[71] * 3]),
        ("convert_rgb_to_ycbcr", [[255, 255, 255]], [[255, 128, 128]]),
        ("convert_ycbcr_to_yuv2", [[1, 2, 3], [4, 5, 6]], [[6, 4], [2, 1]]),
    ],
)
def test_colours_are_converted_row_by_row(name, source, expected):
    padded = np.zeros((3, 4, len(source[0])), np.uint8)
    padded[:, : len(source)] = source
    result = getattr(velmo.ColorConvert, name)(padded[:, : len(source)])
    assert result.tolist() == [expected] * 3


def test_bad_pixels_are_records_and_maps():
    bad = np.zeros((20, 30), np.int32)
    bad[4, 3] = bad[0, 0] = 1
    records = velmo.BadPixelTools.calculate_replace_pixels(bad, 5)
    assert records.dtype == velmo.BAD_PIXEL and records["pixel"].tolist() == [(0, 0), (3, 4)]
    assert {tuple(place) for place in records["replace_pixel"][1].tolist()} == {(4, 4), (3, 5), (3, 3), (2, 4)}
    assert velmo.BadPixelTools.calculate_single_replace_pixel(bad, 3, 4, 5) == records[1:]
    assert len(velmo.BadPixelTools.calculate_single_replace_pixel(np.ones((3, 3), np.int32), 1, 1, 5)) == 0
    assert velmo.BadPixelTools.convert_bad_pixel_to_pxm_format(records[::-1])[0, :2].tolist() == [3, 4]

    spread = frame(20, 30)
    spread[7, 9] = 30000
    assert velmo.BadPixelTools.detect_bad_pixel_histogram(spread, bad, 1) == 1
    assert bad[7, 9] == velmo.BadPixelTools.BAD_HOMOGENITY
    velmo.BadPixelTools.check_monotonic([spread, spread + 1], bad)
    assert np.count_nonzero(bad) == 3
    for call, error, message in (
        (lambda: velmo.BadPixelTools.check_monotonic([spread], bad), velmo.Error, "at least 2"),
        (lambda: velmo.BadPixelTools.check_monotonic([spread, spread], bad[1:]), ValueError, "map: 19 x 30"),
        (lambda: velmo.BadPixelTools.recalculate_replace_pixels(bad, bad, 5), TypeError, "BAD_PIXEL"),
        (lambda: velmo.BadPixelTools.calculate_single_replace_pixel(bad, 30, 0, 5), ValueError, "x: 30"),
        (lambda: velmo.BadPixelTools.recalculate_replace_pixels(records, bad[:2], 5), velmo.Error, "outside"),
        (lambda: velmo.BadPixelTools.load_bad_pixel_from_pxm("/no/such"), velmo.Error, "Can not open"),
        (lambda: velmo.DistortionCorrection.load_pixel_corr_info_from_pxm("/no/such"), velmo.Error, "Can not open"),
    ):
        with pytest.raises(error, match=message):
            call()


def test_components_are_measured_and_drawn():
    blob = velmo.ConnectedComponent(np.array([[1, 2], [2, 2], [3, 2]], np.int32), label=7)
    blob.add_point(2, 3)
    blob = pickle.loads(pickle.dumps(blob))
    assert (len(blob), blob.label, blob.bounding_box, blob.center_of_gravity) == (4, 7, (1, 2, 3, 2), (2.0, 2.25))
    canvas = np.zeros((6, 6, 3), np.uint8)
    velmo.ConnectedComponent.draw_components(canvas, {1: blob}, seed=1)
    assert canvas.any(axis=2).sum() == 4
    for draw in (velmo.ConnectedComponent.draw_component_hulls, velmo.ConnectedComponent.draw_principal_components):
        draw(canvas, {1: blob}, clear=True)
        with pytest.raises(velmo.Error, match="canvas"):
            draw(canvas[:2], {1: blob})
    with pytest.raises(velmo.Error):
        velmo.ConnectedComponent().pca


def test_storage_files_are_nested_dicts():
    text = b'<group name="root"><group name="a"><item name="n" type="int16">-5</item></group></group>'
    assert velmo.decode_storage(text) == ({"a": {"n": -5}}, "root")
    assert velmo.decode_storage(b"[a/b]\nx = 1.5\ny = true\nz = 1,255", "ini")[0] == {
        "a": {"b": {"x": 1.5, "y": True, "z": b"\x01\xff"}}
    }
    for bad in (b"", b"<group", b"<a><b></a>", b'<group name="x"><item name="i" type="int8">900</item></group>'):
        with pytest.raises(velmo.Error):
            velmo.decode_storage(bad)


@every_filter
def test_one_filter_may_be_called_from_many_threads(make):
    filter = make()
    with ThreadPoolExecutor(4) as pool:
        shapes = pool.map(lambda rows: {filter.process(frame(rows)).shape for _ in range(50)}, (10, 11, 12, 13))
        assert list(shapes) == [{(rows, 32)} for rows in (10, 11, 12, 13)]


def test_other_threads_run_while_a_filter_works():
    """The reference filter takes far longer for a large frame than Python waits for its lock."""
    filter, large = velmo.TemporalNoiseReductionRef(8, 1900), frame(3000, 3000)
    filter.process(large)
    with ThreadPoolExecutor(1) as pool:
        running, counted = pool.submit(filter.process, large), 0
        while not running.done():
            counted += 1
    assert counted > 1000
