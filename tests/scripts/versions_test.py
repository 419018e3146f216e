#!/usr/bin/python3
"""Changes the factory's settings of each family of keyboard layouts in a copy: scripts/check_versions asks for another version.

Usage: versions_test.py TREE
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile

tree = pathlib.Path(sys.argv[1])


def check(copy):
    return subprocess.run([copy / "scripts/check_versions"], capture_output=True, text=True, timeout=30, check=False)


with tempfile.TemporaryDirectory(prefix="drevix-versions-") as folder:
    copy = pathlib.Path(folder)
    files = sorted(path.relative_to(tree) for path in (tree / "resources").glob("**/Defaults.veltrana"))
    assert len(files) > 1, files
    for name in (*files, *map(pathlib.Path, ("CMakeLists.txt", "scripts/check_versions", "packaging/factory-versions"))):
        (copy / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(tree / name, copy / name)
    assert check(copy).returncode == 0, check(copy).stderr
    for name in files:
        before = (copy / name).read_bytes()
        (copy / name).write_bytes(before + b"\n")
        assert "make the version in CMakeLists.txt higher" in check(copy).stderr, f"{name} was changed"
        (copy / name).write_bytes(before)
    (copy / "resources/bepo").mkdir()
    shutil.copy(copy / files[0], copy / "resources/bepo")
    assert "make the version in CMakeLists.txt higher" in check(copy).stderr, "a family came"
