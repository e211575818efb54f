import io
import math
import subprocess

import numpy as np
import pandas
import pytest

import eod
from conftest import EOD_TOOL, run_eod


def frame_nums(recording, *args):
    return [frame.frameNum for frame in recording.frames(*args)]


def test_every_format_gives_the_same_frames(recording):
    logs = eod.open(recording["logs"])
    expected = frame_nums(logs)
    assert len(expected) == 40
    assert frame_nums(eod.open(recording["raw"])) == expected
    assert frame_nums(eod.open(recording["zlib"], format="zlib")) == expected
    assert frame_nums(eod.open(recording["log_file"])) == expected
    assert frame_nums(eod.open(recording["container"])) == expected
    first = next(iter(eod.open(recording["zlib"], format="zlib")))
    assert isinstance(first, eod.Frame)
    assert first.timingOutputData.experimentTime == next(iter(logs)).timingOutputData.experimentTime


def test_frames_slice_by_frame_number(recording):
    rec = eod.open(recording["logs"])
    nums = frame_nums(rec)
    assert frame_nums(rec, nums[5], nums[9]) == nums[5:10]
    assert frame_nums(rec, nums[-1] + 1) == []
    table = rec.to_pandas(first=nums[5], last=nums[9])
    assert list(table["FRAME_NUM"]) == nums[5:10]


# eod cat reads no container: its table is compared with that of the logs it was made from.
@pytest.mark.parametrize("kind", ["logs", "raw", "container"])
def test_dataframe_matches_eod_cat_column_by_column(recording, kind):
    text = run_eod("cat", recording["logs" if kind == "container" else kind]).stdout.decode()
    expected = pandas.read_csv(io.StringIO(text), sep="\t")
    table = eod.open(recording[kind]).to_pandas()
    assert list(table.columns) == text.splitlines()[0].split("\t")
    assert table["FRAME_NUM"].dtype == np.int64
    assert len(table) == len(expected)
    for name in expected.columns:
        got, want = table[name], expected[name]
        if got.dtype == object:
            assert list(got) == [("" if isinstance(v, float) and math.isnan(v) else str(v))
                                 for v in want], name
        else:
            assert np.allclose(got.to_numpy(float), want.to_numpy(float), equal_nan=True,
                               rtol=1e-12, atol=0), name


def test_one_record_type(recording):
    rec = eod.open(recording["logs"])
    gaze = rec.to_pandas(record="Gaze")
    assert gaze.columns[0] == "FRAME_NUM"
    assert len(gaze.columns) > 1
    assert all(".Gaze." in name for name in gaze.columns[1:])
    whole = rec.to_pandas()
    assert gaze.equals(whole[list(gaze.columns)].loc[gaze.index])
    with pytest.raises(ValueError, match="no record named 'Nothing'"):
        rec.to_pandas(record="Nothing")


def test_damaged_input_raises_library_errors(tmp_path, recording):
    garbage = tmp_path / "garbage.raw"
    garbage.write_bytes(b"\x09\xff\xff" + bytes(range(200)))
    with pytest.raises(eod.Error):
        list(eod.open(garbage))
    with pytest.raises(eod.EngineOutputDataFileError, match="No logfiles found"):
        eod.open(tmp_path, format="logs").to_pandas()
    cut = tmp_path / "cut.z"
    cut.write_bytes(recording["zlib"].read_bytes()[:-7])
    with pytest.raises(eod.SerializableError, match="cut.z"):
        list(eod.open(cut, format="zlib"))
    with pytest.raises(FileNotFoundError):
        eod.open(tmp_path / "missing")
    with pytest.raises(ValueError, match="format"):
        eod.open(garbage, format="csv")


def test_container_images_as_arrays(tmp_path):
    run_eod("demo", "--images", "--frames", 3, "--out", tmp_path / "demo")
    frame = next(iter(eod.open(tmp_path / "demo" / "demo.eodc")))
    images = frame.imagesOutputData
    assert images.numImages > 0
    image = images.image(0)
    assert image.array.shape == (image.height, image.bytesPerLine)
    assert image.array.dtype == np.uint8
