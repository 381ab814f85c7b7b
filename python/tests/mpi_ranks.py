"""Gradients on several ranks against those of the whole mesh, which every rank computes as well.

    mpirun -n RANKS python3 mpi_ranks.py file|arrays [without-exchange|failing-exchange]

Or the bits of each rank against those of zyngrad on as many ranks, which has written them into FOLDER:

    mpirun -n RANKS python3 mpi_ranks.py program FOLDER
"""

import sys
from pathlib import Path

import numpy as np
from grids import Grid
from mpi4py import MPI
from program import arrays_of, same_bits

import zyn3dgradop as z

MESH = "box:6,5,4:tet:perturb=0.2,seed=3"
COMM = MPI.COMM_WORLD
RANK, RANKS = COMM.Get_rank(), COMM.Get_size()


def phi(x, y, z):
    return np.sin(2 * x) * y + z * z


def phi_2(x, y, z):
    return x * y - z


def kappa(x, y, z):
    return 1 + x * x


def results_of(mesh):
    """Everything that several ranks compute together."""
    fields = [f(*mesh.centres) for f in (phi, phi_2, kappa)]
    found = {method: z.Gradient(mesh, method)(fields[0]) for method in ("plain", "iterated", "least_squares")}
    if mesh.node_count:
        found["radial_basis"] = z.Gradient(mesh, "radial_basis", span=100.0)(fields[0])
    found["seven sweeps"] = z.Gradient(mesh, "iterated")(fields[0], sweeps=7)
    found["weighted"] = z.Gradient(mesh).weighted(fields[0], fields[2])
    three = z.Gradient(mesh).three(np.stack(fields))
    for k in range(3):
        found[f"three {k}"] = three[k]
    return found


def compare(part, whole, number):
    """Own and halo cells of the part against the same cells of the whole.

    number: of each cell of the part in the whole, -1 for ghosts. The cells add their faces in another order.
    """
    cells = np.flatnonzero(number >= 0)
    ghosts = np.flatnonzero(number < 0)
    ours, theirs = results_of(part), results_of(whole)
    problems = []
    for name, result in ours.items():
        if name == "radial_basis":
            # The order of a cell's neighbours differs; rounding is multiplied by the condition of its system.
            tolerance = 1e-5
        else:
            tolerance = 1e-12
        expected = theirs[name][:, number[cells]]
        difference = np.abs(result[:, cells] - expected).max() / np.abs(expected).max()
        if not difference <= tolerance:
            problems.append(f"{name} differs by {difference:.1e} of the largest on rank {RANK}")
        if name != "radial_basis" and result[:, ghosts].any():
            problems.append(f"{name} differs from 0 in ghost cells on rank {RANK}")
    return problems


def file_case():
    whole = z.Mesh.read(MESH)
    part = z.Mesh.read(MESH, comm=COMM)
    total = COMM.allreduce(part.cell_count)
    assert total == whole.cell_count, (total, whole.cell_count)
    assert RANKS == 1 or part.halo_count > 0
    assert part.check() == []
    of_file = np.full(whole.cell_count, -1)
    source = np.asarray(whole.source_cell)
    of_file[source[:whole.cell_count]] = np.arange(whole.cell_count)
    numbers = np.asarray(part.source_cell)
    return part, whole, np.where(numbers >= 0, of_file[numbers], -1)


