"""The page for Python and its examples do what they say."""

import csv
import os
import pathlib
import re
import subprocess
import sys

import numpy as np
import pytest
import velmo

ROOT = pathlib.Path(__file__).resolve().parents[2]


def test_the_code_of_the_page_runs_and_makes_its_picture(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    page = (ROOT / "docs/python.md").read_text()
    blocks = re.findall(r"```python\n(.*?)```", page, re.DOTALL)
    names = {}
    for block in blocks:
        exec(compile(block, "docs/python.md", "exec"), names)
    assert len(list(csv.reader(open("temperatures.csv")))) == 40 and pathlib.Path("film.avi").stat().st_size > 20000
    shown, made = velmo.read_picture(ROOT / "docs/pictures/python.png"), velmo.read_picture("python.png")
    assert shown.shape == made.shape and np.abs(shown.astype(int) - made).mean() < 1


def test_an_archive_is_examined_by_two_processes(tmp_path):
    pytest.importorskip("distributed")
    (tmp_path / "in").mkdir()
    for name in ("one", "two"):
        with velmo.FrameWriter(tmp_path / "in" / f"{name}.npy", unit="centikelvin") as writer:
            for n in range(5):
                writer.write(np.random.default_rng(n).integers(29980, 30020, (60, 80)).astype(np.uint16))
    (tmp_path / "in" / "broken.png").write_bytes(b"no picture")
    command = [sys.executable, ROOT / "docs/examples/archive.py", tmp_path / "in", tmp_path / "out"]
    done = subprocess.run(
        [*command, "--option", "denoise=true"], capture_output=True, text=True, timeout=400, env=os.environ
    )
    assert done.returncode == 1 and "broken.png: " in done.stderr and "3/3, 1 failed" in done.stderr
    rows = list(csv.DictReader(open(tmp_path / "out" / "figures.csv")))
    assert [row["recording"] for row in rows] == ["one.npy", "two.npy"] and rows[0]["frames"] == "5"
    assert float(rows[0]["noise_clean"]) < float(rows[0]["noise"]) == pytest.approx(11.5, rel=0.1)
    assert velmo.read_picture(tmp_path / "out" / "one.npy.png").shape[1] > 160


def test_the_benchmark_runs():
    done = subprocess.run([sys.executable, ROOT / "bench/bench_python.py", "--quick"], capture_output=True, text=True)
    assert done.returncode == 0 and "overhead" in done.stdout, done.stderr
