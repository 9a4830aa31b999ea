#!/usr/bin/env python3
"""Injects errors at the n-th open and the n-th write of every file that orvane and scene-inspect write, once or from
then on, for n = 1, 2, 3 ... until a run ends before the n-th call, and checks the outcome of every run.

    fail-files.py PROGRAMS DOCUMENT [ERROR...]

PROGRAMS is a build folder for Linux or for Windows. Under Wine only writes can fail, because Wine's server opens the
files. DOCUMENT is a model with pictures. The default ERROR is ENOSPC. Needs strace."""
import concurrent.futures, json, os, pathlib, re, shutil, subprocess, sys, tempfile

programs, document = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
errors = sys.argv[3:] or ["ENOSPC"]
on_wine = (programs / "orvane.exe").exists()
prefix = ["wine"] if on_wine else []
ending = ".exe" if on_wine else ""
CALLS = {"write": "write,writev,pwrite64"} if on_wine else {"open": "open,openat,creat", "write": "write,writev"}
EARLIER = b"an earlier file"
OPENED = re.compile(r'open\w*\(.*?"([^"]+)", O_WRONLY.*?= \d+<([^>]+)>')
WRITTEN = re.compile(r"write\w*\(\d+<([^>]+)>")
# The leak check doesn't work under a tracer.
ENVIRONMENT = dict(os.environ, ASAN_OPTIONS="detect_leaks=0", LC_ALL="C.UTF-8")


class Run:
    """A program run in its own folder, with a failing call if there is a target."""

    def __init__(self, command, inputs, target=(), calls="", error="", when=""):
        with tempfile.TemporaryDirectory() as folder:
            self.folder = os.path.realpath(folder)
            for name, content in inputs.items():
                path = pathlib.Path(self.folder, name)
                path.parent.mkdir(exist_ok=True)
                path.write_bytes(content)
            trace = self.folder + ".trace"
            options = [option for path in target for option in ("-P", os.path.join(self.folder, path))]
            options += [option for path in target for option in ("-P", path)]
            options += ["-e", f"inject={calls}:error={error}:when={when}"] if target else []
            with open(os.path.join(self.folder, "output"), "wb") as output:
                process = subprocess.run(
                    ["strace", "-f", "--seccomp-bpf", "-qq", "-y", "-o", trace, "-e", "trace=" + ",".join(CALLS.values()), *options,
                     *prefix, str(programs / (command[0] + ending)), *command[1:]],
                    cwd=self.folder, env=ENVIRONMENT, stdin=subprocess.DEVNULL, stdout=output,
                    stderr=subprocess.PIPE, timeout=300)
            self.trace = pathlib.Path(trace).read_text(errors="replace")
            os.unlink(trace)
            self.code = process.returncode
            self.errors = process.stderr.decode(errors="replace")
            self.files = {str(path.relative_to(self.folder)): path.read_bytes()
                          for path in pathlib.Path(self.folder).rglob("*") if path.is_file()}

    def targets(self):
        """The files that the run writes: path in its folder, and the paths that the calls use for it."""
        names = {}
        for requested, real in OPENED.findall(self.trace):
            names.setdefault(real, set()).add(requested)
        for real in WRITTEN.findall(self.trace):
            names.setdefault(real, set())
        return {os.path.relpath(real, self.folder): {os.path.relpath(real, self.folder), *requested}
                for real, requested in names.items() if real.startswith(self.folder + "/")}


def differing(run, base, besides=()):
    """Files that differ from the undisturbed run."""
    names = (set(run.files) | set(base.files)) - set(besides)
    return sorted(name for name in names if run.files.get(name) != base.files.get(name))


def lines_of(log):
    return log.decode("utf-16").split("\r\n")[:-1]


def check_log(run, base, call, n, span):
    if call == "open":
        return "a log" if "run.log" in run.files else ""
    # One write per line. Windows keeps the bytes of a failed write and retries.
    lines = base.files["run.log"].split(b"\r\0\n\0")[:-1]
    kept = lines[:n - 1] + (lines[n:] if span == "once" else [])
    log = run.files["run.log"]
    expected = b"".join(line + b"\r\0\n\0" for line in kept)
    return "" if log == expected or (on_wine and log == base.files["run.log"]) else "another log"


