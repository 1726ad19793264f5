"""The version that packages tell of themselves."""
import re
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent


def version():
    major, minor = re.search(r"project\(kestvox VERSION (\d+)\.(\d+)", (TREE / "CMakeLists.txt").read_text()).groups()
    return "%s.%02d" % (major, int(minor))
