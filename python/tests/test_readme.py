import os
import re

from conftest import run_eod

SOURCE_DIR = os.environ.get("EOD_SOURCE_DIR",
                            os.path.join(os.path.dirname(__file__), "..", ".."))
README = os.path.join(SOURCE_DIR, "README.md")


def test_readme_example_runs_as_written(tmp_path, monkeypatch):
    with open(README, encoding="utf-8") as f:
        example = re.search(r"```python\n(.*?)```", f.read(), re.S).group(1)
    monkeypatch.chdir(tmp_path)
    run_eod("demo", "--frames", 60)  # leaves ./eod-demo, as the README assumes
    exec(compile(example, "README.md", "exec"), {})
    with open("gaze.png", "rb") as png:
        assert png.read(8) == b"\x89PNG\r\n\x1a\n"
