"""Where the host program and the shared library are: the environment first,
then the build folder beside the package (python/../build), then the system."""

from __future__ import annotations

import ctypes.util
import os
import shutil

# python/norvik/locate.py -> the repository root, whose build/ holds the
# freshly built host and library.
_PACKAGE = os.path.dirname(os.path.abspath(__file__))
_ROOT = os.path.dirname(os.path.dirname(_PACKAGE))


class NotFound(FileNotFoundError):
    """The host or the library is nowhere to be found; the message says where
    it was looked for and how to point at it."""


def host_program() -> str:
    """The ``norvik`` host: $NORVIK_HOST, ../build/app/norvik, or ``norvik`` on PATH."""
    env = os.environ.get("NORVIK_HOST")
    if env:
        if not os.path.isfile(env) or not os.access(env, os.X_OK):
            raise NotFound(f"NORVIK_HOST={env} is not an executable file")
        return os.path.abspath(env)
    beside = os.path.join(_ROOT, "build", "app", "norvik")
    if os.path.isfile(beside) and os.access(beside, os.X_OK):
        return beside
    found = shutil.which("norvik")
    if found:
        return os.path.abspath(found)
    raise NotFound(
        f"cannot find the norvik host: set NORVIK_HOST to it, build it as {beside}, "
        "or put it on PATH"
    )


def shared_library() -> str:
    """libnorvik: $NORVIK_LIBRARY, ../build/libnorvik.so, or the system's."""
    env = os.environ.get("NORVIK_LIBRARY")
    if env:
        if not os.path.isfile(env):
            raise NotFound(f"NORVIK_LIBRARY={env} is not a file")
        return os.path.abspath(env)
    beside = os.path.join(_ROOT, "build", "libnorvik.so")
    if os.path.isfile(beside):
        return beside
    found = ctypes.util.find_library("norvik")
    if found:
        return found
    raise NotFound(
        f"cannot find libnorvik: set NORVIK_LIBRARY to it, build it as {beside}, "
        "or install it where the dynamic loader looks"
    )
