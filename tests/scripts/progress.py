#!/usr/bin/env python3
"""Runs orvane with a terminal as standard error, and checks the line of progress there: what it shows, that it is gone
whenever a line of the log is printed and at the end, and that log, standard output and scene file stay as they are.

    progress.py PROGRAMS

The run waits for its reader at the first line, so that it takes longer than a second on every machine."""
import json, os, pathlib, pty, re, subprocess, sys, tempfile, time

programs = pathlib.Path(sys.argv[1]).resolve()
LARGE = 21_000_000  # bytes; opening such a model is announced
FACES = 3000


def convert(folder, terminal):
    """The exit code, standard output, what reached standard error, the log and the scene file of a run."""
    ours, theirs = pty.openpty() if terminal else os.pipe()
    reader, writer = os.pipe()
    os.set_blocking(writer, False)
    filler = 0
    try:
        while True:
            filler += os.write(writer, b"-" * 4096)
    except BlockingIOError:
        os.set_blocking(writer, True)
    process = subprocess.Popen([programs / "orvane", "m.json", "s.bin", "maps", "log"], cwd=folder, stdout=writer,
                               stderr=theirs, stdin=subprocess.DEVNULL)
    os.close(writer)
    os.close(theirs)
    time.sleep(1.1)
    with os.fdopen(reader, "rb") as output:
        printed = output.read()[filler:]
    errors = b""
    try:
        while part := os.read(ours, 65536):
            errors += part
    except OSError:
        pass  # how a terminal without writers ends
    os.close(ours)
    return process.wait(), printed, errors.decode(), (folder / "log").read_bytes(), (folder / "s.bin").read_bytes()


with tempfile.TemporaryDirectory() as name:
    folder = pathlib.Path(name)
    faces = [{"outer": [[i, 0, 0], [i + 1, 0, 0], [i, 1, 0]]} for i in range(FACES)]
    text = json.dumps({"orvaneModel": 1, "entities": {"faces": faces}})
    (folder / "m.json").write_text(text + " " * LARGE)
    plain = convert(folder, False)
    shown = convert(folder, True)
assert plain[0] == 0 and plain[2] == "", plain[:3]
assert (shown[0], shown[1], shown[3], shown[4]) == (plain[0], plain[1], plain[3], plain[4]), shown[:3]
# Every line overwrites the one before with its own text and spaces, and leaves the cursor at the beginning.
lines = re.findall("\r([^\r]*)\r", shown[2])
assert "".join(f"\r{line}\r" for line in lines) == shown[2], repr(shown[2])
width = 0
for line in lines:
    assert len(line) == max(width, len(line.rstrip())) and len(line) < 60, repr(shown[2])
    width = len(line.rstrip())
assert width == 0, repr(shown[2])
texts = [line.rstrip() for line in lines if line.strip()]
expected = [r"Opening: 21 MB, \d+ s", rf"Reading: \d+ faces, here \d+ of {FACES}, [1-9]\d* s", r"Writing: \d+ %, [1-9]\d* s"]
for pattern in expected:
    assert any(re.fullmatch(pattern, line) for line in texts), (pattern, texts)
assert all(any(re.fullmatch(pattern, line) for pattern in expected) for line in texts), texts
# Erased before the line that ends the run, and before nothing else.
assert [line.strip() for line in lines][-1] == "", texts
print(len(texts), "lines of progress, such as:", texts[-1])
