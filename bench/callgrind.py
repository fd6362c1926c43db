"""Runs one job of a host under callgrind, and tells the instructions of each of its functions."""

import collections
import os
import shutil
import subprocess
import tempfile

# In memory where the system has such a folder: temporary files of a job cost the same everywhere.
TEMPORARY = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
# What the C library would choose by the processor's model: how it copies and compares memory.
TUNABLES = ("glibc.cpu.hwcaps=-AVX2,-AVX_Fast_Unaligned_Load,-ERMS,-FSRM"
            ":glibc.cpu.x86_non_temporal_threshold=0x300000")
COUNTED = "DEImg_DevelopM480"
OPTIONS = [f"--toggle-collect={COUNTED}", "--compress-strings=no", "--compress-pos=no",
           "--dump-instr=no", "--separate-threads=no"]


def valgrind(*command, level=None):
    """Runs a command in an environment that is the same everywhere; returns what it printed."""
    fixed = {"LC_ALL": "C", "GLIBC_TUNABLES": TUNABLES}
    if level:
        fixed["DEIMG_BENCH_LEVEL"] = level
    with tempfile.TemporaryDirectory(dir=TEMPORARY) as folder:
        fixed["TMPDIR"] = folder
        ran = subprocess.run([shutil.which("valgrind"), "-q", *command], env=fixed, text=True,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    if ran.returncode != 0:
        raise SystemExit(f"{' '.join(map(str, command))}: {ran.stderr.strip() or 'failed'}")
    return ran.stdout


def read(path):
    """Instructions by function, those of the functions that it calls included, and of all.

    Where a function calls itself, what it calls counts more than once.
    """
    inclusive, total, function = collections.Counter(), 0, None
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            if line.startswith("fn="):
                function = line[3:].rstrip("\n")
            elif line.startswith("totals:"):
                total = int(line.split()[1])
            elif line[0].isdigit():  # of the function itself, or below "calls=" of one it calls
                inclusive[function] += int(line.split()[1])
    if total == 0 or not inclusive:
        raise SystemExit(f"{path}: no instructions were counted")
    return inclusive, total


def count(host, file, job, *library, level=None):
    """What the host printed, instructions by function, and instructions of the whole job."""
    with tempfile.NamedTemporaryFile(dir=TEMPORARY) as out:
        printed = valgrind("--tool=callgrind", f"--callgrind-out-file={out.name}", *OPTIONS,
                           host, "count", file, job, *library, level=level)
        return printed, *read(out.name)
