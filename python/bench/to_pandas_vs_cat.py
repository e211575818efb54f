"""One run: a synthetic recording into a pandas DataFrame, by eod's to_pandas and by
`eod cat | pandas.read_csv`, and the C++ reader's own pass over the frames.

    PYTHONPATH=build/release/python python3 python/bench/to_pandas_vs_cat.py \
        build/release/tools/eod [FRAMES]

FRAMES defaults to 100,000. The recording is written to a temporary directory.
"""

import io
import subprocess
import sys
import tempfile
import time

import pandas

import eod


def timed(what, run):
    start = time.perf_counter()
    result = run()
    seconds = time.perf_counter() - start
    print("%-34s %8.2f s" % (what, seconds))
    return seconds, result


def main():
    tool = sys.argv[1]
    frames = int(sys.argv[2]) if len(sys.argv) > 2 else 100_000
    with tempfile.TemporaryDirectory() as tmp:
        logs = tmp + "/logs"
        subprocess.run([tool, "demo", "--frames", str(frames), "--out", logs], check=True,
                       capture_output=True)
        rec = eod.open(logs)
        ours, table = timed("eod to_pandas", rec.to_pandas)
        cat, text = timed("eod cat | pandas.read_csv", lambda: pandas.read_csv(
            io.StringIO(subprocess.run([tool, "cat", logs], check=True,
                                       capture_output=True, text=True).stdout), sep="\t"))
        # The C++ reader alone: every frame merged, nothing converted (one Python call per
        # frame is the only extra).
        reader, _ = timed("frames read (C++ reader)", lambda: sum(1 for _ in rec))
        print("%d frames, %d columns; to_pandas is %.1fx faster than cat | read_csv and "
              "%.1fx the reader's time" % (len(table), len(table.columns), cat / ours,
                                            ours / reader))
        assert list(table.columns) == list(text.columns)


if __name__ == "__main__":
    main()
