#!/usr/bin/env python3
"""Makes the readers in Python and JavaScript from docs/scene-file.ksy and compares what they say with scene-inspect:
on every scene file of the tests, on a deep tree, on files cut at 40 places, and on a file with each of its bytes
changed. Runs the lines of docs/scene-file.md that use the reader.

    try-readers.py PROGRAMS REPOSITORY

Exit code 77: skipped."""
import json, os, pathlib, re, struct, subprocess, sys, tempfile

try:
    import kaitaistruct
except ImportError:
    print("SKIPPED: python3-kaitaistruct isn't installed")
    sys.exit(77)

programs, repository = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
LEVELS = 4000
CUTS = 40
REFUSALS = ("EOFError", "ValidationNotEqualError", "ValidationLessThanError", "ValidationGreaterThanError",
            "ValidationExprError")
failures = []


def check(condition, text):
    if not condition:
        failures.append(text)
        print("FAILED:", text)


def scenes_of_models(folder):
    """Converts all models of the tests; those that orvane refuses have no scene."""
    models = [*repository.glob("examples/*/*.json"), *repository.glob("tests/documents/*.json"),
              *(path for path in repository.glob("tests/provider/models/**/*") if path.suffix != ".txt")]
    for number, model in enumerate(models):
        scene = folder / f"{number}-{model.stem}.bin"
        subprocess.run([programs / "orvane", model, scene, "maps", folder / "run.log"], stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, timeout=60)
        if scene.exists():
            yield scene


def chain(levels):
    """A file of nodes, one below the other."""
    def node(children):
        return struct.pack("<I256x16f4xii4x", 0x22222222, *[1, 0, 0, 0, 0] * 3, 1, 0, children)

    return struct.pack("<III", 0x11111111, 107, 0) + node(1) * (levels - 1) + node(0)


def verdict(path):
    """The number of triangles by scene-inspect, or None for a file that isn't sound."""
    facts = json.loads(subprocess.run([programs / "scene-inspect", "--json", path], capture_output=True).stdout)
    return facts["triangles"] if facts["sound"] else None


def read_in_python(path):
    with open(path, "rb") as file:
        try:
            scene = SceneFile(kaitaistruct.KaitaiStream(file))
        except Exception as error:
            return type(error).__name__
        if not scene._io.is_eof():
            return "the reader stops before the end"
    nodes = [scene.root]
    for node in nodes:
        nodes += node.children
    return sum(len(mesh.triangles) for node in nodes for mesh in node.meshes)


def read_in_javascript(paths):
    result = subprocess.run(
        ["node", "--stack-size=30000", repository / "tests/inspect/readers/read.js", folder / "SceneFile.js"],
        input="\n".join(map(str, paths)), capture_output=True, text=True,
        env=dict(os.environ, NODE_PATH=str(repository / "build-readers/node_modules")))
    check(result.returncode == 0, result.stderr)
    return [int(line) if line.isdigit() else line for line in result.stdout.splitlines()]


def compare(paths):
    """Compares the verdicts of both readers with those of scene-inspect. Returns these."""
    expected = [verdict(path) for path in paths]
    for language, counts in ("Python", map(read_in_python, paths)), ("JavaScript", read_in_javascript(paths)):
        for path, wanted, got in zip(paths, expected, counts, strict=True):
            agrees = got in REFUSALS if wanted is None else got == wanted
            check(agrees, f"{path.name} in {language}: {got}, scene-inspect: {wanted}")
    return expected


def write_all(prefix, contents):
    paths = []
    for number, content in enumerate(contents):
        paths.append(folder / f"{prefix}-{number}.bin")
        paths[-1].write_bytes(content)
    return paths


def changed_bytes(content):
    """The file with one bit of each byte changed, not the same one everywhere."""
    for place in range(len(content)):
        changed = bytearray(content)
        changed[place] ^= 1 << place % 8
        yield bytes(changed)


with tempfile.TemporaryDirectory() as name:
    folder = pathlib.Path(name)
    for language in "python", "javascript":
        subprocess.run([repository / "scripts/readers/make", language, folder], check=True, stdout=subprocess.DEVNULL)
    sys.path.insert(0, name)
    from scene_file import SceneFile
    sys.setrecursionlimit(100_000)

    scenes = [*scenes_of_models(folder), *sorted((repository / "fuzz/corpus/SceneReader").iterdir())]
    sound = [count for count in compare(scenes) if count is not None]
    check(len(sound) >= 20 and max(sound) >= 1000, f"only {len(sound)} sound scenes of at most {max(sound)} triangles")
    check(compare(write_all("deep", [chain(LEVELS)])) == [0], "the deep tree isn't sound")

    house = next(path for path in scenes if path.stem.endswith("-house"))
    content = house.read_bytes()
    cuts = write_all("cut", (content[:len(content) * cut // CUTS] for cut in range(CUTS)))
    check(not any(count is not None for count in compare(cuts)), "a cut file is sound")
    small = (repository / "fuzz/corpus/SceneReader/one.bin").read_bytes()
    check(compare(write_all("longer", [small + b"\0"])) == [None], "a file with a byte too many is sound")
    verdicts = compare(write_all("changed", changed_bytes(small)))
    check(0 < verdicts.count(None) < len(verdicts), "all changes have the same effect")

    lines = re.search(r"```python\n(.*?)```", (repository / "docs/scene-file.md").read_text(), re.DOTALL).group(1)
    (folder / "measure.py").write_text(lines)
    measured = subprocess.run([sys.executable, "measure.py", house], cwd=folder, capture_output=True, text=True)
    bounds = json.loads(subprocess.run([programs / "scene-inspect", "--json", house],
                                       capture_output=True).stdout)["bounds"]
    size = [high - low for low, high in zip(bounds["minimum"], bounds["maximum"])]
    wanted = f"{verdict(house)} triangles, " + " x ".join(f"{length:.2f}" for length in size) + "\n"
    check(measured.stdout.endswith(wanted), f"measured {measured.stdout} {measured.stderr}, not {wanted}")

print(f"{len(sound)} sound scenes, {len(cuts)} cuts, {len(small)} changes, {len(failures)} failures")
sys.exit(1 if failures else 0)
