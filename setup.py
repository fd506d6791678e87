# SPDX-License-Identifier: Apache-2.0
"""The Python module with the library in it, built by CMake for pip.

CMAKE_ARGS of the environment is handed to CMake.
"""
import os
import pathlib
import re
import shlex
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).resolve().parent


class CMakeBuild(build_ext):
    def build_extension(self, ext):
        build = pathlib.Path(self.build_temp).resolve()
        options = {"CMAKE_BUILD_TYPE": "Release", "ORUMLOX_PYTHON": "ON",
                   "ORUMLOX_PYTHON_LIBRARY": "orumlox_static",
                   "ORUMLOX_TESTS": "OFF", "ORUMLOX_TOOLS": "OFF",
                   "ORUMLOX_EXAMPLES": "OFF", "ORUMLOX_INSTALL": "OFF",
                   "Python_EXECUTABLE": sys.executable}
        # Choices of an earlier build do not count.
        (build / "CMakeCache.txt").unlink(missing_ok=True)
        subprocess.run(
            ["cmake", "-S", str(ROOT), "-B", str(build),
             *(f"-D{name}={value}" for name, value in options.items()),
             *shlex.split(os.environ.get("CMAKE_ARGS", ""))], check=True)
        subprocess.run(
            ["cmake", "--build", str(build), "--target", "orumlox_python",
             "--parallel", str(os.cpu_count())], check=True)
        made = build / "python/orumlox" / pathlib.Path(
            self.get_ext_filename(ext.name)).name
        self.copy_file(str(made), self.get_ext_fullpath(ext.name))


version = re.findall(r"^#define ORUMLOX_VERSION_\w+ (\d+)$",
                     (ROOT / "include/orumlox/version.h").read_text(), re.M)
setup(version=".".join(version), cmdclass={"build_ext": CMakeBuild},
      ext_modules=[Extension("orumlox._orumlox", [])])
