import re
import subprocess

import eod
from conftest import EOD_TOOL


def test_client_reads_the_synthetic_server(tmp_path):
    server = subprocess.Popen([EOD_TOOL, "serve", "--synthetic", "--host", "127.0.0.1",
                               "--port", "0", "--frames", "30", "--rate", "300"],
                              stderr=subprocess.PIPE, text=True)
    try:
        line = server.stderr.readline()
        port = int(re.search(r"listening on port (\d+)", line).group(1))
        with eod.Client("127.0.0.1", port, timeout=5.0) as client:
            frames = [frame.frameNum for frame in client]
        assert len(frames) == 30
        assert frames == sorted(frames)
    finally:
        server.kill()
        server.wait(timeout=10)


def test_client_without_a_server_is_a_socket_error():
    import socket

    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        port = s.getsockname()[1]
    try:
        eod.Client("127.0.0.1", port)
    except eod.SocketError:
        pass
    else:
        raise AssertionError("connect to a closed port succeeded")
