"""The whole camera and recordings, as Python has them."""

import pathlib
import pickle

import numpy as np
import pytest
import velmo


def frame(rows=120, cols=160, seed=1, level=30000):
    return (level + np.random.default_rng(seed).integers(-20, 20, (rows, cols))).astype(np.uint16)


def test_settings_are_one_tree_however_they_are_written(tmp_path):
    wanted = {"noise": {"denoise": "normal"}, "colours": {"range": "7000:9000"}, "picture": {"scale": np.int64(2)}}
    ways = [
        velmo.Settings(wanted),
        velmo.Settings({"noise/denoise": True, "colours/range": "7000:9000", "picture/scale": 2}),
        velmo.Settings(denoise=True, range="7000:9000", scale=2),
        velmo.Settings({"picture": {"scale": 2}}, denoise="true", range="7000:9000"),
    ]
    (tmp_path / "camera.ini").write_text(ways[0].ini())
    ways += [velmo.Settings.read(tmp_path / "camera.ini"), pickle.loads(pickle.dumps(ways[0]))]
    for settings in ways:
        assert settings == ways[0] and settings["noise/denoise"] == "normal" and settings["picture/scale"] == "2"
    assert ways[0].to_dict() == wanted and velmo.Settings() != ways[0]
    looks = velmo.Settings(tone="plateau", detail=3, flat=pathlib.Path("flat.npy"))
    assert [looks[path] for path in ("colours/tone", "colours/detail", "pixels/flat")] == ["plateau", "3", "flat.npy"]
    assert set(dict(velmo.Settings())) == {key["path"] for key in velmo.setting_keys()}
    forms = velmo.Settings(temporal=(16, np.int64(1843)), range=("p1", "p99"), legend=np.bool_(1), emissivity=np.float32(0.5))
    assert [*forms.to_dict()["colours"].values(), forms["noise/temporal"]] == ["p1:p99", "16:1843"]
    forms["colours/regions"] = [(1, 2, "FF0000"), "3:4:00FF00"]
    assert forms["colours/regions"] == "1:2:FF0000, 3:4:00FF00" and forms["picture/legend"] is True and forms["temperature/emissivity"] == "0.5"


@pytest.mark.parametrize(
    "make, error, message",
    [
        (lambda: velmo.Settings({"noise/denoize": True}), velmo.Error, "nearest is noise/denoise"),
        (lambda: velmo.Settings(denoize=True), velmo.Error, "no setting 'denoize'"),
        (lambda: velmo.Settings(scale=17), velmo.Error, "picture/scale.*17"),
        (lambda: velmo.Settings(scale=None), TypeError, "picture/scale: a NoneType"),
        (lambda: pickle.dumps(velmo.Scale("decikelvin").of_objects(velmo.Radiometry(0.5))), velmo.Error, "scale of objects"),
        (lambda: velmo.Settings(palette=velmo.palette("Ironbow")), TypeError, "colours/palette: a Palette"),
        (lambda: velmo.Settings({1: 2}), TypeError, "as a name"),
        (lambda: velmo.Camera(flat=np.zeros((2, 3), np.float32)), ValueError, "flat: not 3 x rows x cols"),
        (lambda: velmo.Camera(flat=np.zeros((2, 6, 6), np.float32)), velmo.Error, "flat: .* three planes"),
        (lambda: velmo.Camera(flat=np.zeros((3, 6, 6))), TypeError, "flat: an array of float64"),
        (lambda: velmo.Settings(5), TypeError, "settings: a int"),
        (lambda: velmo.Settings.read("/no/such.ini"), velmo.Error, "/no/such.ini"),
        (lambda: velmo.Settings().__setitem__("picture/scale", 0), velmo.Error, "scale"),
        (lambda: velmo.Camera(palette="nothing"), velmo.Error, "nothing"),
        (lambda: velmo.Camera(bad_pixels=np.zeros(3)), TypeError, "BAD_PIXEL"),
    ],
)
def test_refuses_settings_and_names_them(make, error, message):
    with pytest.raises(error, match=message):
        make()


