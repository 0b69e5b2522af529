#!/usr/bin/env python3
"""Plants the faults of the lists beside this file, one at a time, and says which the tests let pass.

usage: plant.py [REGEX]   only faults whose file, text or replacement match

A list holds faults one after another:

    path/of/the/file.cpp [under PRESET]
    -the text, which stands in that file once (several lines, each with its -)
    +what is planted in its place (nothing, or several lines)

Lines that begin with # are comments. Works in a copy of the tree below build/mutants; the sources of the person
stay as they are.
"""
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
TREE = ROOT / "build" / "mutants" / "tree"
SECONDS = 300  # for each program of tests: a fault may make them hang

WITHOUT_FAULT = []  # tests that fail without one say nothing about others

# Which programs of tests a fault below a folder is shown to; ninja builds what the fault changes.
PROGRAMS = {
    "core": ["imgproc_tests", "kernel_tests"],
    "vision": ["imgproc_tests", "kernel_tests", "allocation_tests", "platform_tests"],
    "camera": ["camera_tests", "allocation_tests", "apps/thermal_tests"],
    "recordings": ["recordings/recordings_tests", "apps/thermal_tests"],
    "apps": ["apps/thermal_tests"],
}


class Fault:
    def __init__(self, head):
        self.path, _, preset = head.partition(" under ")
        self.preset = preset or "release"
        self.old, self.new = [], []

    def __str__(self):
        return f"{self.path}: {' '.join(self.old).strip()} -> {' '.join(self.new).strip()}"

    def programs(self):
        programs = PROGRAMS[self.path.split("/")[0]]
        return programs[:1] if self.preset == "thread" else programs

    def planted(self, source):
        """The source with the fault; nothing if its text does not stand there exactly once."""
        old, new = "\n".join(self.old), "\n".join(self.new)
        return source.replace(old, new) if source.count(old) == 1 else None


def faults():
    for path in sorted(pathlib.Path(__file__).parent.glob("*.faults")):
        fault = None
        for line in path.read_text().splitlines():
            if line.startswith("-"):
                fault.old.append(line[1:])
            elif line.startswith("+"):
                fault.new.append(line[1:])
            elif line and not line.startswith("#"):
                if fault:
                    yield fault
                fault = Fault(line)
        if fault:
            yield fault


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, errors="replace", **options)


def copy_tree():
    """Brings the copy up to date; what has not changed keeps its time, so that little is built again."""
    names = run("git", "ls-files", "-z", "--cached", "--others", "--exclude-standard", cwd=ROOT).stdout
    wanted = {name for name in names.split("\0") if name and (ROOT / name).is_file()}
    for name in wanted:
        source, target = ROOT / name, TREE / name
        content = source.read_bytes()
        if not target.exists() or target.read_bytes() != content:
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(content)
            target.chmod(source.stat().st_mode)
    for path in TREE.rglob("*"):
        name = path.relative_to(TREE).as_posix()
        if path.is_file() and not name.startswith("build/") and name not in wanted:
            path.unlink()


def build(preset, programs):
    folder = TREE / "build" / preset
    if not (folder / "build.ninja").exists():
        result = run("cmake", "--preset", preset, "-DVELMO_BUILD_BENCH=OFF", cwd=TREE)
        if result.returncode != 0:
            return result
    jobs = os.environ.get("MUTANTS_JOBS", str(os.cpu_count()))
    return run("ninja", "-C", str(folder), "-j", jobs, *(f"tests/{program}" for program in programs))


def failures(preset, programs, *options):
    """The tests that fail, and what else went wrong."""
    failed = []
    for program in programs:
        path = TREE / "build" / preset / "tests" / program
        only = "*Thread*" if preset == "thread" else "*"
        try:
            result = run(str(path), "--gtest_brief=1", f"--gtest_filter={only}-{':'.join(WITHOUT_FAULT)}", *options,
                         cwd=path.parent, timeout=SECONDS)
        except subprocess.TimeoutExpired:
            return failed + [f"{program} hangs"]
        names = dict.fromkeys(re.findall(r"\[  FAILED  \] ([^\s,(]+\.[^\s,(]+)", result.stdout))
        if result.returncode != 0:
            failed += names or [f"{program} ends with {result.returncode}"]
        if failed and options:
            break
    return failed


def plant(fault):
    """What became of the fault: "killed", "survived", "does not build" or "not found"; and by what."""
    path = TREE / fault.path
    source = path.read_text() if path.exists() else ""
    changed = fault.planted(source)
    if changed is None:
        return "not found", ""
    programs = fault.programs()
    path.write_text(changed)
    try:
        built = build(fault.preset, programs)
        if built.returncode != 0:
            return "does not build", "\n".join(built.stdout.splitlines()[-15:])
        failed = failures(fault.preset, programs, "--gtest_fail_fast")
        return ("killed", failed[0]) if failed else ("survived", "")
    finally:
        path.write_text(source)


def main():
    pattern = re.compile(sys.argv[1] if len(sys.argv) > 1 else "")
    chosen = [fault for fault in faults() if pattern.search(str(fault))]
    if not chosen:
        sys.exit("No fault matches!")
    copy_tree()
    for preset, programs in {(fault.preset, tuple(fault.programs())): None for fault in chosen}:
        built = build(preset, programs)
        if built.returncode != 0:
            sys.exit(f"Without a fault {preset} does not build:\n{built.stdout[-2000:]}{built.stderr[-2000:]}")
        WITHOUT_FAULT.extend(failures(preset, programs))
    if WITHOUT_FAULT:
        print("fail without a fault:", *WITHOUT_FAULT)
    ends = {}
    for number, fault in enumerate(chosen, 1):
        end, by = plant(fault)
        ends.setdefault(end, []).append(fault)
        print(f"{number}/{len(chosen)} {end:8} {fault}" + (f"\n    {by}" if by else ""), flush=True)
    print(", ".join(f"{len(of)} {end}" for end, of in ends.items()))
    sys.exit(set(ends) != {"killed"})


if __name__ == "__main__":
    main()
