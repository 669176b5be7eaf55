"""The comparisons of scripts/bench; see there for the options."""

import argparse
import json
import os
import platform
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import comparisons  # noqa: E402
import windows  # noqa: E402


def machine():
    model = "unknown"
    flags = ""
    with open("/proc/cpuinfo") as file:
        for line in file:
            if line.startswith("model name"):
                model = line.split(":", 1)[1].strip()
            if line.startswith("flags"):
                flags = line
    return {
        "cpu": model,
        "cores": os.cpu_count(),
        "sha_instructions": " sha_ni" in flags,
        "kernel": platform.release(),
    }


def main():
    parser = argparse.ArgumentParser(prog="scripts/bench")
    parser.add_argument("--build", required=True)
    parser.add_argument("--full", action="store_true")
    parser.add_argument("--only", action="append", default=[])
    parser.add_argument("--json", default="build/bench.json")
    parser.add_argument("--folder", default="build/bench")
    options = parser.parse_args()

    known = {**comparisons.ALL, **windows.ALL}
    for name in options.only:
        if name not in known:
            parser.error(f"no comparison is called {name}; there are {', '.join(known)}")

    # What the named folder holds is not ours to remove.
    os.makedirs(options.folder, exist_ok=True)
    folder = tempfile.mkdtemp(prefix="spindrift-bench-", dir=os.path.abspath(options.folder))
    os.makedirs(os.path.dirname(os.path.abspath(options.json)), exist_ok=True)
    setting = comparisons.Setting(os.path.abspath(options.build), folder, options.full, machine())
    print(f"{setting.machine['cpu']}, {setting.machine['cores']} cores, kernel {setting.machine['kernel']}, "
          f"SHA instructions: {'yes' if setting.machine['sha_instructions'] else 'no'}\n")
    print(f"{'bar':>3}  {'comparison':<62} {'median':>9} {'spread':>8} {'limit':>7}")
    figures = []
    try:
        for name, comparison in known.items():
            if options.only and name not in options.only:
                continue
            for figure in comparison(setting):
                figures.append(figure)
                verdict = "" if figure.met else ("  MISSED" if figure.missed else "  within the spread")
                limit = "" if figure.limit is None else f"{figure.limit:.2f}"
                print(f"{figure.bar:>3}  {figure.name:<62} {figure.median:>9.3f} {figure.spread:>8.3f} "
                      f"{limit:>7}{verdict}", flush=True)
                if figure.note:
                    print(f"     {figure.note}")
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    with open(options.json, "w") as file:
        json.dump({"machine": setting.machine, "full": options.full,
                   "commit": subprocess.run(["git", "rev-parse", "--short", "HEAD"], text=True,
                                            capture_output=True, check=False).stdout.strip(),
                   "figures": [figure.as_dict() for figure in figures]}, file, indent=2)
    print(f"\nFigures written to {options.json}.")
    barred = [figure for figure in figures if figure.limit is not None]
    missed = [figure for figure in barred if figure.missed]
    if missed:
        print(f"{len(missed)} of {len(barred)} bars missed.")
        sys.exit(1)
    print(f"All {len(barred)} bars met.")


main()