def test_a_camera_gives_the_same_after_it_was_sent_elsewhere():
    camera = velmo.Camera(denoise=True, range="29000:31000", palette="Rainbow", legend=True)
    assert [name.split()[0] for name, _ in camera.stages] == ["denoise"]
    frames = [frame(seed=n) for n in range(5)]
    sent = pickle.loads(pickle.dumps(camera))
    pictures = [camera.show(each) for each in frames]
    assert isinstance(pictures[0], velmo.Picture) and (pictures[0] != pictures[4]).any()
    assert all((sent.show(each) == picture).all() for each, picture in zip(frames, pictures))


def test_a_camera_cleans_what_show_paints_and_writes_into_arrays():
    one, two = velmo.Camera(denoise=True, range="p1:p99"), velmo.Camera(denoise=True, range="p1:p99")
    clean, picture = np.empty((120, 160), np.uint16), np.empty((120, 160, 3), np.uint8)
    for n in range(4):
        assert one.clean(frame(seed=n), out=clean) is clean
        assert one.paint(clean, picture) is picture
        assert (two.show(frame(seed=n)) == picture).all()
    assert clean.std() < frame().std() / 2
    with pytest.raises(ValueError, match="out: shape 120 x 160, where rows x cols x 3"):
        one.show(frame(), np.empty((120, 160), np.uint8))
    with pytest.raises(TypeError, match="uint16 is needed"):
        one.show(frame().astype(np.int32))
    assert one.show(np.zeros((0, 0), np.uint16)).size == 0


def test_bad_pixels_of_a_calibration_are_replaced(tmp_path):
    bad = np.zeros((120, 160), np.int32)
    bad[50, 60] = 1
    velmo.write_pixel_map(tmp_path / "map.pgm", bad)
    raw = frame()
    raw[50, 60] = 65535
    for given in (velmo.BadPixelTools.calculate_replace_pixels(bad, 5), velmo.replacements_of(bad), bad, tmp_path / "map.pgm"):
        clean = pickle.loads(pickle.dumps(velmo.Camera(bad_pixels=given))).clean(raw)
        assert abs(int(clean[50, 60]) - 30000) < 50 and (clean != raw).sum() == 1
    bad[20:60, 20:70] = 1  # far wider than the usual radius
    assert len(velmo.replacements_of(bad)) == 2000 and velmo.Camera(bad_pixels="auto", flat=None).stages
    with pytest.raises(velmo.Error, match="outside the frames of 0x0"):
        velmo.Camera(bad_pixels=bad).clean(np.zeros((0, 0), np.uint16))


def test_a_flat_field_is_learnt_and_taken_off(tmp_path):
    offsets = np.random.default_rng(5).normal(0, 500, (120, 160))
    learner = velmo.FlatLearner()
    for n in range(8):
        learner.add((frame(seed=n) + offsets).astype(np.uint16))
        learner.add_other((frame(seed=n, level=34000) + 1.1 * offsets).astype(np.uint16))
    flat = learner.learn()
    assert flat.shape == (3, 120, 160) and flat.dtype == np.float32 and not flat[2].any()
    np.save(tmp_path / "flat.npy", flat)
    raw = (frame(seed=99, level=32000) + 1.05 * offsets).astype(np.uint16)
    one, other = velmo.Camera(flat=flat), velmo.Camera(flat=str(tmp_path / "flat.npy"))
    clean = pickle.loads(pickle.dumps(one)).clean(raw)
    assert clean.std() < 20 < raw.std() and (clean == other.clean(raw)).all()
    with pytest.raises(velmo.Error, match="20x20 at one temperature, of 160x120"):
        learner.add(np.zeros((20, 20), np.uint16))


