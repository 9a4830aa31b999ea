#!/usr/bin/env python3
"""Compares what the Windows build, under Wine, and the Linux build make of models.

    compare-models.py LINUX_BUILD WINDOWS_BUILD [--sample COUNT] [FOLDER...]

Each file must give the same exit code, standard error and pictures, and the same scene file. For other formats than
glTF the same number of triangles with the same bounds is enough, because assimp computes normals and texture
coordinates with the system's mathematical functions. Without folders it takes Debian's test models; --sample takes
COUNT files of each format. Exit code 0: no difference but those listed below; 1: otherwise; 77: there are no files."""
import argparse, collections, concurrent.futures, json, os, pathlib, subprocess, sys, tempfile

COLLECTION = "/usr/share/assimp/models"
TOLERANCE = 1e-5  # of the bounds, as a share of the largest extent
MEMORY = 8_000_000  # kilobytes of address space, on Linux alone: Wine reserves more

# Files of the collection for which the systems differ in more than that.
OTHER_CASE = "names pictures in another case than the files have, which Windows ignores"
EXPECTED = {
    "3DS/cube_with_diffuse_texture.3DS": OTHER_CASE,
    "3DS/test1.3ds": OTHER_CASE,
    "NFF/NFF/ManyEarthsNotJustOne.nff": OTHER_CASE,
    "NFF/NFF/spheres.nff": OTHER_CASE,
    "invalid/OutOfMemory.off": "is refused for lack of memory only with a limit on memory",
}


class Outcome:
    """A run of orvane in its own folder."""

    def __init__(self, command, folder, model):
        folder.mkdir()
        # On a busy machine Wine sometimes fails to start a program, which then has no output.
        for _ in range(3):
            process = subprocess.run([*command, str(model), "scene/scene.bin", "maps", "scene/run.log"], cwd=folder,
                                     stdin=subprocess.DEVNULL, capture_output=True, timeout=300)
            if process.stdout:
                break
        self.code = process.returncode
        self.errors = process.stderr.replace(b"\r\n", b"\n")
        self.scene = folder / "scene" / "scene.bin"
        self.pictures = {path.name: path.read_bytes() for path in folder.glob("scene/*.png")}


def facts(inspect, scene):
    found = json.loads(subprocess.run([inspect, "--json", scene], capture_output=True, check=True).stdout)
    return found["triangles"], found["bounds"]["minimum"] + found["bounds"]["maximum"]


def have_same_shape(inspect, scenes):
    (triangles, bounds), (others, other_bounds) = (facts(inspect, scene) for scene in scenes)
    extent = max(bounds[axis + 3] - bounds[axis] for axis in range(3))
    return triangles == others and all(abs(a - b) <= TOLERANCE * extent for a, b in zip(bounds, other_bounds))


def compare(linux, windows, model):
    """What both builds make of the model ("refused", "same" or "close"), and their difference, if any."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        limited = ["sh", "-c", f'ulimit -v {MEMORY}; exec timeout 60 "$0" "$@"', str(linux / "orvane")]
        ours = Outcome(limited, folder / "linux", model)
        theirs = Outcome(["wine", str(windows / "orvane.exe")], folder / "windows", model)
        differences = [f"{name}: {a!r} | {b!r}" for name, a, b in (
            ("exit code", ours.code, theirs.code), ("standard error", ours.errors, theirs.errors),
            ("pictures", sorted(ours.pictures), sorted(theirs.pictures))) if a != b]
        if ours.pictures != theirs.pictures and not differences:
            differences.append("the pictures differ")
        kind = "refused"
        if ours.code == theirs.code == 0:
            scenes = (ours.scene, theirs.scene)
            same = scenes[0].read_bytes() == scenes[1].read_bytes()
            kind = "same" if same else "close"
            must_be_same = model.suffix.lower() in (".gltf", ".glb")
            if not same and (must_be_same or not have_same_shape(linux / "scene-inspect", scenes)):
                differences.append("the scene files differ")
        return kind, "; ".join(differences)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("linux", type=pathlib.Path)
    parser.add_argument("windows", type=pathlib.Path)
    parser.add_argument("folders", type=pathlib.Path, nargs="*", default=[pathlib.Path(COLLECTION)])
    parser.add_argument("--sample", type=int, default=sys.maxsize)
    arguments = parser.parse_args()
    linux, windows = arguments.linux.resolve(), arguments.windows.resolve()
    os.environ.update(WINEPREFIX=str(windows / "wine"), WINEDEBUG="-all", LC_ALL="C.UTF-8")

    taken = collections.Counter()
    models = []
    for path in sorted(path for folder in arguments.folders for path in folder.resolve().rglob("*") if path.is_file()):
        taken[path.suffix.lower()] += 1
        if taken[path.suffix.lower()] <= arguments.sample:
            models.append(path)
    if not models:
        print("Skipped: there are no files, such as those of the package assimp-testmodels")
        return 77
    kinds = collections.Counter()
    faults = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for model, (kind, difference) in zip(models, pool.map(lambda model: compare(linux, windows, model), models)):
            kinds[kind] += 1
            if difference:
                reason = EXPECTED.get(os.path.relpath(model, COLLECTION))
                faults += reason is None
                print(f"expected, since the file {reason}: {model}" if reason else f"DIFFERENCE: {model}: {difference}")
    print(f"{len(models)} files: {kinds['same']} with the same scene file, {kinds['close']} with the same triangles "
          f"and bounds, {kinds['refused']} refused; {faults} differences")
    return 0 if faults == 0 and kinds["same"] > 0 else 1


sys.exit(main())
