"""What the tests share."""

import os
import tempfile
from pathlib import Path

import numpy as np
import pytest

from grids import Grid

SOURCE = Path(__file__).resolve().parents[2]

# Open MPI makes and removes a folder of its own; runs that begin and end at the same time stumble over a common one.
SESSIONS = tempfile.TemporaryDirectory(prefix="mpi-", ignore_cleanup_errors=True)
os.environ["OMPI_MCA_orte_tmpdir_base"] = SESSIONS.name


@pytest.fixture(scope="session")
def source():
    """The folder of the repository."""
    return SOURCE


@pytest.fixture(scope="session")
def grid():
    """60 shuffled parallelepipeds."""
    return Grid(4, 3, 5)


@pytest.fixture
def work(tmp_path, monkeypatch):
    """A temporary folder to run in: what a test leaves behind, it leaves there."""
    monkeypatch.chdir(tmp_path)
    return tmp_path


@pytest.fixture
def random():
    return np.random.default_rng(2024)


def pytest_report_header():
    import zyn3dgradop

    return f"zyn3dgradop {zyn3dgradop.__version__} from {os.path.dirname(zyn3dgradop.__file__)}"
