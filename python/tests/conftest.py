import os
import subprocess

import pytest

EOD_TOOL = os.environ.get("EOD_TOOL", "eod")


def run_eod(*args, **kwargs):
    return subprocess.run([EOD_TOOL, *map(str, args)], check=True, capture_output=True,
                          timeout=60, **kwargs)


@pytest.fixture(scope="session")
def recording(tmp_path_factory):
    """A synthetic session in every format the package reads: log directory, one log
    file, raw record file, zlib stream and compressed container."""
    base = tmp_path_factory.mktemp("rec")
    logs = base / "logs"
    run_eod("demo", "--frames", 40, "--out", logs)
    raw = base / "session.raw"
    run_eod("upgrade", logs, raw)
    zlib = base / "session.z"
    run_eod("compress", raw, zlib)
    container = base / "session.eodc"
    run_eod("compress", "--profile", "compact", logs, container)
    return {"logs": logs, "raw": raw, "zlib": zlib, "log_file": logs / "Timing.tql",
            "container": container}
