import numpy as np
import pytest

import eod


def make_frames():
    frames = []
    for n in range(100, 105):
        frame = eod.Frame(n)
        frame.addTimingOutputDataIfMissing().setExperimentTime(n / 60.0)
        gaze = eod.GazeOutputData()
        gaze.setGazeQualityLevel(eod.LEFT_EYE, 3)
        gaze.setGazeRotationPitchYaw(eod.LEFT_EYE, [0.25, -0.5])
        frame.addEyeOutputDataIfMissing().addSubObject(gaze)
        frames.append(frame)
    return frames


def check_read_back(rec):
    frames = list(rec)
    assert [f.frameNum for f in frames] == list(range(100, 105))
    gaze = frames[2].eyeOutputData.gazeOutputData
    assert gaze.gazeQualityLevel(eod.LEFT_EYE) == 3
    assert gaze.gazeRotation(eod.LEFT_EYE) == [0.25, -0.5]
    assert frames[2].timingOutputData.experimentTime == 102 / 60.0


def test_write_raw_and_logs_and_read_back(tmp_path):
    eod.write_raw(tmp_path / "frames.raw", make_frames())
    check_read_back(eod.open(tmp_path / "frames.raw"))
    logs = tmp_path / "logs"
    logs.mkdir()
    eod.write_logs(logs, make_frames())
    check_read_back(eod.open(logs))
    table = eod.open(logs).to_pandas(record="Gaze")
    assert list(table["FRAME_NUM"]) == list(range(100, 105))


def test_images_as_arrays(tmp_path):
    pixels = np.arange(6 * 8, dtype=np.uint8).reshape(6, 8)
    frame = eod.Frame(1)
    image = eod.ImageOutputData()
    image.setImageIdentifier("left eye")
    image.setNewImage(pixels, width=8)
    frame.addImageCollectionOutputDataIfMissing().addImage(image)
    eod.write_raw(tmp_path / "image.raw", [frame])
    back = next(iter(eod.open(tmp_path / "image.raw"))).imagesOutputData.image(0)
    assert back.imageIdentifier == "left eye"
    array = back.array
    del back
    assert array.shape == (6, 8) and array.dtype == np.uint8
    assert np.array_equal(array, pixels)


def test_setters_refuse_bad_values_with_the_library_message():
    gaze = eod.GazeOutputData()
    with pytest.raises(ValueError, match="gaze_rot 2D rotation vector expected"):
        gaze.setGazeRotationPitchYaw(eod.LEFT_EYE, [1.0])
    assert gaze.gazeRotation(eod.LEFT_EYE) == [0.0, 0.0]
    with pytest.raises(ValueError, match="gql not in the range"):
        gaze.setGazeQualityLevel(eod.RIGHT_EYE, 4)
    head = eod.HeadOutputDataV2()
    with pytest.raises(ValueError, match="head_confidencec outside the range 0..1"):
        head.setHeadPositionConfidence(1.5)
    assert issubclass(eod.SocketError, eod.Error)
    with pytest.raises(eod.EngineOutputDataFileError, match="duplicate object IDs"):
        eod._eod.LogWriter("/tmp", [10, 10])
