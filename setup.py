"""Builds the compiled modules of zyn3dgradop by CMake; pyproject.toml has the rest.

The environment variable ZYN_PARALLEL_HOST, ON or OFF, says whether to build what reads meshes on several MPI ranks. By
default it is built where MPI, METIS and PT-Scotch are installed. CMAKE_ARGS is passed on to CMake.
"""

import os
import re
import shlex
import shutil
import subprocess
import sys
from pathlib import Path

import pybind11
from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = Path(__file__).parent.resolve()


def version():
    """The version of the library, of which its header is the one place."""
    header = (ROOT / "foundation" / "Zyn3dGradOpVersion.h").read_text()
    return ".".join(re.findall(r"VERSION_(?:MAJOR|MINOR|PATCH) (\d+)$", header, re.MULTILINE))


def parallel_host():
    wanted = os.environ.get("ZYN_PARALLEL_HOST")
    if wanted is not None:
        return wanted
    folders = [Path(prefix, "include", folder) for prefix in ("/usr", "/usr/local") for folder in ("", "scotch-int64")]
    has_partitioners = all(any((folder / name).exists() for folder in folders) for name in ("metis.h", "ptscotch.h"))
    return "ON" if has_partitioners and shutil.which("mpicxx") else "OFF"


class CMakeBuild(build_ext):
    """One run of CMake makes all compiled modules."""

    def run(self):
        build = Path(self.build_temp).resolve()
        generator = ["-G", "Ninja"] if shutil.which("ninja") else []
        subprocess.run(
            [
                "cmake", "-S", ROOT, "-B", build, *generator,
                "-DCMAKE_BUILD_TYPE=Release",
                "-DZYN_BUILD_PYTHON=ON",
                "-DZYN_BUILD_TESTS=OFF",
                "-DZYN_BUILD_TOOL=OFF",
                "-DZYN_UNITY_BUILD=ON",
                f"-DZYN_PARALLEL_HOST={parallel_host()}",
                f"-DPython3_EXECUTABLE={sys.executable}",
                f"-Dpybind11_DIR={pybind11.get_cmake_dir()}",
                *shlex.split(os.environ.get("CMAKE_ARGS", "")),
            ],
            check=True,
        )
        jobs = os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL", str(os.cpu_count()))
        subprocess.run(["cmake", "--build", build, "--target", "zyn3dgradop_python", "--parallel", jobs], check=True)

        # An editable installation imports the sources, so the modules go beside them.
        package = ROOT / "python" if self.inplace or self.editable_mode else Path(self.build_lib)
        target = package / "zyn3dgradop"
        target.mkdir(parents=True, exist_ok=True)
        for module in sorted((build / "python" / "zyn3dgradop").glob("*.so")):
            shutil.copy2(module, target)

    def get_outputs(self):
        return [str(path) for path in Path(self.build_lib, "zyn3dgradop").glob("*.so")]


setup(
    version=version(),
    ext_modules=[Extension("zyn3dgradop._core", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
)
