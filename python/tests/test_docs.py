"""The page docs/use/python.md: its code runs from top to bottom, as a reader would type it in."""

import os
import re
import subprocess
import sys

import pytest

pytest.importorskip("meshio")
pytest.importorskip("vtkmodules")
pytest.importorskip("mpi4py")


def blocks(source, language):
    page = (source / "docs" / "use" / "python.md").read_text(encoding="utf-8")
    return re.findall(rf"^```{language}\n(.*?)^```", page, flags=re.MULTILINE | re.DOTALL)


def test_code_of_the_page_runs(source, work):
    """All blocks of Python as one program: each one builds on those before it."""
    code = blocks(source, "python")
    assert len(code) == 8
    program = "\n".join(code)
    done = subprocess.run([sys.executable, "-W", "error::DeprecationWarning:__main__", "-c", program], cwd=work,
                          capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stderr
    printed = done.stdout.splitlines()
    error = float(next(line for line in printed if line.startswith("largest error")).split()[-1])
    assert 0 < error < 0.1
    assert "[[2. 2.]" in done.stdout, "the slope of the two cubes"
    assert sorted(os.listdir(work)) == ["two.vtu"]


def test_result_is_in_the_file(source, work):
    import meshio

    program = "\n".join(blocks(source, "python"))
    subprocess.run([sys.executable, "-c", program], cwd=work, check=True, capture_output=True)
    gradient = meshio.read("two.vtu").cell_data["gradient"][0]
    assert gradient.shape == (2, 3) and (gradient != 0).any()


def test_blocks_run_on_two_ranks(source, work):
    """The block on several ranks, on several ranks."""
    code = next(block for block in blocks(source, "python") if "mpi4py" in block)
    program = "import numpy as np\nimport zyn3dgradop as zyn\n" + code + "assert part.halo_count > 0 and slope[:, 0].any()\n"
    done = subprocess.run([os.environ.get("ZYN_MPIEXEC", "mpirun"), "-n", "2", sys.executable, "-c", program], cwd=work,
                          capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stdout + done.stderr


def test_commands_of_the_page(source, work):
    """The example runs as the page starts it; python3 is the interpreter of this test."""
    pytest.importorskip("matplotlib")
    *_, example = blocks(source, "sh")  # tests/package runs those before it
    (work / "python").symlink_to(source / "python")
    (work / "bin").mkdir()
    (work / "bin" / "python3").symlink_to(sys.executable)
    environment = {**os.environ, "PATH": f"{work / 'bin'}:{os.environ['PATH']}"}
    done = subprocess.run(["bash", "-euc", example], cwd=work, env=environment, capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stderr


def test_packages_that_the_page_names_are_those_of_dev(source):
    """./dev installs each of them, so that the tests have run with it."""
    page = (source / "docs" / "use" / "python.md").read_text(encoding="utf-8")
    needed = re.search(r"^    sudo apt-get install (.*)$", page, flags=re.MULTILINE).group(1).split()
    named = set(needed) | set(re.findall(r"`(python3-[a-z0-9]+)`", page))
    assert {"python3-meshio", "pybind11-dev"} <= named
    listed = set(re.findall(r"[\w.+-]+", (source / "dev").read_text(encoding="utf-8")))
    missing = named - listed
    assert not missing, f"./dev does not install {sorted(missing)}"
