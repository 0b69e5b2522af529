#!/usr/bin/env python3
"""Goes through a folder of recordings, one recording a task, on the cores of this machine or on a cluster.

Writes OUT/figures.csv, a line per recording, and OUT/NAME.png, the last frame of each raw and clean. A
recording that fails is reported with its name and does not stop the rest.
"""

import argparse
import csv
import pathlib
import sys

import velmo
from distributed import Client, LocalCluster, as_completed


def examine(path, settings):
    """A recording's figures and its picture: what a worker does."""
    with velmo.open(path) as recording:
        raw_camera, camera = (velmo.Camera(each, unit=recording.unit) for each in (velmo.Settings(), settings))
        before, after = velmo.NoiseMeter(), velmo.NoiseMeter()
        for raw in recording:
            clean = camera.clean(raw)
            before.add(raw)
            after.add(clean)
        if not before.figures()["frames"]:
            raise ValueError("no frames")
        figures = {"frames": before.figures()["frames"], "unit": recording.unit or "counts"}
    figures |= {"noise": before.figures()["temporal"], "noise_clean": after.figures()["temporal"]}
    if camera.scale.has_degrees:
        degrees = camera.scale.celsius(clean)
        figures |= {"low": degrees.min(), "mean": degrees.mean(), "high": degrees.max()}
    return figures, velmo.contact_sheet([("raw", raw_camera.show(raw)), ("clean", camera.paint(clean))], columns=2)


def progress(done, count, failed):
    bar = "#" * (40 * done // count)
    print(f"\r[{bar:40}] {done}/{count}{f', {failed} failed' if failed else ''}", end="", file=sys.stderr, flush=True)


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path, help="whose files and folders are the recordings")
    parser.add_argument("out", type=pathlib.Path, help="folder of the results")
    parser.add_argument("--scheduler", help="address of a cluster, such as tcp://host:8786; without it, this machine")
    parser.add_argument("--workers", type=int, default=2, help="processes on this machine [2]")
    parser.add_argument("--settings", type=pathlib.Path, help="as 'thermal settings' writes a file")
    parser.add_argument("--option", action="append", default=[], metavar="NAME=VALUE", help="such as denoise=true")
    return parser.parse_args()


def main():
    chosen = arguments()
    settings = velmo.Settings.read(chosen.settings) if chosen.settings else velmo.Settings()
    settings = velmo.Settings(settings, **dict(option.split("=", 1) for option in chosen.option))
    paths = sorted(path for path in chosen.folder.resolve().iterdir() if not path.name.startswith("."))
    chosen.out.mkdir(parents=True, exist_ok=True)

    cluster = chosen.scheduler or LocalCluster(
        n_workers=chosen.workers, threads_per_worker=1, processes=True, dashboard_address=None
    )
    results, failed = {}, {}
    with Client(cluster) as client:
        tasks = {client.submit(examine, str(path), settings, pure=False): path for path in paths}
        for task in as_completed(tasks):
            name = tasks[task].name
            if task.status == "error":
                failed[name] = str(task.exception())
            else:
                results[name], picture = task.result()
                velmo.write_picture(chosen.out / f"{name}.png", picture)
            progress(len(results) + len(failed), len(paths), len(failed))
    if not chosen.scheduler:
        cluster.close()
    print(file=sys.stderr)

    columns = ["recording", "frames", "unit", "noise", "noise_clean", "low", "mean", "high"]
    with open(chosen.out / "figures.csv", "w", newline="") as file:
        table = csv.DictWriter(file, columns)
        table.writeheader()
        table.writerows({"recording": name} | results[name] for name in sorted(results))
    for name, reason in sorted(failed.items()):
        print(f"{name}: {reason}", file=sys.stderr)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
