"""Builds the extension module with the project's CMake, for the interpreter running this
script, and places it in the package; the library and the command's core are linked in
statically, so the installed package needs nothing else of the project."""

import os
import shutil
import subprocess
import sys
import sysconfig

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)


class CMakeExtension(Extension):
    def __init__(self, name):
        super().__init__(name, sources=[])


class CMakeBuild(build_ext):
    def build_extension(self, ext):
        if not os.path.exists(os.path.join(ROOT, "CMakeLists.txt")):
            raise RuntimeError("setup.py builds from the parcelvane source tree: install with pip install ./python")
        cmake = shutil.which("cmake")
        if cmake is None:
            raise RuntimeError("CMake 3.25 or later is needed (Debian: apt-get install cmake)")
        build_dir = os.path.abspath(os.path.join(self.build_temp, "cmake"))
        os.makedirs(build_dir, exist_ok=True)
        configure = [
            cmake, "-S", ROOT, "-B", build_dir,
            "-DCMAKE_BUILD_TYPE=Release",
            "-DPython_EXECUTABLE=" + sys.executable,
            "-DPARCELVANE_PYTHON=ON",
            "-DPARCELVANE_BUILD_TOOLS=ON",
            "-DPARCELVANE_BUILD_TESTS=OFF",
            "-DPARCELVANE_BUILD_BENCH=OFF",
            "-DPARCELVANE_BUILD_FUZZ=OFF",
        ]
        try:
            import pybind11

            configure.append("-Dpybind11_DIR=" + pybind11.get_cmake_dir())
        except ImportError:
            pass  # CMake looks for Debian's pybind11-dev itself
        if shutil.which("ccache"):
            configure.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
        configure += os.environ.get("PARCELVANE_CMAKE_ARGS", "").split()
        jobs = os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL", "2")
        subprocess.check_call(configure)
        subprocess.check_call([cmake, "--build", build_dir, "--target", "parcelvane_python", "-j", jobs])
        suffix = sysconfig.get_config_var("EXT_SUFFIX")
        built = os.path.join(build_dir, "python", "parcelvane", "_native" + suffix)
        target = self.get_ext_fullpath(ext.name)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        shutil.copyfile(built, target)


setup(ext_modules=[CMakeExtension("parcelvane._native")], cmdclass={"build_ext": CMakeBuild})
