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


def test_other_threads_run_while_the_client_waits():
    import socket
    import threading
    import time

    with socket.socket() as server:
        server.bind(("127.0.0.1", 0))
        server.listen(1)
        client = eod.Client("127.0.0.1", server.getsockname()[1])
        conn, _ = server.accept()  # connected, but the engine never sends
        with conn, client:
            result = []
            waiter = threading.Thread(target=lambda: result.append(client.receive(timeout=0.5)))
            start = time.monotonic()
            waiter.start()
            ticks = 0
            while waiter.is_alive():
                ticks += 1
                time.sleep(0.001)
            waiter.join()
            # The wait gave up the GIL: this thread kept running all along.
            assert result == [None]
            assert time.monotonic() - start >= 0.4
            assert ticks > 50
