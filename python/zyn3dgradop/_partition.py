"""Meshes in partitions: the faces to other partitions, and their exchange by mpi4py."""

from collections.abc import Mapping
from typing import Any, NamedTuple, Optional

import numpy as np


class PartitionFaces(NamedTuple):
    """The faces between one partition of a mesh and the others.

    owner : (np,) the interior cell at a face.
    areas : (3, np) area vectors that point to the other partition, L^2.
    centres : (3, np) face centres, L.
    weights : (np,) w of the value at a face, (1 - w) * phi[owner] + w * phi[halo cell].
    exchange : exchange(field) fills the halo cells of a field of N values, in place, with the values of their owners. It
        must not keep the array. If it has exchange.minimum(number), that returns the least of a whole number over all
        partitions, so that all of them learn of a failure.
    halo_cells : (np,) which halo cell lies across a face, from 0; by default each face has its own.
    halo_count : number of halo cells, by default that of the faces.

    Arrays of float64 are borrowed like those of Mesh.
    """

    owner: Any
    areas: Any
    centres: Any
    weights: Any
    exchange: Any
    halo_cells: Optional[Any] = None
    halo_count: Optional[int] = None


class MpiExchange:
    """The exchange of halo cells between the ranks of an mpi4py communicator.

    Parameters
    ----------
    comm : mpi4py communicator
        Used as it is: pass a duplicate if other messages are under way in it.
    send : dict of rank to the interior cells whose values that rank needs, in the order in which it receives them.
    receive : dict of rank to the cells that it fills here.

    Every rank makes one; calls are collective.
    """

    _TAG = 1

    def __init__(self, comm, send, receive):
        try:
            from mpi4py import MPI
        except ImportError:
            raise ImportError("MpiExchange needs mpi4py (Debian: python3-mpi4py)") from None
        if not isinstance(comm, MPI.Comm):
            raise TypeError(f"comm must be a communicator of mpi4py, not {type(comm).__name__}")
        self._comm = comm
        self._request = MPI.Request
        self._minimum = MPI.MIN
        self._send = _lists_of_cells(send, "send", comm.Get_size())
        self._receive = [
            (rank, cells, np.empty(len(cells)))
            for rank, cells in _lists_of_cells(receive, "receive", comm.Get_size())
        ]

    def __call__(self, field):
        """Fill the halo cells of `field` in place."""
        # Before anything is under way: a message that nobody waits for would answer a later exchange.
        sent = [field[cells] for _, cells in self._send]
        requests = [self._comm.Irecv(values, rank, self._TAG) for rank, _, values in self._receive]
        requests += [
            self._comm.Isend(values, rank, self._TAG) for (rank, _), values in zip(self._send, sent)
        ]
        self._request.Waitall(requests)
        for _, cells, values in self._receive:
            field[cells] = values

    def minimum(self, number):
        """Return the least `number` over all ranks."""
        return self._comm.allreduce(number, op=self._minimum)


def _lists_of_cells(of_rank, name, size):
    """[(rank, cells)] by ascending rank, copied."""
    if not isinstance(of_rank, Mapping):
        raise TypeError(f"{name} must be a dict of rank to cells, not {type(of_rank).__name__}")
    lists = []
    for rank, cells in of_rank.items():
        if not isinstance(rank, (int, np.integer)):
            raise TypeError(f"{name} must have ranks as keys, not {type(rank).__name__}")
        if not 0 <= rank < size:
            raise ValueError(f"{name} has the key {rank}, but the ranks are 0..{size - 1}")
        cells = np.asarray(cells)
        if cells.size and cells.dtype.kind not in "iu":
            raise TypeError(f"{name}[{rank}] must have whole numbers as elements, not {cells.dtype}")
        if cells.ndim != 1 or (cells < 0).any():
            raise ValueError(f"{name}[{rank}] must be a list of cell numbers from 0")
        lists.append((int(rank), np.array(cells, dtype=np.int64)))
    return sorted(lists, key=lambda item: item[0])
