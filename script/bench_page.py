"""Follows docs/bench.md in an unpacked package: what the page shows as code is read from it and tried as it stands."""
import re
import shlex
import shutil
import struct

RUN = "run-on-bench bench_player.exe"
EARLIER = "KESTVOX_CAPTURE='earlier-*.wav' %s && mv earlier-0a-1.wav reference.wav" % RUN
COMMAND = re.compile(r"(\w+=\S+ )*(export|mkdir|diff|run-on-bench) ")
VARIABLE = re.compile(r"(KESTVOX_\w+=\S+)( {2,}.*)?$")
FILE = re.compile(r"([\w-]+\.\w+)  ")
LINE = re.compile(r"winmm: ")
SECONDS = 60  # for one setting of the bench


def blocks(page):
    """The code on the page, a list of lines for each block."""
    found = []
    for part in re.split(r"\n\n", page):
        lines = part.split("\n")
        if lines[0].startswith("    "):
            found.append([line[4:] for line in lines if line.startswith("    ")])
    return found


def kind_of(lines):
    """The pattern that all lines of a block have, or None."""
    return next((kind for kind in (LINE, COMMAND, VARIABLE, FILE) if all(kind.match(line) for line in lines)), None)


def write_speech(path):
    body = struct.pack("<400h", *range(-200, 200))
    path.write_bytes(b"RIFF" + struct.pack("<I", 36 + len(body)) + b"WAVEfmt " +
                     struct.pack("<IHHIIHH", 16, 1, 1, 44100, 88200, 2, 16) + b"data" + struct.pack("<I", len(body)) +
                     body)


class BenchPage:
    def __init__(self, system, package):
        self.system, self.package = system, package
        self.blocks = blocks((package / "docs" / "bench.md").read_text())
        self.steps = []  # (what the page shows, what is run for it, kind of the block)
        self.told = []   # (lines that the page promises, the last block before them that runs something)
        self.ran = (0, 0, COMMAND)  # that block: its first step, their end, its kind

    def follow(self):
        self.provide()
        for lines in self.blocks:
            self.plan(lines)
        self.run()

    def provide(self):
        """What the page takes for granted that the reader has."""
        shutil.copy(self.package / "bench_player.exe", self.package / "player.exe")
        write_speech(self.package / "speech.wav")
        (self.package / "scene.txt").write_text("cards = 1\ntime = stepped\n")
        promised = next(lines for lines in self.blocks if kind_of(lines) == LINE)
        (self.package / "expected.txt").write_text(promised[0] + "\n")

    def plan(self, lines):
        kind, first = kind_of(lines), len(self.steps)
        if kind == FILE:
            for name in (FILE.match(line)[1] for line in lines):
                self.system.check("the package has " + name, True, (self.package / name).exists())
        elif kind == COMMAND:
            for line in lines:
                if "reference.wav" in line:  # an earlier one, as the page says
                    self.steps.append((EARLIER, EARLIER, COMMAND))
                self.steps.append((line, line, COMMAND))
        elif kind == VARIABLE:
            for setting in (VARIABLE.match(line)[1] for line in lines):
                self.steps.append((setting, "%s timeout %d %s" % (setting, SECONDS, RUN), VARIABLE))
        elif kind == LINE:
            self.told.append((lines, self.ran))
        else:
            self.system.check("every line of a block is of one known kind", True, lines)
        if kind in (COMMAND, VARIABLE):
            self.ran = (first, len(self.steps), kind)

    def run(self):
        script = ["cd " + shlex.quote("/" + str(self.package.relative_to(self.system.root))), "mkdir /root/steps"]
        for number, (_, command, _) in enumerate(self.steps):
            script += ["{", command, "} >/root/steps/%d.out 2>/root/steps/%d.err" % (number, number),
                       "echo $? >/root/steps/%d.status" % number]
        path = self.system.root / "root" / "tutorial.sh"
        path.write_text("\n".join(script) + "\n")
        self.system.run("bash", "tutorial.sh")
        for number, (what, _, kind) in enumerate(self.steps):
            if kind == COMMAND:
                self.system.check(what, "0", self.result(number, "status"))
            else:  # whatever goes wrong, the player comes to its end and closes the device
                self.system.check(what, (True, True), (self.result(number, "status") in ("0", "1"),
                                                       "winmm: output 0a-1" in self.result(number, "err")))
        for lines, (first, end, kind) in self.told:
            said = [line for number in range(first, end) for line in self.result(number, "err").split("\n")
                    if LINE.match(line) and (kind == COMMAND or line in lines)]  # of settings some are told of
            self.system.check("the bench says %s" % lines, lines, said)

    def result(self, number, kind):
        path = self.system.root / "root" / "steps" / ("%d.%s" % (number, kind))
        return path.read_text().strip() if path.exists() else "nothing"
