"""Boots a guest and runs the test cases of that boot against its optical drive.

udev  a SCSI drive, with udev and, for some cases, UDisks2
bare  a SCSI drive and neither of them
ide   an IDE drive, neither of them; a changed disc is an error here, on SCSI it is silent
"""

import argparse
import os
import pathlib
import signal
import sys
import tempfile

sys.dont_write_bytecode = True

import cases
import cases_access  # noqa: F401  (importing registers the cases)
import cases_faults  # noqa: F401
import cases_polling  # noqa: F401
import cases_reading  # noqa: F401
import cases_tray  # noqa: F401
import guest_files
from discs import Discs
from guest import Guest

SKIPPED = 77


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("boot", choices=["udev", "bare", "ide"])
    parser.add_argument("--build", required=True, type=pathlib.Path, help="the build tree")
    parser.add_argument("--discs", required=True, type=pathlib.Path, help="the images' folder")
    parser.add_argument("--only", default="", help="only cases whose sentence has this text")
    options = parser.parse_args()

    reason = guest_files.what_is_missing()
    if reason:
        print(f"skipped: {reason}")
        return 1 if os.environ.get("SPINDRIFT_REQUIRE_ALL") == "1" else SKIPPED
    # So that the folder goes also when the test takes too long.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    with tempfile.TemporaryDirectory(prefix="spindrift-guest-",
                                     dir=os.environ.get("TMPDIR", "/var/tmp")) as folder:
        folder = pathlib.Path(folder)
        guest = Guest(folder, options.build, "ide" if options.boot == "ide" else "scsi")
        try:
            bench = cases.Bench(guest, Discs(options.discs))
            if options.boot == "udev":
                bench.start_udev()
            well = cases.run_all(bench, options.boot, options.only)
        finally:
            guest.close()
    return 0 if well else 1


if __name__ == "__main__":
    sys.exit(main())
