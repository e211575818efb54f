"""Recordings of the eye-tracking engine in Python.

    rec = eod.open("session/")          # log directory, log file, raw record file
    for frame in rec.frames(100, 200):  # frame numbers 100..200, both included
        gaze = frame.eyeOutputData.gazeOutputData
    table = rec.to_pandas()             # the table of `eod cat`, same column names

Records carry the C++ getters as attributes and the C++ setters as methods, with the C++
names. A refused value raises ValueError with the C++ message; library errors are
subclasses of eod.Error named after their C++ classes.
"""

import os

from . import _eod
from ._eod import (  # noqa: F401  (the package's public names)
    LEFT_EYE,
    RIGHT_EYE,
    CompressionError,
    EngineOutputDataFileError,
    Error,
    EyeClosureOutputData,
    EyeOutputData,
    FaceSetOutputData,
    Frame,
    GazeOutputData,
    GeomUtilsError,
    HeadOutputDataV2,
    ImageCollectionOutputData,
    ImageOutputData,
    InetAddressException,
    PupilOutputData,
    SerialPortError,
    SerializableError,
    SocketError,
    TimingOutputData,
)

_UINT32_MAX = 2**32 - 1
# A zlib stream has no mark of its own: it is read only when asked for by name.
_FORMATS = ("logs", "raw", "zlib", "container")


class Recording:
    """A recording on disk. Every iteration reads it afresh, one frame at a time."""

    def __init__(self, path, format=None):
        path = os.fspath(path)
        if not os.path.exists(path):
            raise FileNotFoundError(path)
        if format is None:
            if os.path.isdir(path):
                format = "logs"
            else:
                format = "container" if _eod.FrameReader.isContainer(path) else "raw"
        if format not in _FORMATS:
            raise ValueError("format must be one of %s, not %r" % (", ".join(_FORMATS), format))
        self.path = path
        self.format = format

    def __iter__(self):
        return self.frames()

    def frames(self, first=None, last=None):
        """Frames with numbers first..last (both included; either may be left out)."""
        first = 0 if first is None else first
        last = _UINT32_MAX if last is None else last
        reader = _eod.FrameReader(self.path, self.format)
        while True:
            frame = reader.next()
            if frame is None:
                return
            if first <= frame.frameNum <= last:
                yield frame

    def to_pandas(self, record=None, first=None, last=None):
        """The frame table of `eod cat` as a DataFrame, with its column names.

        FRAME_NUM is int64; a column of numbers is float64 (NaN where a frame lacks the
        record); a column holding other text is of object dtype with str cells. With
        record=NAME (as "Gaze" or "Eye.Gaze"), only that record's columns and the frames
        that hold it.
        """
        import pandas

        names, columns = _eod.frame_table(
            self.path,
            self.format,
            0 if first is None else first,
            _UINT32_MAX if last is None else last,
            record or "",
        )
        return pandas.DataFrame(dict(zip(names, columns)), columns=names, copy=False)


def open(path, format=None):
    """Opens a log directory, a log file, a raw record file, a compressed container or
    (format="zlib") a zlib record stream."""
    return Recording(path, format)


def _top_level_ids(frame):
    return sorted({record.objectID for record in frame.subObjects})


def write_logs(directory, frames, ids=None):
    """Writes frames as per-object log files into an existing directory; ids default to
    the record ids of the first frame."""
    frames = iter(frames)
    first = next(frames, None)
    if first is None:
        raise ValueError("no frames to write")
    writer = _eod.LogWriter(os.fspath(directory), ids or _top_level_ids(first))
    try:
        writer.write(first)
        for frame in frames:
            writer.write(frame)
    finally:
        writer.close()


def write_raw(path, frames):
    """Writes frames to a raw record file."""
    writer = _eod.RawWriter(os.fspath(path))
    try:
        for frame in frames:
            writer.write(frame)
    finally:
        writer.close()


class Client:
    """Frames from an engine over TCP. Iteration ends when the engine closes the
    connection or no frame arrives within `timeout` seconds."""

    def __init__(self, host, port, timeout=5.0):
        self.timeout = timeout
        self._client = _eod.TcpClient(host, int(port))

    def receive(self, timeout=None):
        """The next frame, or None when none arrived in time or the engine closed."""
        seconds = self.timeout if timeout is None else timeout
        return self._client.receive(int(seconds * 1000))

    def __iter__(self):
        while True:
            frame = self.receive()
            if frame is None:
                return
            yield frame

    def close(self):
        self._client.disconnect()

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.close()
