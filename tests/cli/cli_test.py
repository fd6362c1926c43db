"""Drives the programs as their users do. Usage: cli_test.py [GROUP...]"""
import hashlib
import json
import os
import pathlib
import pty
import re
import resource
import select
import signal
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = os.environ["DEIMG"]
MKRAW = os.environ["DEIMG_MKRAW"]
SOURCE = pathlib.Path(os.environ["DEIMG_SOURCE"])
COFFEE, CHART, LANDSCAPE = (str(SOURCE / "samples" / f"{n}.raw") for n in ("coffee", "chart", "landscape"))


def pnm(data):
    """Width, height, largest value and samples of a binary PPM."""
    head = re.match(rb"P6\s+(\d+)\s+(\d+)\s+(\d+)\s", data)
    return [int(n) for n in head.groups()] + [data[head.end():]]


class Case(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.dir = pathlib.Path(directory.name)

    def run_deimg(self, *args, status=0, **options):
        result = subprocess.run([PROGRAM, *args], cwd=self.dir, capture_output=True, timeout=300, **options)
        self.assertEqual(result.returncode, status, f"{args}: {result.stderr.decode(errors='replace')}")
        return result

    def say(self, *args, **options):
        """What the program says on standard error."""
        return self.run_deimg(*args, **options).stderr.decode(errors="replace")

    def develop(self, raw, *args):
        """The picture as PPM, straight from the program."""
        return self.run_deimg("develop", raw, "-o", "-", "--format", "ppm", *args).stdout

    def read_back(self, *command):
        return subprocess.run(command, cwd=self.dir, check=True, capture_output=True).stdout

    def listing(self, directory="."):
        return sorted(os.listdir(self.dir / directory))

    def damaged(self, name, change):
        data = bytearray(pathlib.Path(COFFEE).read_bytes())
        changed = change(data)  # in place, or a new value
        (self.dir / name).write_bytes(data if changed is None else changed)
        return name


class Pictures(Case):
    def test_every_format_holds_the_same_picture(self):
        for raw in (COFFEE, CHART):
            for depth in ("8", "16"):
                wanted = self.develop(raw, "--depth", depth)
                self.run_deimg("develop", raw, "--depth", depth, "--force", "-o", "p.png")
                self.assertEqual(pnm(self.read_back("pngtopnm", "p.png")), pnm(wanted))
                self.run_deimg("develop", raw, "--depth", depth, "--force", "-o", "p.tif")
                self.assertEqual(pnm(self.read_back("tifftopnm", "-byrow", "p.tif")), pnm(wanted))
            width, height, _, samples = pnm(self.develop(raw))
            for quality, tolerance in (("95", 2.5), ("50", 12)):
                self.run_deimg("develop", raw, "--force", "-o", "p.jpeg", "--quality", quality)
                got = pnm(self.read_back("djpeg", "-pnm", "p.jpeg"))
                self.assertEqual(got[:3], [width, height, 255])
                off = sum(abs(a - b) for a, b in zip(got[3], samples)) / len(samples)
                self.assertLess(off, tolerance)

    def test_pictures_say_what_they_are(self):
        self.run_deimg("develop", CHART, "-o", "p.png", "--resolution", "240")
        png = (self.dir / "p.png").read_bytes()
        for chunk in (b"sRGB", b"gAMA", b"cHRM", b"pHYs" + (9449).to_bytes(4, "big") * 2 + b"\1", b"tEXtSoftware\0deimg "):
            self.assertIn(chunk, png[:400])
        self.run_deimg("develop", CHART, "-o", "p.tif", "--depth", "16")
        tags = self.read_back("tiffinfo", "p.tif").decode()
        for tag in ("Bits/Sample: 16", "AdobeDeflate", "Predictor: horizontal", "Resolution: 300, 300 pixels/inch",
                    "Software: deimg ", "ICC Profile: <present>"):
            self.assertIn(tag, tags)
        self.run_deimg("develop", CHART, "-o", "p.jpg")
        jpeg = (self.dir / "p.jpg").read_bytes()
        for mark in (b"JFIF\0\1\1\1" + (300).to_bytes(2, "big") * 2, b"ICC_PROFILE\0\1\1", b"deimg "):
            self.assertIn(mark, jpeg[:1000])

    def test_threads_change_nothing(self):
        pictures = {self.develop(LANDSCAPE, *threads) for threads in ([], ["--threads", "1"], ["--threads", "3"])}
        self.assertEqual(len(pictures), 1)

    def test_previews_and_thumbnails(self):
        info = json.loads(self.run_deimg("info", "--json", LANDSCAPE).stdout)[0]
        self.run_deimg("preview", LANDSCAPE, "-o", "p.ppm")
        width, height, _, small = pnm((self.dir / "p.ppm").read_bytes())
        self.assertEqual([width, height], [info["preview"]["width"], info["preview"]["height"]])
        full = pnm(self.develop(LANDSCAPE))[3]
        self.assertLess(abs(sum(small) / len(small) - sum(full) / len(full)), 6)
        self.run_deimg("thumbnail", LANDSCAPE, "-o", "t.ppm")
        width, height, _, samples = pnm((self.dir / "t.ppm").read_bytes())
        self.assertEqual([width, height, max(samples[:480 * 5])], [160, 120, 0])
        for box, size in (("64", [64, 43]), ("4000", [info["preview"]["width"], info["preview"]["height"]])):
            self.run_deimg("thumbnail", LANDSCAPE, "--force", "--size", box, "-o", "t.ppm")
            got = pnm((self.dir / "t.ppm").read_bytes())
            self.assertEqual(got[:2], size)
            self.assertLess(abs(sum(got[3]) / len(got[3]) - sum(small) / len(small)), 1)
        self.assertEqual(got[3], small)  # never enlarged: the preview itself

    @unittest.skipIf(os.environ.get("DEIMG_SANITIZE"), "sanitizers change what memory costs")
    def test_memory_holds_no_developed_picture(self):
        peak = {}
        for lines in (512, 4608):
            subprocess.run([MKRAW, "--scene", "texture", "--size", f"1024x{lines}", "-o", self.dir / "t.raw"], check=True)
            for name in ("t.png", "t.tif", "t.jpg"):
                depth = [] if name == "t.jpg" else ["--depth", "16"]
                child = subprocess.Popen([PROGRAM, "develop", "t.raw", "--force", "--threads", "1", "-o", name, *depth],
                                         cwd=self.dir, stderr=subprocess.DEVNULL)
                _, status, usage = os.wait4(child.pid, 0)
                child.returncode = status
                self.assertEqual(status, 0)
                peak[name, lines] = usage.ru_maxrss * 1024
        for name in ("t.png", "t.tif", "t.jpg"):
            growth = (peak[name, 4608] - peak[name, 512]) / (1024 * 4096)
            self.assertLess(growth, 2.75, f"{name}: bytes of memory per pixel; the sensor plane takes 2.25")


class Settings(Case):
    def test_each_setting_changes_the_picture(self):
        recorded = self.develop(CHART)
        seen = {recorded}
        for setting in ("--wb preset:3", "--wb point:300,40", "--wb gains:2,1,1,1.2", "--exposure 0.5", "--exposure -1.5",
                        "--tone -1", "--tone 1", "--saturation 1", "--processing-set 1",
                        "--processing-set quick", "--plain", "--no-colour-median", "--quick"):
            seen.add(self.develop(CHART, *setting.split()))
        self.assertEqual(len(seen), 14)
        for setting in ("--wb recorded", "--wb preset:0", "--tone recorded --saturation recorded --colour recorded",
                        "--exposure +0", "--wb gains:1.8359375,1,1.00390625,1.46484375 --saturation 0", "--colour 0"):
            same = self.develop(CHART, *setting.split()) == recorded
            # Gains of one's own come with the colour tables of preset 6, at another temperature.
            self.assertEqual(same, "gains" not in setting, setting)

    def test_point_makes_grey(self):
        width, _, _, samples = pnm(self.develop(COFFEE, "--wb", "point:300,60"))
        spot = [samples[(y * width + x) * 3 + c] for y in range(62, 78) for x in range(302, 318) for c in range(3)]
        red, green, blue = (sum(spot[c::3]) / 256 for c in range(3))
        self.assertLess(max(abs(red - green), abs(blue - green)), 12)
        said = self.say("develop", COFFEE, "--wb", "point:624,0", status=3)
        self.assertIn("624,0 lies outside the picture of 624 x 436", said)

    def test_wrong_arguments_are_explained(self):
        for arguments, words in (
            ("", "Try 'deimg --help'"), ("frobnicate", "no command 'frobnicate'"), ("develop", "FILE is required"),
            ("develop x --exposure 0.25", "tenths"), ("develop x --exposure 3", "-2 to 2"), ("develop x --exposure nan", "-2 to 2"),
            ("develop x --tone 2", "-1, 0, 1 or recorded"), ("develop x --wb preset:7", "0 to 6"),
            ("develop x --wb point:1", "COLUMN,LINE"), ("develop x --wb gains:1,1,1", "four numbers"),
            ("develop x --wb gains:1,0,1,1", "above 0"), ("develop x --wb auto", "recorded"),
            ("develop x --depth 12", "8,16"), ("develop x --depth 16 --format jpeg", "16 bits"),
            ("develop x --quality 0", "--quality"), ("develop x -o x.gif", "--format"), ("develop x --format gif", "png"),
            ("develop x y -o z.png", "directory"), ("develop x --force --skip-existing", "--skip-existing"),
            ("develop a/x.raw b/x.raw -o d/", "more than one picture"), ("develop - - -o d/", "picture would be written"),
            ("develop x -j 0", "--jobs"), ("check x --threads 65", "1 to 64, or all"),
            ("develop x --progress loud", "none, bar or json"), ("preview x --depth 16", "--depth"),
            ("develop x --frob", "--frob"), ("help frob", "no help on 'frob'")):
            self.assertIn(words, self.say(*arguments.split(), status=1), arguments)
        self.assertEqual(self.listing(), [])


class Files(Case):
    def test_good_files_survive_bad_ones(self):
        bad = self.damaged("bad.raw", lambda data: data[:5000])
        raws = [COFFEE, bad, CHART, "missing.raw", LANDSCAPE]
        said = self.say("develop", *raws, "-o", "out/", "-j", "3", status=2)
        self.assertEqual(self.listing("out"), ["chart.png", "coffee.png", "landscape.png"])
        failures = [line for line in said.splitlines() if line.startswith("deimg: ")]
        self.assertRegex(failures[0], r"bad\.raw: while reading its properties: .*\(code 0x0400002C\)")
        self.assertRegex(failures[1], r"missing\.raw: while opening it: No such file or directory \(system error 2\)")
        self.assertIn("2 of 5 files failed", failures[2])
        self.run_deimg("develop", COFFEE, CHART, LANDSCAPE, "-o", "one/", "-j", "1")
        for name in self.listing("out"):
            self.assertEqual((self.dir / "out" / name).read_bytes(), (self.dir / "one" / name).read_bytes())
        self.say("develop", bad, "missing.raw", status=3)

    def test_existing_files_are_safe(self):
        (self.dir / "p.png").write_bytes(b"mine")
        self.assertIn("--force", self.say("develop", COFFEE, "-o", "p.png", status=3))
        self.assertIn("skipped", self.say("develop", COFFEE, "-o", "p.png", "--skip-existing"))
        self.assertEqual((self.dir / "p.png").read_bytes(), b"mine")
        (self.dir / "link.png").symlink_to("p.png")
        self.run_deimg("develop", COFFEE, "-o", "link.png", "--force")
        self.assertTrue((self.dir / "link.png").is_symlink())
        self.read_back("pngtopnm", "p.png")
        raw = self.damaged("photo.raw", lambda data: None)
        self.assertIn("replace the raw file", self.say("develop", raw, "-o", raw, "--format", "png", "--force", status=1))
        self.assertEqual((self.dir / raw).read_bytes(), pathlib.Path(COFFEE).read_bytes())

    def test_failed_writing_leaves_nothing(self):
        (self.dir / "old.png").write_bytes(b"old")
        limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (20000, 20000))
        for name in ("p.png", "p.tif", "p.jpg", "p.ppm", "old.png"):
            said = self.say("develop", COFFEE, "-o", name, "--force", status=3, preexec_fn=limit)
            self.assertIn("File too large (system error 27)", said)
        self.assertEqual(self.listing(), ["old.png"])
        self.assertEqual((self.dir / "old.png").read_bytes(), b"old")
        self.assertTrue(pathlib.Path("/dev/full").is_char_device())
        for name in ("png", "tiff", "jpeg", "ppm"):
            self.assertIn("No space left", self.say("develop", COFFEE, "-o", "/dev/full", "--format", name, status=3))
        self.assertIn("No such file", self.say("develop", COFFEE, "-o", "no/such/p.png", status=3))

    @unittest.skipIf(os.environ.get("DEIMG_SANITIZE"), "sanitizers do not go together with tracing")
    def test_pictures_appear_whole(self):
        """The data first, then the name; and no picture in place of what somebody else put there meanwhile."""
        def traced(*args, inject=None, status=0):
            (self.dir / "trace").unlink(missing_ok=True)
            result = subprocess.run(
                ["strace", "-f", "-qq", "-o", "trace", "-e", "trace=fsync,link,rename,unlink",
                 *(["-e", f"inject={inject}"] if inject else []), PROGRAM, "develop", COFFEE, "-o", "p.png", *args],
                cwd=self.dir, capture_output=True, timeout=300)
            self.assertEqual(result.returncode, status, result.stderr)
            self.assertEqual([name for name in self.listing() if name.startswith(".")], [])
            calls = re.findall(r"(?m)^\d+ +(\w+)\(.*= 0\b", (self.dir / "trace").read_text())
            return calls, result.stderr.decode()
        self.assertEqual(traced()[0], ["fsync", "link", "unlink"])
        picture = (self.dir / "p.png").read_bytes()
        self.assertEqual(traced("--force")[0], ["fsync", "rename"])
        for fault, words in (("fsync:error=EIO", "Input/output error"), ("rename:error=ENOSPC", "No space left")):
            self.assertIn(words, traced("--force", inject=fault, status=3)[1])
            self.assertEqual((self.dir / "p.png").read_bytes(), picture)
        (self.dir / "p.png").unlink()
        self.assertIn("exists already", traced(inject="link:error=EEXIST", status=3)[1])
        self.assertEqual(traced(inject="link:error=EPERM")[0], ["fsync", "rename"])  # no hard links there
        self.assertEqual((self.dir / "p.png").read_bytes(), picture)

    def test_standard_streams(self):
        raw = pathlib.Path(CHART).read_bytes()
        for name in ("png", "tiff", "jpeg", "ppm"):
            self.run_deimg("develop", CHART, "-o", "f." + name)
            piped = self.run_deimg("develop", "-", "--format", name, input=raw).stdout
            self.assertEqual(piped, (self.dir / ("f." + name)).read_bytes())
        os.mkfifo(self.dir / "pipe")
        feeder = subprocess.Popen(["cp", CHART, self.dir / "pipe"])
        self.assertEqual(self.run_deimg("develop", "pipe", "-o", "-").stdout, (self.dir / "f.png").read_bytes())
        feeder.wait()
        gone = subprocess.Popen([PROGRAM, "develop", LANDSCAPE, "-o", "-"], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        gone.stdout.close()
        self.assertIn(b"Broken pipe", gone.communicate()[1])
        self.assertEqual(gone.returncode, 3)

    def test_broken_files_are_refused_in_words(self):
        size = os.path.getsize(COFFEE)
        flip = lambda at: lambda data: data.__setitem__(at, data[at] ^ 0xFF)
        changes = [lambda data, n=n: data[:n] for n in (0, 1, 25, 26, 31, 100, 71706, size // 2, size - 1)]
        changes += [flip(at) for at in (0, 2, size - 1, size - 6, size - 14)]
        for change in changes:
            name = self.damaged("broken.raw", change)
            for command in ("develop", "preview", "thumbnail", "check", "info"):
                self.assertRegex(self.say(command, name, status=3), r"^deimg: broken\.raw: while .+: .+ \(code \S+\)\n$")
        self.assertEqual(self.listing(), ["broken.raw"])


class Names(Case):
    def test_names_of_any_bytes(self):
        names = [b"\xff\xfe\n.raw", b"[a,b]", b"{}", b"%%", b"-dash.raw", b"preview", b"two  words.raw", "\u00e9\u5199.raw".encode(),
                 b"a" * 243 + b".raw", b".hidden", b"x.tar.raw", b"new\tline'\".raw"]
        for name in names:
            os.symlink(os.fsencode(COFFEE), os.fsencode(self.dir) + b"/" + name)
        result = self.run_deimg("preview", "--progress", "json", "--", *names)
        events = [json.loads(line) for line in result.stderr.splitlines()]
        self.assertEqual(sum(event["event"] == "done" for event in events), len(names))
        self.assertIn(names[0].hex(), {event.get("fileHex") for event in events})
        made = os.listdir(os.fsencode(self.dir))
        for name in (b"\xff\xfe\n-preview.png", b"[a,b]-preview.png", b"{}-preview.png", b"-dash-preview.png", b".hidden-preview.png",
                     b"preview-preview.png", b"x.tar-preview.png"):
            self.assertIn(name, made)
        self.assertEqual(len(made), 2 * len(names))
        for name in (b"\xff\xfe\n.png", b"\xc1\x81", b"\xc3", b"\xe0\x9f\xbf", b"\xe0\xa0\x80", b"\xe5\x86x",
                     b"\xed\x9f\xbf", b"\xed\xa0\x80", b"\xf0\x8f\xbf\xbf", b"\xf0\x90\x80\x80", b"\xf4\x8f\xbf\xbf",
                     b"\xf4\x90\x80\x80", b"\xf5\x80\x80\x80", b"~\x7f", b"\xc2\x80", b" \x1f"):
            shown = name.decode(errors="backslashreplace")
            shown = re.sub(r"[\0-\x1f\x7f]", lambda c: f"\\x{ord(c[0]):02x}", shown)
            shown = re.sub(r"\\x(..)", lambda c: "\\x" + c[1].upper(), shown)
            self.assertTrue(self.say("info", name, status=3).startswith(f"deimg: {shown}: while opening it: "), name)

    def test_contents_decide(self):
        os.symlink(COFFEE, self.dir / "picture.jpg")
        self.run_deimg("develop", "picture.jpg", "-o", "out/")
        self.assertEqual(self.listing("out"), ["picture.png"])
        (self.dir / "no.raw").write_bytes(b"\x89PNG\r\n\x1a\n" + bytes(100))
        self.assertIn("not a raw file", self.say("develop", "no.raw", status=3))


class Terminal(Case):
    def on_terminal(self, *args, columns=80):
        """Runs the program with a terminal for its error output; returns what appeared there."""
        master, slave = pty.openpty()
        import fcntl, struct, termios
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        child = subprocess.Popen([PROGRAM, *args], cwd=self.dir, stdout=slave, stderr=slave)
        os.close(slave)
        seen = b""
        while select.select([master], [], [], 300)[0]:
            try:
                seen += os.read(master, 4096)
            except OSError:
                break
        os.close(master)
        return child.wait(), seen.decode().replace("\r\n", "\n")

    def test_bar(self):
        # The last file lets the program wait until there is something to estimate from.
        raws = [f"{i}.raw" for i in range(6)]
        for raw in raws:
            os.mkfifo(self.dir / raw) if raw == "5.raw" else os.symlink(COFFEE, self.dir / raw)
        feeder = subprocess.Popen(["sh", "-c", 'exec > 5.raw; sleep 0.7; cat "$1"', "sh", COFFEE], cwd=self.dir)
        status, seen = self.on_terminal("develop", "missing.raw", *raws, "-o", "out/", "-j", "1")
        self.assertEqual([status, feeder.wait()], [2, 0])
        frames = [re.sub(r"\x1b\[K", "", frame) for frame in seen.split("\r")]
        bars = [re.fullmatch(r"(\d)/7 files \[(#*)(\.*)\] +(\d+) %(.*)", frame) for frame in frames if " files [" in frame]
        bars = [[int(bar[1]), len(bar[2]) / len(bar[2] + bar[3]), int(bar[4]) / 100, bar[5]] for bar in bars]
        self.assertEqual(bars[0][:3], [0, 0, 0])
        for done, cells, share, _ in bars:
            self.assertTrue(done / 7 - 0.01 <= share <= (done + 1) / 7 and share - 0.025 <= cells <= share + 0.01)
        self.assertEqual(bars, sorted(bars, key=lambda bar: bar[2]))
        _, _, share, estimate = next(bar for bar in bars if bar[3])
        rate, minutes, seconds = re.fullmatch(r"  (\d+\.\d) files/s  (\d+):(\d\d) left", estimate).groups()
        self.assertLessEqual(float(rate), 7 * (share + 0.01) / 0.5 + 0.1)  # not before half a second
        left = 7 * (1 - share) / float(rate)
        self.assertLessEqual(abs(60 * int(minutes) + int(seconds) - left), 1.1 + 0.15 / float(rate) + 0.1 * left)
        self.assertLess(max(len(frame) for frame in frames[:-1]), 80)
        self.assertRegex(frames[-1], r"\Adeimg: missing.raw: .*\n6 of 7 files developed, 1 failed in \d+:\d\d\n\Z")

    def test_bar_of_one_file(self):
        for name, shown in (("a" * 26 + ".raw", "a" * 26 + ".raw"), ("b" * 26 + "\u00e9.raw", "b" * 26 + "\u00e9..."),
                            ("c" * 60, "c" * 27 + "...")):
            os.symlink(COFFEE, self.dir / name)
            status, seen = self.on_terminal("develop", "./" + name, "-o", "out/")
            self.assertRegex(seen, rf"\A\r{re.escape(shown)} \[\.+\]   0 %")
            self.assertRegex(seen, r" -> out/\w+\.png \(\d+\.\d s\)\n\Z")
        # Without room for a bar it is left out, and never is a line longer than the terminal.
        for columns, shown in ((46, r"\[\.{5}\]   0 %"), (45, "   0 %"), (20, "")):
            seen = self.on_terminal("develop", name, "--force", "-o", "out/", columns=columns)[1]
            self.assertRegex(seen, rf"\A\r{'c' * min(27, columns - 1)}(\.\.\.)? ?{shown}\x1b")

    def test_quiet_and_refusals(self):
        self.assertEqual(self.on_terminal("develop", COFFEE, "--progress", "none", "-o", "a.png"), (0, ""))
        status, seen = self.on_terminal("develop", COFFEE, "-o", "-")
        self.assertEqual(status, 1)
        self.assertIn("cannot be shown on the terminal", seen)
        self.assertEqual(self.say("develop", COFFEE, "-o", "b.png"), f"{COFFEE} -> b.png\n")
        self.assertEqual(self.say("develop", COFFEE, "-o", "c.png", "--progress", "none"), "")


class Interrupts(Case):
    def stopped_by(self, number):
        for i in range(200):
            os.symlink(LANDSCAPE, self.dir / f"{i}.raw")
        with open(self.dir / "events", "wb") as events:
            child = subprocess.Popen([PROGRAM, "develop", *(f"{i}.raw" for i in range(200)), "-o", "out/", "-j", "2",
                                      "--progress", "json"], cwd=self.dir, stderr=events)
        end = time.time() + 120
        while time.time() < end and not list(self.dir.glob("out/*.png")):
            time.sleep(0.01)
        time.sleep(0.05)
        child.send_signal(number)
        self.assertEqual(child.wait(60), -number)
        made = self.listing("out")
        pictures = [name for name in made if name.endswith(".png")]
        self.assertTrue(0 < len(pictures) < 200)
        for name in pictures:
            self.read_back("pngtopnm", f"out/{name}")
        return len(made) - len(pictures), len(pictures)

    def test_asked_to_stop(self):
        left, made = self.stopped_by(signal.SIGINT)
        self.assertEqual(left, 0, "temporary files left behind")
        end = json.loads((self.dir / "events").read_text().splitlines()[-1])
        self.assertEqual([end[k] for k in ("event", "files", "done", "skipped", "failed", "interrupted")],
                         ["end", 200, made, 0, 0, True])

    def test_killed(self):
        self.assertLessEqual(self.stopped_by(signal.SIGKILL)[0], 2)

    def test_waiting_for_input(self):
        child = subprocess.Popen([PROGRAM, "develop", "-", "-o", "p.png"], cwd=self.dir, stdin=subprocess.PIPE,
                                 stderr=subprocess.PIPE)
        time.sleep(0.3)
        child.send_signal(signal.SIGTERM)
        self.assertIn(b"interrupted", child.stderr.read())
        self.assertEqual(child.wait(10), -signal.SIGTERM)
        child.stdin.close()
        child.stderr.close()
        self.assertEqual(self.listing(), [])


class Reports(Case):
    def test_info(self):
        os.symlink(CHART, self.dir / "chart.raw")
        expected = [(SOURCE / "tests/cli" / name).read_bytes() for name in ("chart-info.txt", "chart-info.json")]
        self.assertEqual([self.run_deimg("info", *json, "chart.raw").stdout for json in ([], ["--json"])], expected)
        coffee, missing = json.loads(self.run_deimg("info", "--json", COFFEE, "missing", status=2).stdout)
        self.assertEqual([coffee["byteOrder"], coffee["codeSet"], missing["error"]["message"]],
                         ["II", 0, "No such file or directory"])

        with open("/dev/full", "wb") as full:
            result = subprocess.run([PROGRAM, "info", COFFEE], stdout=full, stderr=subprocess.PIPE, timeout=300)
        self.assertEqual([result.returncode, result.stderr], [3, b"deimg: standard output: No space left on device\n"])

    def test_check_finds_damage(self):
        self.assertEqual(self.say("check", COFFEE, CHART, LANDSCAPE, "-j", "1").count(": sound\n"), 3)
        start = json.loads(self.run_deimg("info", "--json", COFFEE).stdout)[0]["codedDataPosition"]
        for at in range(start + 2000, start + 210000, 16000):  # a disk sector lost somewhere
            name = self.damaged("bad.raw", lambda data: data.__setitem__(slice(at, at + 512), bytes(512)))
            said = self.say("check", name, status=3)
            self.assertRegex(said, r"while decoding the sensor data: .*damaged.* \(code 2\)")
            if "range" in said:  # a count, and a place inside the picture
                self.assertRegex(said, r" [1-9]\d{0,5} samples are beyond .* at column \d{1,3}, line \d{1,3} of the")

    def test_progress_for_programs(self):
        bad = self.damaged("bad.raw", lambda data: data[:100])
        (self.dir / "out").mkdir()
        (self.dir / "out/chart.png").touch()
        lines = self.say("develop", COFFEE, bad, CHART, "--progress", "json", "-j", "1", "-o", "out/", "--skip-existing",
                         status=2).splitlines()
        events = [json.loads(line) for line in lines]
        percents = [event for event in events if event["event"] == "progress" and event["file"] == COFFEE]
        numbers = [event["percent"] for event in percents]
        self.assertEqual([numbers[0], numbers[-1], numbers], [1, 100, sorted(numbers)])
        self.assertEqual([event["whole"] for event in percents], [n / 300 for n in numbers])
        self.assertTrue(all(event.pop("seconds") > 0 for event in events if "seconds" in event))
        self.assertEqual([event for event in events if event["event"] != "progress"], [
            {"event": "start", "files": 3}, {"event": "file", "file": COFFEE},
            {"event": "done", "file": COFFEE, "output": "out/coffee.png"}, {"event": "file", "file": bad},
            {"event": "failed", "file": bad, "doing": "reading its properties", "message": events[-4]["message"],
             "code": 0x0400002C}, {"event": "file", "file": CHART}, {"event": "skipped", "file": CHART, "output": "out/chart.png"},
            {"event": "end", "files": 3, "done": 1, "skipped": 1, "failed": 1, "interrupted": False}])

class Help(Case):
    def test_help_and_version(self):
        version = self.run_deimg("--version").stdout
        self.assertRegex(version, rb"\Adeimg \d+\.\d+\.\d+\n\Z")
        self.assertEqual(self.run_deimg("version").stdout, version)
        codes = self.run_deimg("help", "codes").stdout.decode()
        header = (SOURCE / "include/deimg/deimg.h").read_text()
        for code in re.findall(r"DEIMG_\w+ = (\w+),.*?\n", header.split("enum DEImgResult {")[1].split("};")[0]):
            self.assertRegex(codes, rf"(?m)^  {code} ")
        self.assertTrue(all(len(line) <= 80 for line in codes.splitlines()))
        for text in ("Result codes, as messages", r"  8  .* was\n {18}started\n", "Exit statuses",
                     "  3  .*all of the files", "Stopped by a signal"):
            self.assertRegex(codes, text)
        self.assertEqual(self.run_deimg("help", "check").stdout, self.run_deimg("check", "--help").stdout)
        for command in ("develop", "preview", "thumbnail", "info", "check", "help"):
            text = self.run_deimg(command, "--help").stdout.decode()
            self.assertTrue(all(len(line) <= 84 for line in text.splitlines()), command)


class RawFiles(Case):
    """deimg-mkraw. Its files are the same everywhere."""
    def make(self, *args, status=0, **options):
        result = subprocess.run([MKRAW, *args, "-o", "made.raw"], cwd=self.dir, capture_output=True, timeout=300, **options)
        self.assertEqual(result.returncode, status, f"{args}: {result.stderr.decode()}")
        return result.stderr.decode() if status else (self.dir / "made.raw").read_bytes()

    def test_every_option(self):
        for options, wanted in (
            ("--scene chart --size 100x75", "ac8375b979450b3c"),
            ("--scene gradient --size 33x21 --order MM --code-set 2 --sub-heaps", "c441bb048d2c5989"),
            ("--scene texture --size 64x40 --code-set 1 --stuffing 17 --skip 7 --black 128", "1fe18ebf19ab90d4"),
            ("--scene chart --size 70x70 --iso-class 1 --preset 6 --tone-level 1 --processing-set 3", "6eecf3a76270637c"),
            ("--scene chart --size 70x70 --iso-class 4 --preset 3 --tone-level -1 --matrix-level 1 --colour-level -1",
             "c8889cb1332425a2"),
            # The widest and the highest.
            ("--scene texture --size 65504x1", "937573581aaf9cfd"), ("--scene texture --size 1x65516", "b5bd5a1a2ba8bed6"),
            ("--random 1", "50760978b67d62f4"), ("--random 18446744073709551615", "b5d76dba0046b9ac"),
        ):
            made = hashlib.sha256(self.make(*options.split())).hexdigest()
            self.assertEqual(made[:16], wanted, options)

    def test_pictures_of_any_kind(self):
        self.run_deimg("preview", CHART, "-o", "p.ppm")
        ppm = (self.dir / "p.ppm").read_bytes()
        wanted = self.make("p.ppm")
        picture = pnm(self.develop("made.raw"))
        self.assertEqual(picture[:2], pnm(ppm)[:2])
        off = sum(abs(a - b) for a, b in zip(picture[3], pnm(ppm)[3])) / len(picture[3])
        self.assertLess(off, 8)
        (self.dir / "p.png").write_bytes(self.read_back("pnmtopng", "p.ppm"))
        (self.dir / "commented.ppm").write_bytes(ppm.replace(b"P6\n", b"P6 # P6 0 0\n# 9\n", 1))
        self.assertEqual([self.make("p.png"), self.make("commented.ppm")], [wanted, wanted])
        for name, sample in (("white.ppm", b"\xff"), ("black.ppm", b"\0")):
            (self.dir / name).write_bytes(b"P6 9 7 255\n" + sample * 189)
        (self.dir / "clear.png").write_bytes(self.read_back("pnmtopng", "-transparent", "black", "black.ppm"))
        self.assertEqual(self.make("clear.png"), self.make("white.ppm"))

    def test_wrong_use_is_explained(self):
        good = b"P6 2 2 255\n" + bytes(12)
        for name, data in {
            "good": good, "short": good[:-1], "depth": good.replace(b"255", b"256"), "text": b"P5 2 2 255\n", "byte": b"P",
            "empty": b"P6 0 2 255\n", "flat": b"P6 2 0 255\n", "wide": b"P6 65536 1 255\n", "tall": b"P6 1 65536 255\n",
            "broken.png": b"\x89PNG"}.items():
            (self.dir / name).write_bytes(data)
        before = self.listing()
        for arguments, status, words in (
            ("", 2, "give one of PICTURE, --scene and --random"), ("good --random 1", 2, "give one of"),
            ("good --size 9x9", 2, "go together"), ("--scene chart", 2, "go together"),
            ("--random 1 --order MM", 2, "no option but --output"), ("--random 1x", 2, "'1x' is not"),
            *((f"--scene chart --size {size}", 2, f"'{size}' is not a size") for size in ("9", "x9", "9x", "0x9", "9x0", "9x9x")),
            ("--scene forest --size 9x9", 2, "--scene"), ("--scene chart --black 1025", 2, "--black"),
            ("--scene chart --skip 65536", 2, "--skip"),
            ("--scene chart --size 65505x1", 1, "larger"), ("--scene chart --size 1x65517", 1, "larger"),
            ("--scene chart --size 32768x32768", 1, "larger"), ("missing", 1, "missing: cannot be read"), ("byte", 1, "cannot be read"),
            ("text", 1, "neither a PNG"), ("short", 1, "ends too early"), ("depth", 1, "8 bits"), ("empty", 1, "broken PPM"),
            ("flat", 1, "broken PPM"), ("wide", 1, "larger"), ("tall", 1, "larger"), ("broken.png", 1, "deimg-mkraw: broken.png: ")):
            self.assertIn(words, self.make(*arguments.split(), status=status), arguments)
        self.assertEqual(self.listing(), before)

    def test_files_are_replaced_whole(self):
        limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (20000, 20000))
        self.make("--random", "1")
        before = (self.dir / "made.raw").read_bytes()
        said = self.make("--random", "2", status=1, preexec_fn=limit, restore_signals=False)
        self.assertIn("made.raw.part: could not be written", said)
        self.assertEqual([self.listing(), (self.dir / "made.raw").read_bytes()], [["made.raw"], before])
        result = subprocess.run([MKRAW, "--random", "1", "-o", "/dev/full"], capture_output=True, timeout=300)
        self.assertEqual([result.returncode, result.stderr], [1, b"deimg-mkraw: /dev/full: could not be written\n"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
