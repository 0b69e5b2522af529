#!/usr/bin/env python3
"""Plants the faults of the lists beside this file, one at a time, and says which the tests let pass.

usage: plant.py [REGEX]   only faults whose file, text or replacement match

A list holds faults one after another:

    path/of/the/file.cpp [under sanitize | under thread | found by TARGET]
    -the text, which stands in that file once (several lines, each with its -)
    +what is planted in its place (nothing, or several lines)

Lines that begin with # are comments. "under" shows a fault to the tests below that preset's sanitizer, "found by" to a
minute of that fuzz target. Works in a copy of the tree below build/mutants; the sources of the person stay as they are.
"""
import os
import pathlib
import re
import resource
import signal
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
TREE = ROOT / "build" / "mutants" / "tree"
SECONDS = 300  # for each program of tests: a fault may make them hang
SEARCH = 60  # for a fuzz target
HANGS = "was ended for the time it took"  # its own count: a slow machine may be the reason

WITHOUT_FAULT = []  # tests that fail without one say nothing about others
USED = {}  # the processor time that a program needs without a fault

# Quickly built: what is planted shows at any level, and warnings are no matter here. A compiler cache knows the
# ordinary build.
QUICK = ["-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG", "-DVELMO_TARGET_CLONES=OFF", "-DVELMO_WERROR=OFF"]
OPTIONS = {"release": ["-DVELMO_WERROR=OFF"] if "CMAKE_CXX_COMPILER_LAUNCHER" in os.environ else QUICK,
           "sanitize": [], "thread": [], "fuzz": []}

# Which programs of tests a fault below a folder is shown to, one after another; ninja builds what the fault changes.
PROGRAMS = {
    "core": ["imgproc_tests", "kernel_tests"],
    "vision": ["imgproc_tests", "kernel_tests", "allocation_tests", "platform_tests"],
    "camera": ["camera_tests", "kernel_tests", "allocation_tests", "apps/thermal_tests"],
    "recordings": ["recordings/recordings_tests", "apps/thermal_tests"],
    "apps": ["apps/thermal_tests"],
}


KERNELS = "tests/kernel_tests"  # one test of all loops, so that none is beside a file


class Fault:
    def __init__(self, head):
        self.path, _, way = head.partition(" ")
        self.target = way.removeprefix("found by ") if way.startswith("found by ") else ""
        self.preset = "fuzz" if self.target else way.removeprefix("under ") or "release"
        self.old, self.new = [], []

    def __str__(self):
        by = f" [{self.target}]" if self.target else ""
        return f"{self.path}{by}: {' '.join(self.old).strip()} -> {' '.join(self.new).strip()}"

    def programs(self):
        if self.target:
            return [f"fuzz/{self.target}"]
        programs = [f"tests/{program}" for program in PROGRAMS[self.path.split("/")[0]]]
        if re.search("Kernel|Plain|Loops|ByteShuffle", self.path):
            programs.sort(key=lambda program: program != KERNELS)
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
        result = run("cmake", "--preset", preset, "-DVELMO_BUILD_BENCH=OFF", *OPTIONS[preset], cwd=TREE)
        if result.returncode != 0:
            return result
    jobs = os.environ.get("MUTANTS_JOBS", str(os.cpu_count()))
    return run("ninja", "-C", str(folder), "-j", jobs, *programs)


def suites_beside(path):
    """The tests of the file's family: they most likely see a fault in it."""
    family = re.sub(r"(Kernel|Plain|Loops)$", "", pathlib.Path(path).stem)
    suites = set()
    for test in (TREE / "tests").rglob("*Test.cpp"):
        name = re.sub(r"(Kernel)?Test$", "", test.stem)
        if name and (family.startswith(name) or name.startswith(family)):
            suites.update(re.findall(r"^TEST(?:_F|_P)?\((\w+)", test.read_text(), re.M))
    return ":".join(f"{suite}.*:*/{suite}.*" for suite in sorted(suites))


def limited(program):
    """For a process that may hang: it ends after more than twice the processor time that it should need."""
    seconds = int(2 * USED.get(program, SECONDS) + 10)
    return lambda: resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))


