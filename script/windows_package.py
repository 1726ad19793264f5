"""The package for Windows: build/package/kestvox-VERSION-windows.zip, and its checksum beside it."""
import hashlib
import os
import re
import subprocess
import tempfile
import zipfile
from pathlib import Path

from package_version import TREE

PROGRAMS = TREE / "build" / "windows" / "bin"
SETUP = "oemsetup.inf"
# What is at the top of the package; the pages lie as in the tree, so that their links hold.
BUILT = ["kestvox.dll", "kestvox.hlp", "kestvox.exe", "kestsim.dll", "winmm.dll", "bench_player.exe"]
PAGES = ["README.md", "CHANGELOG.md", "CONTRIBUTING.md"]
SUMS = "SHA256SUMS"
TIME = (1996, 8, 1, 0, 0, 0)  # of every file in it; the format knows none before 1980


def package_file(version):
    return TREE / "build" / "package" / ("kestvox-%s-windows.zip" % version)


def read(path):
    """Its bytes; what Windows itself reads has Windows' line ends."""
    data = path.read_bytes()
    return data.replace(b"\n", b"\r\n") if path.name == SETUP else data


def contents():
    """Path in the package, bytes, and whether it is a program, in the order of the archive."""
    files = {name: PROGRAMS / name for name in BUILT}
    files.update({name: TREE / name for name in PAGES})
    tracked = subprocess.run(["git", "ls-files", "docs"], cwd=TREE, check=True, capture_output=True, text=True)
    files.update({name: TREE / name for name in tracked.stdout.split()})
    files["run-on-bench"] = TREE / "docs" / "bench" / "run-on-bench"
    files[SETUP] = TREE / "package" / "windows" / SETUP
    packed = [(name, read(path), path.stat().st_mode & 0o100 != 0) for name, path in sorted(files.items())]
    sums = "".join("%s  %s\n" % (hashlib.sha256(data).hexdigest(), name) for name, data, _ in packed)
    return packed + [(SUMS, sums.encode(), False)]


def make(version):
    subprocess.run([TREE / "script" / "build", "windows"], check=True)
    package = package_file(version)
    package.parent.mkdir(parents=True, exist_ok=True)
    with zipfile.ZipFile(package, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name, data, runs in contents():
            entry = zipfile.ZipInfo("%s/%s" % (package.stem, name), TIME)
            entry.create_system = 3  # which keeps the permission to run
            entry.external_attr = (0o100755 if runs else 0o100644) << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, data)
    digest = hashlib.sha256(package.read_bytes()).hexdigest()
    package.with_suffix(".zip.sha256").write_text("%s  %s\n" % (digest, package.name))
    print("%s  %s" % (digest, package.relative_to(TREE)))


def unpack(package, folder):
    with zipfile.ZipFile(package) as archive:
        for entry in archive.infolist():
            os.chmod(archive.extract(entry, folder), entry.external_attr >> 16)


def sections(text):
    """{section: its lines}, without comments."""
    found = {}
    for line in (line.split(";")[0].strip() for line in text.splitlines()):
        if line.startswith("["):
            lines = found.setdefault(line.strip("[]"), [])
        elif line:
            lines.append(line)
    return found


def constant(source, name):
    """The first text of a constant in a source of the tree."""
    return re.search(r"\b%s\[\] = \{?TEXT\(\"(.*?)\"\)" % name, (TREE / source).read_text())[1]


def check_setup(unpacked):
    """What is wrong with the set-up file: it enters the driver as `kestvox install` does, and all of it is there."""
    parts = sections((unpacked / SETUP).read_text())
    disks = {line.split("=")[0].strip() for line in parts["disks"]}
    wrong = []
    for disk, name in re.findall(r"\b(\d+):([\w.]+)", "\n".join(sum(parts.values(), []))):
        if disk not in disks or not (unpacked / name).exists():
            wrong.append("%s names %s on disk %s, which is not in the package" % (SETUP, name, disk))
    install = "tools/commands/install_command.cpp"
    expected = [constant("tools/system/driver_handle.h", "DriverFile"), constant(install, "WaveAliases"),
                constant(install, "Description")]
    drivers = [line.partition("=") for line in parts["Installable.Drivers"]]
    entered = [[field.strip(' "').rpartition(":")[2] for field in fields.split(",")][:3] for _, _, fields in drivers]
    if entered != [expected]:
        wrong.append("%s enters %s, and the command %s" % (SETUP, entered, expected))
    known = {"Source Media Descriptions", "disks", "Installable.Drivers"} | {key.strip() for key, _, _ in drivers}
    wrong += ["%s has a section of its own, %s" % (SETUP, name) for name in sorted(set(parts) - known)]
    return wrong


def check(version):
    """The answer is a list of what is wrong."""
    package = package_file(version)
    with tempfile.TemporaryDirectory(prefix="kestvox-package-") as folder:
        subprocess.run(["sha256sum", "--check", "--quiet", package.name + ".sha256"], cwd=package.parent, check=True)
        unpack(package, folder)
        unpacked = Path(folder) / package.stem
        subprocess.run(["sha256sum", "--check", "--quiet", SUMS], cwd=unpacked, check=True)
        wrong = check_setup(unpacked)
        if subprocess.run([TREE / "script" / "check-bench", unpacked]).returncode != 0:
            wrong.append("the bench in it does not do what docs/bench.md says")
        return wrong
