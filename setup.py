"""Makes the wheel of the Python package velmo: `pip wheel --no-build-isolation --no-deps .`

CMake builds what is in it: the module, the libraries behind it, and the Python files. A build tree that
stands already serves as well: VELMO_BUILD_DIR names it.
"""

import os
import pathlib
import re
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).resolve().parent
OPTIONS = ["-DCMAKE_BUILD_TYPE=Release", "-DVELMO_BUILD_PYTHON=ON", f"-DPython3_EXECUTABLE={sys.executable}"]
OPTIONS += [f"-DVELMO_BUILD_{part}=OFF" for part in ("APPS", "TESTS", "BENCH")]


class BuildByCMake(build_ext):
    def run(self):
        tree = os.environ.get("VELMO_BUILD_DIR")
        if not tree:
            tree = os.path.abspath(self.build_temp)
            subprocess.check_call(["cmake", "-S", ROOT, "-B", tree, *OPTIONS])
            jobs = str(os.cpu_count() or 1)  # without a number, make starts all at once
            subprocess.check_call(["cmake", "--build", tree, "--target", "velmo_python", "--parallel", jobs])
        prefix = os.path.abspath(self.build_lib)
        subprocess.check_call(["cmake", "--install", tree, "--component", "wheel", "--prefix", prefix])


(ROOT / "build").mkdir(exist_ok=True)
setup(
    name="velmo",
    version=re.search(r"VERSION (\d+\.\d+\.\d+)", (ROOT / "CMakeLists.txt").read_text())[1],
    description="Thermal cameras: building blocks, the whole camera and recordings, on numpy arrays",
    python_requires=">=3.9",
    install_requires=["numpy"],
    packages=[],
    ext_modules=[Extension("velmo._velmo", [])],
    cmdclass={"build_ext": BuildByCMake},
    options={"egg_info": {"egg_base": "build"}},
)