def failures(preset, program, only, *options):
    """The tests that fail, or what else went wrong."""
    path = TREE / "build" / preset / program
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    try:
        result = run(str(path), "--gtest_brief=1", f"--gtest_filter={only}-{':'.join(WITHOUT_FAULT)}", *options,
                     cwd=path.parent, timeout=SECONDS, preexec_fn=limited(program))
    except subprocess.TimeoutExpired:
        return [f"{program} {HANGS}"]
    USED.setdefault(program, resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before)
    if -result.returncode in (signal.SIGKILL, signal.SIGXCPU):
        return [f"{program} {HANGS}"]
    names = dict.fromkeys(re.findall(r"\[  FAILED  \] ([^\s,(]+\.[^\s,(]+)", result.stdout))
    return list(names) or ([f"{program} ends with {result.returncode}"] if result.returncode != 0 else [])


def found(fault):
    """What the fuzz target says of the fault, and after how long; nothing if it has not found it."""
    begin, folder = time.monotonic(), TREE / "build" / "found"
    subprocess.run(["rm", "-rf", folder], check=True)
    folder.mkdir(parents=True)
    used = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    result = run(str(TREE / "build" / "fuzz" / "fuzz" / fault.target), f"-max_total_time={SEARCH}", "-timeout=10",
                 "-rss_limit_mb=2048", f"-artifact_prefix={folder}/", str(folder),
                 str(TREE / "fuzz" / "corpus" / fault.target))
    if result.returncode == 0:
        return []
    used = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - used
    said = re.findall(r"SUMMARY: \w+: (\S+)|(runtime error: .*)", result.stderr)
    runs = re.findall(r"^#(\d+)", result.stderr, re.M)
    return [f"{''.join(said[0]) if said else 'ended'} after {time.monotonic() - begin:.0f} s"
            f" ({used:.1f} s of the processor, more than {runs[-1] if runs else 0} inputs)"]


def shown(fault):
    """The tests that see a planted fault, those beside it first; what is not needed is not built."""
    if fault.target:
        built = build("fuzz", fault.programs())
        return built, found(fault) if built.returncode == 0 else []
    beside = suites_beside(fault.path)
    everything = "*Thread*" if fault.preset == "thread" else "*"
    for only in [beside, everything] if beside and fault.preset != "thread" else [everything]:
        for program in fault.programs():
            built = build(fault.preset, [program])
            which = everything if program == KERNELS else only
            failed = failures(fault.preset, program, which, "--gtest_fail_fast") if built.returncode == 0 else []
            if failed or built.returncode != 0:
                return built, failed
    return built, []


def plant(fault):
    """What became of the fault: "killed", "hangs", "survived", "does not build" or "not found"; and by what."""
    path = TREE / fault.path
    source = path.read_text() if path.exists() else ""
    changed = fault.planted(source)
    if changed is None:
        return "not found", ""
    path.write_text(changed)
    try:
        built, failed = shown(fault)
    finally:
        path.write_text(source)
    if built.returncode != 0:
        return "does not build", "\n".join(built.stdout.splitlines()[-15:])
    if not failed:
        return "survived", ""
    return "hangs" if failed[0].endswith(HANGS) else "killed", failed[0]


def main():
    pattern = re.compile(sys.argv[1] if len(sys.argv) > 1 else "")
    chosen = [fault for fault in faults() if pattern.search(str(fault))]
    if not chosen:
        sys.exit("No fault matches!")
    copy_tree()
    for preset, program in {(fault.preset, program): None for fault in chosen for program in fault.programs()}:
        built = build(preset, [program])
        if built.returncode != 0:
            sys.exit(f"Without a fault {preset} does not build:\n{built.stdout[-2000:]}{built.stderr[-2000:]}")
        if preset != "fuzz":
            WITHOUT_FAULT.extend(failures(preset, program, "*Thread*" if preset == "thread" else "*"))
    if WITHOUT_FAULT:
        print("fail without a fault:", *WITHOUT_FAULT)
    ends = {}
    for number, fault in enumerate(chosen, 1):
        end, by = plant(fault)
        ends.setdefault(end, []).append(fault)
        print(f"{number}/{len(chosen)} {end:8} {fault}" + (f"\n    {by}" if by else ""), flush=True)
    print(", ".join(f"{len(of)} {end}" for end, of in ends.items()))
    sys.exit(not set(ends) <= {"killed", "hangs"})


if __name__ == "__main__":
    main()