def test_blobs_keep_their_label():
    camera = velmo.Camera(above=40000)
    for n in range(3):
        scene = frame(seed=n)
        scene[20 : 30, 40 + n : 60 + n] = 50000 + n
        measured = camera.measure(camera.clean(scene))
        (blob,) = measured.blobs
        assert "1 blobs" in repr(measured) and "200 pixels in 20x10" in repr(blob)
        assert (blob.label, blob.box, blob.centre) == (1, (40 + n, 20, 20, 10), (49.5 + n, 24.5))
        assert (blob.high, measured.high, len(blob.points)) == (50000 + n, 50000 + n, 200)
    assert camera.path(1).tolist() == [[49.5, 24.5], [50.5, 24.5], [51.5, 24.5]]
    with pytest.raises(velmo.Error, match="99"):
        camera.path(99)


def test_values_have_temperatures():
    scale = velmo.Scale("centikelvin")
    values = np.array([[0, 27315, 31000]], np.uint16)
    assert np.allclose(scale.celsius(values), [[-273.15, 0, 36.85]]) and scale.slope(30000) == pytest.approx(0.01)
    out = np.empty((1, 3), np.float32)
    assert scale.celsius(values, out) is out and (scale.table[values] == out).all()
    assert pickle.loads(pickle.dumps(scale)).text == "centikelvin"
    warm = velmo.Radiometry(emissivity=0.5, reflected=20)
    assert warm.object(20) == pytest.approx(20) and warm.apparent(warm.object(60)) == pytest.approx(60)
    assert scale.of_objects(warm).celsius(values)[0, 2] > 40
    assert scale.doubt(29515) == "" and "-" in scale.doubt(8000, degrees="C")
    assert velmo.dew_point(20, 100) == pytest.approx(20, abs=0.01)
    for call in (
        lambda: velmo.Scale().celsius(values),
        lambda: velmo.Scale("furlongs"),
        lambda: velmo.Radiometry(emissivity=0),
    ):
        with pytest.raises(velmo.Error):
            call()


def test_noise_shapes_and_bad_pixels_are_measured():
    noise, search, any_scene = velmo.NoiseMeter(), velmo.PixelDetection(min_count=1), velmo.PixelSearch()
    shapes = velmo.ShapeMeter(velmo.Scale("centikelvin"))
    assert [shapes.add("box", "10,20,4,3"), shapes.add("spot", "80,60"), shapes.add("whole")] == ["box1", "spot1", "whole"]
    shapes.add_delta("box1-spot1")
    for n in range(6):
        image = frame(seed=n)
        image[20:23, 10:14] += 500
        image[99, 99] = 32000
        noise.add(image)
        search.add(image)
        any_scene.add(image)
        figures = shapes.measure(image)
    assert noise.figures()["temporal"] == pytest.approx(11.5, rel=0.05)  # 40 equal steps: 40 / sqrt(12)
    assert figures["box1"]["pixels"] == 12 and figures["box1"]["low_at"][0] in range(10, 14)
    assert figures["box1"]["mean"] == pytest.approx(image[20:23, 10:14].mean() / 100 - 273.15)
    assert figures["box1-spot1"] == pytest.approx(figures["box1"]["mean"] - figures["spot1"]["mean"])
    found = search.map()
    assert found[99, 99] and np.count_nonzero(found) < 20 and "99,99" in velmo.pixel_list(found)
    assert velmo.draw_bad_pixels(image, found).shape[0] >= 120
    odd = any_scene.find()
    assert odd["faults"][99, 99] == any_scene.FAULTS["stuck"] and odd["map"][99, 99] and odd["deviations"][99, 99] > 4 and odd["frames"] == 6 and "99,99" in odd["list"]
    for call, error in (
        (lambda: velmo.PixelSearch().find(), velmo.Error),
        (lambda: shapes.add("circle", "1,2"), ValueError),
        (lambda: shapes.measure(image[:20]), velmo.Error),
        (lambda: noise.add(image[:20]), velmo.Error),
        (lambda: velmo.FidelityMeter().add(image, image[1:]), ValueError),
    ):
        with pytest.raises(error):
            call()


