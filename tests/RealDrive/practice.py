"""The practice drive, for what no emulated drive can hold: every disc type, and audio discs."""

import argparse
import json
import os
import pathlib
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True

TYPES = {
    "CD": ["CD-ROM", "CD-R", "CD-RW"],
    "DVD": ["DVD-ROM", "DVD-R", "DVD-R DL", "DVD-RW", "DVD-RAM", "DVD+R", "DVD+R DL", "DVD+RW",
            "DVD-RW DL", "DVD+RW DL", "HD DVD-ROM", "HD DVD-R", "HD DVD-RAM", "HD DVD-RW",
            "HD DVD-R DL", "HD DVD-RW DL"],
    "BD": ["BD-ROM", "BD-R", "BD-RE"],
}


def run(build, folder, *arguments):
    environment = {**os.environ, "SPINDRIFT_PRACTICE_DRIVE": str(folder / "drive"),
                   "SPINDRIFT_TOOL_ROOT": str(build / "libexec/spindrift"),
                   "HOME": str(folder), "XDG_DATA_HOME": str(folder / "data"),
                   "XDG_CONFIG_HOME": str(folder / "config"), "TMPDIR": str(folder / "temporary")}
    return subprocess.run([build / "bin/spindrift-cli", *arguments], env=environment,
                          capture_output=True, text=True, check=False, timeout=60)


def disc_shown(build, folder, settings):
    (folder / "drive/drive.json").write_text(json.dumps(settings))
    result = run(build, folder, "status", "--json")
    try:
        return json.loads(result.stdout)["disc"] or {}
    except (ValueError, KeyError):
        return {"status": result.returncode, "errors": result.stderr}


def check(sentence, found, wanted):
    print(f"{'ok' if found == wanted else 'FAILED':6} {sentence}")
    if found != wanted:
        print(f"       wanted {wanted!r}, found {found!r}")
    return found == wanted


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, type=pathlib.Path, help="the build tree")
    build = parser.parse_args().build.resolve()
    well = True
    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)
        for name in ["drive", "data", "config", "temporary"]:
            (folder / name).mkdir()
        image = folder / "drive/disc.iso"
        image.write_bytes(os.urandom(64 * 2048))
        for kind, types in TYPES.items():
            for raw_type in types:
                disc = disc_shown(build, folder, {"discType": raw_type})
                well &= check(f"A {raw_type} is shown with its type as a {kind}",
                              (disc.get("rawType"), disc.get("kind"), disc.get("displayName")),
                              (raw_type, kind, f"{kind} ({raw_type})"))
        frames = os.urandom(100 * 2352)
        image.write_bytes(frames)
        audio = {"audio": True, "discType": "CD-R"}
        disc = disc_shown(build, folder, audio)
        well &= check("An audio disc is shown as one and read from its whole device",
                      (disc.get("volumeName"), disc.get("imageSourceBSDName")),
                      ("Audio CD", "practice0"))
        target = folder / "audio.iso"
        ended = run(build, folder, "rip", "--thorough", "--output", str(target))
        well &= check("An audio disc rips, twice read, to its raw frames",
                      (ended.returncode, target.exists() and target.read_bytes() == frames),
                      (0, True))
        if ended.returncode:
            print("       " + ended.stderr)
    return 0 if well else 1


if __name__ == "__main__":
    sys.exit(main())
