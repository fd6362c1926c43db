"""Drives the deimg program as its users do. Usage: cli_test.py [GROUP...]"""
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
                child = subprocess.Popen([PROGRAM, "develop", "t.raw", "--force", "-o", name, *depth], cwd=self.dir,
                                         stderr=subprocess.DEVNULL)
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
            ("develop x -j 0", "--jobs"), ("develop x --progress loud", "none, bar or json"), ("preview x --depth 16", "--depth"),
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
        self.assertIn("\\xFF\\xFE\\x0A.png", self.say("info", b"\xff\xfe\n.png", status=3))

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
        # In the middle comes a file that lets the program wait until there is something to estimate from.
        raws = [f"{i}.raw" for i in range(6)]
        for raw in raws:
            os.mkfifo(self.dir / raw) if raw == "3.raw" else os.symlink(COFFEE, self.dir / raw)
        feeder = subprocess.Popen(["sh", "-c", 'exec > 3.raw; sleep 0.7; cat "$1"', "sh", COFFEE], cwd=self.dir)
        status, seen = self.on_terminal("develop", *raws, "missing.raw", "-o", "out/", "-j", "1")
        self.assertEqual([status, feeder.wait()], [2, 0])
        frames = [re.sub(r"\x1b\[K", "", frame) for frame in seen.split("\r")]
        bars = [re.fullmatch(r"(\d)/7 files \[(#*)(\.*)\] +(\d+) %(.*)", frame) for frame in frames]
        bars = [[int(bar[1]), len(bar[2]) / len(bar[2] + bar[3]), int(bar[4]) / 100, bar[5]] for bar in bars if bar]
        self.assertEqual(bars[0][:3], [0, 0, 0])
        for done, cells, share, _ in bars:
            self.assertTrue(done / 7 - 0.01 <= share <= (done + 1) / 7 and share - 0.025 <= cells <= share + 0.01)
        estimates = [bar[3] for bar in bars if bar[3]]
        self.assertRegex(estimates[0], r"\A  \d+\.\d files/s  \d+:\d\d left\Z")
        self.assertEqual(bars, sorted(bars, key=lambda bar: bar[2]))
        self.assertLess(max(len(frame) for frame in frames[:-1]), 80)
        self.assertRegex(frames[-1], r"\Adeimg: missing.raw: .*\n6 of 7 files developed, 1 failed in \d+:\d\d\n\Z")
        status, seen = self.on_terminal("develop", "0.raw", columns=30)
        self.assertRegex(seen, r"0\.raw -> 0\.png \(\d+\.\d s\)\n\Z")

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

    def test_check_finds_damage(self):
        self.assertEqual(self.say("check", COFFEE, CHART, LANDSCAPE, "-j", "1").count(": sound\n"), 3)
        start = json.loads(self.run_deimg("info", "--json", COFFEE).stdout)[0]["codedDataPosition"]
        for at in range(start + 2000, start + 210000, 16000):  # a disk sector lost somewhere
            name = self.damaged("bad.raw", lambda data: data.__setitem__(slice(at, at + 512), bytes(512)))
            self.assertRegex(self.say("check", name, status=3), r"while decoding the sensor data: .*damaged.* \(code 2\)")

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
        self.assertEqual(self.run_deimg("help", "check").stdout, self.run_deimg("check", "--help").stdout)
        for command in ("develop", "preview", "thumbnail", "info", "check", "help"):
            text = self.run_deimg(command, "--help").stdout.decode()
            self.assertTrue(all(len(line) <= 84 for line in text.splitlines()), command)


if __name__ == "__main__":
    unittest.main(verbosity=2)