@pytest.mark.parametrize("name", ["run", "run.tiff", "run.npy", "run.mkv"])
def test_frames_come_back_bit_for_bit(tmp_path, name):
    frames = [frame(seed=n) for n in range(3)]
    with velmo.FrameWriter(tmp_path / name, expected=3) as writer:
        for each in frames:
            writer.write(each)
    with velmo.open(path for path in [tmp_path / name]) as recording:
        assert recording.count in (3, None) and name in repr(recording)
        read = list(recording)
    assert len(read) == 3 and all((left == right).all() for left, right in zip(frames, read))
    assert list(recording) == []


def test_raw_frames_need_their_shape(tmp_path):
    np.stack([frame(6, 8, n) for n in range(2)]).astype(">u2").tofile(tmp_path / "run.raw")
    read = list(velmo.open(str(tmp_path / "run.raw"), raw=(6, 8), big_endian=True))
    assert (read[1] == frame(6, 8, 1)).all() and len(read) == 2
    with pytest.raises(velmo.Error, match="run.raw"):
        list(velmo.open(tmp_path / "run.raw", raw=(7, 8)))
    with pytest.raises(velmo.Error, match="missing"):
        velmo.open([tmp_path / "missing"])


def test_what_goes_wrong_leaves_no_film_behind(tmp_path):
    camera = velmo.Camera()
    with velmo.PictureWriter(tmp_path / "film.avi", fps=9) as film:
        for n in range(3):
            film.write(camera.show(frame(seed=n)))
    first = (tmp_path / "film.avi").read_bytes()
    with pytest.raises(KeyboardInterrupt):
        with velmo.PictureWriter(tmp_path / "film.avi") as film:
            film.write(camera.show(frame()))
            raise KeyboardInterrupt
    with pytest.raises(velmo.Error, match="behind the end"):
        film.write(camera.show(frame()))
    assert (tmp_path / "film.avi").read_bytes() == first and len(list(tmp_path.iterdir())) == 1


def test_pictures_palettes_maps_and_records_are_files(tmp_path):
    picture = velmo.Camera().show(frame())
    velmo.write_picture(tmp_path / "picture.png", picture)
    assert (velmo.read_picture(tmp_path / "picture.png") == picture).all()
    velmo.write_palette_file(tmp_path / "mine.xml", "Mine", velmo.palette("ironbow"))
    assert velmo.load_palette_file(tmp_path / "mine.xml") == "Mine" and "Mine" in velmo.palette_names()
    bad = np.zeros((120, 160), np.int32)
    bad[5, 6] = 64
    for ending in ("pgm", "npy", "csv", "png"):
        velmo.write_pixel_map(tmp_path / f"map.{ending}", bad)
        assert (velmo.read_pixel_map(tmp_path / f"map.{ending}", shape=(120, 160)) == bad).all()
    records = velmo.BadPixelTools.calculate_replace_pixels(bad, 5)
    velmo.write_records(tmp_path / "records.pgm", records)
    assert (velmo.read_records(tmp_path / "records.pgm") == records).all()
    for records in (str(tmp_path / "records.pgm"), "auto"):
        assert velmo.Camera({"pixels/records": records}).stages
    lens = velmo.make_lens_map(-0.2, 0, 150, 150, 80, 60, (120, 160))
    velmo.write_lens_map(tmp_path / "lens.pam", lens)
    straight = velmo.DistortionCorrection.load_pixel_corr_info_from_pxm(tmp_path / "lens.pam", 120, 160)
    assert straight["weights"].tolist() == lens[..., 2:].reshape(-1, 4).tolist()
    wall = np.full((120, 160), 30000, np.uint16)
    assert (velmo.undistort(wall, straight) == wall).all()
    sheet = velmo.contact_sheet([("one", picture), ("two", velmo.enlarge(picture, 2))], columns=2)
    assert sheet.shape[1] > 2 * 320
