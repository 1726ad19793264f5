"""The package for Debian: build/package/kestvox_VERSION_ARCHITECTURE.deb, the command with all that it needs."""
import hashlib
import os
import re
import shutil
import subprocess
import tempfile
from pathlib import Path

from package_version import TREE

BUILT = TREE / "build" / "debian"
FRAMES = TREE / "package" / "debian"
# The command finds its libraries beside itself, so the one on the search path is a link.
PROGRAMS = ["kestvox", "kestvox.so", "libkestvox_front.so", "libkestvox_platform.so"]
PRIVATE = "usr/lib/kestvox"
NOTICES = {"CLI11": "libcli11-dev", "DYGRAPHS": "libjs-dygraphs"}


def output(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout.strip()


def last_change(field):
    return output("dpkg-parsechangelog", "--file", FRAMES / "changelog", "--show-field", field)


def package_file(version):
    return TREE / "build" / "package" / ("kestvox_%s_%s.deb" % (version, output("dpkg", "--print-architecture")))


def filled_in(frame, values):
    return re.sub(r"@(\w+)@", lambda mark: str(values[mark[1]]), (FRAMES / frame).read_text())


def put(path, data):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(data if isinstance(data, bytes) else data.encode())


def zipped(path):
    return subprocess.run(["gzip", "-n9c", path], check=True, capture_output=True).stdout


def lay_out(root):
    """All that is installed, below the folder `root`."""
    for name in PROGRAMS:
        put(root / PRIVATE / name, b"")
        subprocess.run(["strip", "--strip-unneeded", "--remove-section=.comment", "-o", root / PRIVATE / name,
                        BUILT / "bin" / name], check=True)
    (root / "usr/bin").mkdir()
    (root / "usr/bin/kestvox").symlink_to("../lib/kestvox/kestvox")
    put(root / "usr/share/man/man1/kestvox.1.gz", zipped(BUILT / "man" / "kestvox.1"))
    completions = BUILT / "completion"
    put(root / "usr/share/bash-completion/completions/kestvox", (completions / "kestvox.bash").read_bytes())
    put(root / "usr/share/zsh/vendor-completions/_kestvox", (completions / "_kestvox").read_bytes())
    notices = {mark: Path("/usr/share/doc", package, "copyright").read_text().strip()
               for mark, package in NOTICES.items()}
    put(root / "usr/share/doc/kestvox/copyright", filled_in("copyright", notices))
    put(root / "usr/share/doc/kestvox/changelog.gz", zipped(FRAMES / "changelog"))


def depends(root):
    """What the programs need of the system, as its packages say which of their versions has that."""
    with tempfile.TemporaryDirectory(prefix="kestvox-depends-") as folder:
        put(Path(folder) / "debian" / "control", "Source: kestvox\n\nPackage: kestvox\nArchitecture: any\n")
        said = output("dpkg-shlibdeps", "-O", "-l%s" % (root / PRIVATE),
                      *["-e%s" % (root / PRIVATE / name) for name in PROGRAMS], cwd=folder)
    return re.search(r"^shlibs:Depends=(.+)$", said, re.M)[1]


def files_of(root):
    return sorted(path for path in root.rglob("*") if path.is_file() and not path.is_symlink())


def add_control(root, version):
    files = files_of(root)
    sums = "".join("%s  %s\n" % (hashlib.md5(path.read_bytes()).hexdigest(), path.relative_to(root))
                   for path in files)
    size = sum(-(-path.stat().st_size // 1024) for path in files)
    control = filled_in("control", {"VERSION": version, "ARCHITECTURE": output("dpkg", "--print-architecture"),
                                    "SIZE": size, "DEPENDS": depends(root)})
    put(root / "DEBIAN" / "control", control)
    put(root / "DEBIAN" / "md5sums", sums)


def set_modes_and_times(root, time):
    for path in sorted(root.rglob("*"), reverse=True) + [root]:
        if not path.is_symlink():
            runs = path.is_dir() or path == root / PRIVATE / "kestvox"
            path.chmod(0o755 if runs else 0o644)
        os.utime(path, (time, time), follow_symlinks=False)


def make(version):
    subprocess.run([TREE / "script" / "build", "debian"], check=True)
    package = package_file(version)
    package.parent.mkdir(parents=True, exist_ok=True)
    time = int(last_change("Timestamp"))
    with tempfile.TemporaryDirectory(prefix="kestvox-debian-") as folder:
        root = Path(folder) / "root"
        lay_out(root)
        add_control(root, version)
        set_modes_and_times(root, time)
        subprocess.run(["dpkg-deb", "--root-owner-group", "-Zxz", "--threads-max=1", "--build", root, package],
                       check=True, stdout=subprocess.DEVNULL, env=dict(os.environ, SOURCE_DATE_EPOCH=str(time)))
    print("%s  %s" % (hashlib.sha256(package.read_bytes()).hexdigest(), package.relative_to(TREE)))


def copy_tree(folder):
    listed = output("git", "ls-files", "-z", "--cached", "--others", "--exclude-standard", cwd=TREE)
    for name in filter(None, listed.split("\0")):
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(TREE / name, folder / name)


def check(version):
    """The answer is a list of what is wrong."""
    package, wrong = package_file(version), []
    if last_change("Version") != version:
        wrong.append("package/debian/changelog ends with %s, not %s" % (last_change("Version"), version))
    with tempfile.TemporaryDirectory(prefix="kestvox-package-") as folder:
        unpacked = Path(folder) / "unpacked"
        subprocess.run(["dpkg-deb", "--raw-extract", package, unpacked], check=True)
        subprocess.run(["md5sum", "--check", "--quiet", "DEBIAN/md5sums"], cwd=unpacked, check=True)
        wrong += ["%s has the path of this tree in it" % path.relative_to(unpacked)
                  for path in files_of(unpacked) if bytes(TREE) in path.read_bytes()]
        elsewhere = Path(folder) / "elsewhere"
        copy_tree(elsewhere)
        subprocess.run([elsewhere / "script" / "package", "debian"], check=True, stdout=subprocess.DEVNULL)
        if (elsewhere / package.relative_to(TREE)).read_bytes() != package.read_bytes():
            wrong.append("%s is another one when it is built elsewhere" % package.name)
    return wrong
