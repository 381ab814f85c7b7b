"""Two and three ranks give the gradients of one: the script mpi_ranks.py compares them cell by cell on each rank."""

import os
import subprocess
import sys
from pathlib import Path

import pytest

pytest.importorskip("mpi4py")
SCRIPT = Path(__file__).with_name("mpi_ranks.py")


def run_ranks(ranks, *arguments, folder):
    command = [os.environ.get("ZYN_MPIEXEC", "mpirun"), "-n", str(ranks), sys.executable, str(SCRIPT), *arguments]
    return subprocess.run(command, cwd=folder, capture_output=True, text=True, timeout=200, check=False)


@pytest.mark.parametrize("case", ["file", "arrays"])
@pytest.mark.parametrize("ranks", [1, 2, 3])
def test_ranks_agree(work, case, ranks):
    done = run_ranks(ranks, case, folder=work)
    assert done.returncode == 0, done.stdout + done.stderr
    assert f"{ranks} ranks agree" in done.stdout


@pytest.mark.parametrize("ranks", [2, 3])
def test_each_rank_has_the_bits_of_the_program(work, ranks):
    """Both cut the mesh in the same way, and number the parts in the same way."""
    mesh = "box:6,5,4:tet:perturb=0.2,seed=3"
    mpirun = [os.environ.get("ZYN_MPIEXEC", "mpirun"), "-n", str(ranks), os.environ["ZYN_PROGRAM"]]
    field = ["--field", "x*y + z*z"]
    subprocess.run([*mpirun, "gradient", mesh, *field, "--weight", "1 + x*y", "-o", "."], check=True, capture_output=True)
    for kind in ("inner", "partition", "wall"):
        subprocess.run([*mpirun, "faces", mesh, *field, "--group", kind, "--search-method", "2", "-o", kind], check=True,
                       capture_output=True)
    done = run_ranks(ranks, "program", str(work), folder=work)
    assert done.returncode == 0, done.stdout + done.stderr
    assert f"{ranks} ranks agree" in done.stdout


def test_a_missing_exchange_shows(work):
    """The comparison can fail: with an exchange that does nothing, it does."""
    done = run_ranks(2, "arrays", "without-exchange", folder=work)
    assert done.returncode != 0 and "differs" in done.stdout + done.stderr


def test_error_in_an_exchange_reaches_the_caller(work):
    done = run_ranks(2, "arrays", "failing-exchange", folder=work)
    assert done.returncode == 0, done.stdout + done.stderr
    assert done.stdout.count("the exchange failed as it should") == 2