def check_orvane(name, call, n, span, run, base):
    if name in ("output", "run.log"):
        if run.code != 0 or differing(run, base, {name}):
            return f"{run.code} {differing(run, base, {name})}"
        return check_log(run, base, call, n, span) if name == "run.log" else ""
    lines, whole = lines_of(run.files["run.log"]), lines_of(base.files["run.log"])
    if run.files["output"].decode().split("\r\n")[:-1] != lines:
        return "standard output is not the log"
    scene, whole_scene = run.files["out/house.bin"], base.files["out/house.bin"]
    if name == "out/house.bin":
        expected = whole[:-1] + ["Error writing out/house.bin"]
        left = scene == EARLIER if call == "open" else whole_scene.startswith(scene) and scene != whole_scene
        wrong = "" if left else "a scene file of other bytes"
        return wrong if run.code == 11 and lines == expected else f"{run.code} {lines}"
    picture = re.fullmatch(r"Error: SKP library could not write .* to (.*)", lines[-2])
    named = picture and os.path.normpath(picture[1].replace("\\", "/")) == name
    if run.code != 12 or not named or lines[-1] != f"Error importing {document_name} (rc=12)":
        return f"{run.code} {lines}"
    return "" if lines[:-2] == whole[:len(lines) - 2] and scene == EARLIER else "other lines or an earlier scene lost"


def check_inspect(name, call, n, span, run, base):
    what = "standard output can't be written" if name == "output" else name + ": the file can't be written"
    # Outputs after the failed one are still written.
    wrong = differing(run, base, {name})
    return "" if run.code == 4 and what in run.errors and not wrong else f"{run.code} {run.errors} {wrong}"


def sweep(command, inputs, check, only=None):
    """Runs undisturbed; returns that run, and per target, call, error and span a function that tries every n."""
    base = Run(command, inputs)
    if base.code != 0:
        sys.exit(f"{command} ends with {base.code}: {base.errors}")

    def walk(name, names, call, error, span):
        outcomes = []
        while True:
            n = len(outcomes) + 1
            run = Run(command, inputs, names, CALLS[call], error, f"{n}{'' if span == 'once' else '+'}")
            if "(INJECTED)" not in run.trace:
                return outcomes
            wrong = check(name, call, n, span, run, base)
            outcomes.append(f"{command}: {error} at {call} {n} of {name}, {span}: {wrong}" if wrong else "")

    return base, [(walk, name, names, call, error, span)
                  for name, names in base.targets().items() if only in (None, name)
                  for call in CALLS for error in errors for span in ("once", "for ever")
                  if not (name == "output" and call == "open")]


if shutil.which("strace") is None:
    print("Skipped: the package strace is not installed")
    sys.exit(77)
document_name = f"in/{document.name}"
inputs = {f"in/{path.name}": path.read_bytes() for path in document.parent.iterdir() if path.is_file()}
# Triangles without shared corners: a scene of five megabytes, written in five blocks.
corners = [[[i, j, 0], [i + 0.5, j, 0], [i, j + 0.5, 0]] for i in range(148) for j in range(148)]
wide = json.dumps({"orvaneModel": 1, "entities": {"faces": [{"outer": outer} for outer in corners]}})
earlier = {"out/house.bin": EARLIER}
house = ["orvane", document_name, "out/house.bin", "maps", "run.log"]
scene, walks = sweep(house, {**inputs, **earlier}, check_orvane)
walks += sweep([house[0], "in/wide.json", *house[2:]], {"in/wide.json": wide.encode(), **earlier}, check_orvane,
               "out/house.bin")[1]
outputs = {name: content for name, content in scene.files.items() if name.startswith("out/")}
outputs["other.bin"] = outputs["out/house.bin"]
for arguments in (["--json"], ["--tree"], [], ["--diff", "other.bin"], ["--help"],
                  ["--glb", "house.glb", "--png", "house.png", "--size", "64x40"], ["--html", "house.html"]):
    walks += sweep(["scene-inspect", *arguments, "out/house.bin"], outputs, check_inspect)[1]
with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
    futures = [pool.submit(*walk) for walk in walks]
    outcomes = [outcome for future in futures for outcome in future.result()]
faults = [outcome for outcome in outcomes if outcome]
print(*(f"FAULT: {fault}" for fault in faults), sep="\n", end="\n" if faults else "")
print(f"{len(outcomes)} failed calls, {len(faults)} faults")
sys.exit(1 if faults or not outcomes else 0)