def arrays_case(kind):
    """A rank's share of a mesh as a solver would have it: a third of the cells, dealt like cards, which is no good
    decomposition and has many faces between ranks."""
    grid = Grid(6, 5, 4)
    whole = z.Mesh(**grid.arrays())
    rank_of = np.arange(grid.n) % RANKS
    own = np.flatnonzero(rank_of == RANK)
    local = np.full(grid.n, -1)
    local[own] = np.arange(len(own))
    mine, theirs = rank_of[grid.owner] == RANK, rank_of[grid.neighbour] == RANK
    inner = np.flatnonzero(mine & theirs)
    boundary = np.flatnonzero(rank_of[grid.boundary_owner] == RANK)
    cut = np.flatnonzero(mine != theirs)
    inside = np.where(mine[cut], grid.owner[cut], grid.neighbour[cut])
    beyond = np.where(mine[cut], grid.neighbour[cut], grid.owner[cut])
    out_of_owner = np.where(mine[cut], 1.0, -1.0)
    halo = np.unique(beyond)
    ghosts = grid.n + boundary
    number = np.concatenate([own, np.full(len(boundary), -1), halo]).astype(np.int64)
    centres = np.ascontiguousarray(grid.centres[:, np.concatenate([own, ghosts, halo])])
    first_halo = len(own) + len(boundary)

    send, receive = {}, {}
    for other in range(RANKS):
        if other == RANK:
            continue
        from_other = halo[rank_of[halo] == other]
        if len(from_other):
            receive[other] = (first_halo + np.searchsorted(halo, from_other)).astype(np.int64)
        pairs = np.concatenate([np.stack([grid.owner, grid.neighbour]), np.stack([grid.neighbour, grid.owner])], axis=1)
        wanted = np.unique(pairs[0][(rank_of[pairs[0]] == RANK) & (rank_of[pairs[1]] == other)])
        if len(wanted):
            send[other] = local[wanted]
    exchange = z.MpiExchange(COMM, send=send, receive=receive)
    if kind == "without-exchange":
        class Nothing:
            minimum = exchange.minimum

            def __call__(self, field):
                pass

        exchange = Nothing()
    if kind == "failing-exchange":
        class Failing:
            minimum = exchange.minimum

            def __call__(self, field):
                raise ZeroDivisionError("the exchange failed as it should")

        exchange = Failing()

    partition = z.PartitionFaces(
        owner=local[inside], areas=np.ascontiguousarray(grid.areas[:, cut] * out_of_owner),
        centres=np.ascontiguousarray(grid.face_centres[:, cut]),
        weights=np.where(mine[cut], grid.weights[cut], 1.0 - grid.weights[cut]), exchange=exchange,
        halo_cells=np.searchsorted(halo, beyond), halo_count=len(halo)) if RANKS > 1 else None
    part = z.Mesh(
        centres=centres, volumes=grid.volumes[own], owner=local[grid.owner[inner]], neighbour=local[grid.neighbour[inner]],
        areas=np.ascontiguousarray(grid.areas[:, inner]), face_centres=np.ascontiguousarray(grid.face_centres[:, inner]),
        weights=grid.weights[inner], boundary_owner=local[grid.boundary_owner[boundary]],
        boundary_areas=np.ascontiguousarray(grid.boundary_areas[:, boundary]),
        boundary_centres=np.ascontiguousarray(grid.boundary_centres[:, boundary]), partition=partition)
    return part, whole, number


def program_case(folder):
    """Problems of this rank: arrays whose bits are not those of the program's piece."""
    part = z.Mesh.read(MESH, comm=COMM)
    x, y, zz = part.centres
    field, weight = x * y + zz * zz, 1 + x * y
    written = arrays_of(folder / "gradient" / f"gradient.{RANK:04}.vtu")
    found = {f"gradient_{name}": z.Gradient(part, method)(field) for name, method in (
        ("plain", "plain"), ("iterated", "iterated"), ("lsq", "least_squares"), ("rbf", "radial_basis"))}
    found["gradient_weighted"] = z.Gradient(part).weighted(field, weight)
    problems = [f"{name} has other bits than zyngrad's on rank {RANK}" for name, result in found.items()
                if not same_bits(result[:, :part.cell_count].T, written[name])]
    for kind in ("inner", "partition", "wall"):
        values = z.FaceInterpolation(part, kind, method=2)(field)
        piece = folder / kind / "faces" / f"faces.{RANK:04}.vtp"
        if not same_bits(values, arrays_of(piece)["value"]):
            problems.append(f"{kind} faces have other bits than zyngrad's on rank {RANK}")
    return problems


def main():
    case, kind = sys.argv[1], (sys.argv[2:] or [""])[0]
    if case == "program":
        return agree(program_case(Path(kind)))
    part, whole, number = file_case() if case == "file" else arrays_case(kind)
    if kind == "failing-exchange":
        try:
            z.Gradient(part)(phi(*part.centres))
        except ZeroDivisionError as error:
            print(error, flush=True)
        return 0
    return agree(compare(part, whole, number))


def agree(problems):
    """The exit code; the first rank says that all is well."""
    for problem in problems:
        print(problem, flush=True)
    if COMM.allreduce(len(problems)):
        return 1
    if RANK == 0:
        print(f"{RANKS} ranks agree", flush=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
