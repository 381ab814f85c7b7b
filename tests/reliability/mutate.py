#!/usr/bin/env python3
"""Mutation testing: do the tests notice small changes of the library?

Plants one change at a time into the library's sources (mutations.py says which), compiles what includes the changed
file, links the test programs anew and runs them until one fails, crashes or exceeds its time. Changes that do not
compile or leave the machine code as it was do not count. Survivors are listed; docs/measured/reliability.md says why
they are left.

Everything happens on a copy of the repository in the work folder, so the checkout may be edited meanwhile. The same
seed on the same sources gives the same changes, whatever the number of jobs.
"""

import argparse
import concurrent.futures
import contextlib
import fnmatch
import hashlib
import json
import os
import random
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import time
from collections import Counter
from pathlib import Path

from mutations import mutations_of

ROOT = Path(__file__).resolve().parents[2]
FOLDERS = ("foundation", "gradient", "rbf_cell", "rbf_face", "rbf_ib")
LIBRARY = "libZyn3dGradOp.so.0.1.0"

# Test programs by folder of the changed file, those that look closest and are quickest first. The property tests on
# real meshes would take most of the time and build the reference host besides.
GRADIENT = ["unit_gradient", "property_gradient"]
CELL = ["unit_rbf_cell", "unit_rbf_cell_tree", "property_rbf_cell"]
FACE = ["unit_rbf_face", "unit_rbf_face_tree"]
POINTS = ["unit_rbf_ib", "unit_rbf_ib_tree"]
SHARED = ["unit_rbf"]  # what the three operators before have in common
PROGRAMS = {
    "foundation": ["unit_foundation", *SHARED, *CELL[:2], *FACE, *POINTS, *GRADIENT, CELL[2]],
    "gradient": GRADIENT,
    "rbf_cell": [*SHARED, *CELL, GRADIENT[0]],
    "rbf_face": [*SHARED, *FACE],
    "rbf_ib": [*SHARED, *POINTS],
}
ALL_PROGRAMS = sorted({name for names in PROGRAMS.values() for name in names})

LEAST_PER_FOLDER = 60
LEAST_TIME_LIMIT = 20  # seconds
COMPILE_TIME_LIMIT = 200  # seconds
MEMORY_LIMIT = 4 << 30
FILE_LIMIT = 256 << 20
# Linking is a good part of the time.
LINKER = ["-fuse-ld=gold"] if shutil.which("ld.gold") else []
# One thread, and waiting without spinning: jobs share the cores.
ENVIRONMENT = {**os.environ, "OMP_NUM_THREADS": "1", "OPENBLAS_NUM_THREADS": "1", "OMP_WAIT_POLICY": "passive"}


def library_files(patterns):
    """Sources, and headers with code in them; a header that is named as its class is an interface."""
    files = []
    for folder in FOLDERS:
        for path in sorted((ROOT / folder).glob("*")):
            name = path.name
            if path.suffix == ".cpp" or path.suffix == ".h" and not re.match(r"C[A-Z]", name):
                files.append(f"{folder}/{name}")
    return [f for f in files if not patterns or any(fnmatch.fnmatch(f, p) for p in patterns)]


class Mutant:
    def __init__(self, file, text, mutation):
        self.file, self.text, self.mutation = file, text, mutation
        self.line = text.count("\n", 0, mutation.start) + 1
        self.before = text[mutation.start:mutation.end]

    def changed_text(self):
        return self.text[:self.mutation.start] + self.mutation.after + self.text[self.mutation.end:]

    def identity(self):
        """The same for the same change of the same text."""
        version = hashlib.sha256(self.text.encode()).hexdigest()[:8]
        return f"{self.file}:{version}:{self.line}:{self.mutation.start}:{self.mutation.after}"

    def describe(self):
        def shorten(text):
            return re.sub(r"\s+", " ", text).strip() or "(nothing)"
        start = self.text.rfind("\n", 0, self.mutation.start) + 1
        line = self.text[start:self.text.find("\n", start)]
        return {"file": self.file, "line": self.line, "kind": self.mutation.kind, "before": shorten(self.before),
                "after": shorten(self.mutation.after), "source": line.strip()}


def all_mutants(source_folder, files):
    by_folder = {folder: [] for folder in FOLDERS}
    for file in files:
        text = (source_folder / file).read_text()
        by_folder[file.split("/")[0]] += [Mutant(file, text, m) for m in mutations_of(text)]
    return {folder: mutants for folder, mutants in by_folder.items() if mutants}


def quotas(by_folder, count, take_all):
    """How many mutants of each folder: in proportion to their lines of code, and not too few of any."""
    if take_all:
        return {folder: len(mutants) for folder, mutants in by_folder.items()}
    lines = {folder: sum(text.count("\n") for text in {m.file: m.text for m in mutants}.values())
             for folder, mutants in by_folder.items()}
    total = sum(lines.values())
    return {folder: min(len(mutants), max(min(count, LEAST_PER_FOLDER), round(count * lines[folder] / total)))
            for folder, mutants in by_folder.items()}


def run(command, folder, **options):
    return subprocess.run(command, cwd=folder, shell=isinstance(command, str), stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False, **options)


def require(command, folder):
    done = run(command, folder)
    if done.returncode != 0:
        sys.exit(f"mutate: failed: {command}\n{done.stdout[-4000:]}")
    return done.stdout


class Build:
    """The unchanged library and its tests, and the commands that make them."""

    def __init__(self, work):
        self.source, self.folder = work / "source", work / "build"

    def make(self, jobs):
        self._copy_sources()
        # Paths would tell equal machine code apart, as would names made from a random seed.
        flags = f"-w -frandom-seed=0 -ffile-prefix-map={self.source}=."
        require(["cmake", "-S", str(self.source), "-B", str(self.folder), "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                 "-DCMAKE_CXX_FLAGS_DEBUG=-O1", f"-DCMAKE_CXX_FLAGS={flags}"], self.source)
        require(["cmake", "--build", str(self.folder), "-j", str(jobs), "--target", *ALL_PROGRAMS], self.source)
        self._read_commands()
        self.time_limits = {name: self._time_limit(name) for name in ALL_PROGRAMS}

    def _copy_sources(self):
        """Copies what changed, so that little is compiled again."""
        names = require(["git", "ls-files", "-co", "--exclude-standard"], ROOT).split("\n")
        for name in filter(None, names):
            original, copy = ROOT / name, self.source / name
            if not original.is_file():
                copy.unlink(missing_ok=True)
            elif not copy.is_file() or original.read_bytes() != copy.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(original, copy)

    def _read_commands(self):
        entries = json.loads((self.folder / "compile_commands.json").read_text())
        self.compile_commands = {}
        for entry in entries:
            words = shlex.split(entry["command"])
            self.compile_commands[words[words.index("-o") + 1]] = words
        self.link_commands = {name: self._link_command(f"tests/{name}") for name in ALL_PROGRAMS}
        self.link_commands[LIBRARY] = self._link_command(LIBRARY)
        self.users = {}  # of a source or header: objects
        current = None
        for line in require(["ninja", "-t", "deps"], self.folder).split("\n"):
            if line and not line[0].isspace():
                current = line.split(":")[0]
            elif line.strip().startswith(str(self.source)):
                self.users.setdefault(os.path.relpath(line.strip(), self.source), []).append(current)

    def _link_command(self, target):
        """The words of the command that links; what follows it discovers tests."""
        command = require(["ninja", "-t", "commands", "-s", target], self.folder).strip().split("\n")[-1]
        return shlex.split(command.split(" && ")[1])

    def _time_limit(self, name):
        started = time.monotonic()
        done = run([str(self.folder / "tests" / name), "--gtest_brief=1"], self.folder, env=ENVIRONMENT)
        if done.returncode != 0:
            sys.exit(f"mutate: {name} fails without any change:\n{done.stdout[-4000:]}")
        return max(LEAST_TIME_LIMIT, 10 * (time.monotonic() - started))


def limit_resources():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_LIMIT, FILE_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


class NotBuilt(Exception):
    pass


class Trial:
    """One mutant in a folder of its own."""

    def __init__(self, build, mutant, folder):
        self.build, self.mutant, self.folder = build, mutant, folder
        self.objects = {}  # of the build: those of the mutant
        self.library = None

    def outcome(self):
        """killed, survived, unbuildable or unchanged, and the program that noticed."""
        shutil.rmtree(self.folder, ignore_errors=True)
        changed = self.folder / "source" / self.mutant.file
        changed.parent.mkdir(parents=True)
        changed.write_text(self.mutant.changed_text())
        try:
            return self._try_all()
        except NotBuilt:
            return "unbuildable", ""
        finally:
            shutil.rmtree(self.folder, ignore_errors=True)

    def _try_all(self):
        users = self.build.users.get(self.mutant.file, [])
        if all([not self._differs(user) for user in users if user.startswith("CMakeFiles/Zyn3dGradOp_objects")]):
            return "unchanged", ""
        for name in PROGRAMS[self.mutant.file.split("/")[0]]:
            if not self._passes(name):
                return "killed", name
        return "survived", ""

    def _differs(self, name):
        return Path(self._compiled(name)).read_bytes() != (self.build.folder / name).read_bytes()

    def _compiled(self, name):
        """The object of the mutant; compiled when it is first asked for."""
        if name not in self.objects:
            words = list(self.build.compile_commands[name])
            output = str(self.folder / name.replace("/", "_"))
            words[words.index("-o") + 1] = output
            changed = self.folder / "source" / self.mutant.file
            words = [str(changed) if w == str(self.build.source / self.mutant.file) else w for w in words]
            # The first folder that is looked into holds the changed file only.
            words[1:1] = [f"-I{self.folder / 'source'}"]
            words.append(f"-ffile-prefix-map={self.folder / 'source'}=.")
            try:
                done = run(words, self.build.folder, timeout=COMPILE_TIME_LIMIT)
            except subprocess.TimeoutExpired as error:  # a template without end
                raise NotBuilt from error
            if done.returncode != 0:
                raise NotBuilt
            self.objects[name] = output
        return self.objects[name]

    def _linked(self, name):
        words = list(self.build.link_commands[name])
        users = set(self.build.users.get(self.mutant.file, []))
        words = [self._compiled(w) if w in users else w for w in words]
        output = str(self.folder / Path(name).name)
        words[words.index("-o") + 1] = output
        words += LINKER
        if run(words, self.build.folder).returncode != 0:
            raise NotBuilt
        return output

    def _passes(self, name):
        environment = dict(ENVIRONMENT)
        if LIBRARY in self.build.link_commands[name]:
            self.library = self.library or self._linked(LIBRARY)
            environment["LD_PRELOAD"] = self.library
        program = self._linked(name)
        scratch = self.folder / "run"
        scratch.mkdir(exist_ok=True)
        environment["TMPDIR"] = str(scratch)
        with subprocess.Popen([program, "--gtest_fail_fast", "--gtest_brief=1"], cwd=scratch, env=environment,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True,
                              preexec_fn=limit_resources) as process:
            try:
                return process.wait(self.build.time_limits[name]) == 0
            except subprocess.TimeoutExpired:
                return False
            finally:
                with contextlib.suppress(ProcessLookupError):
                    os.killpg(process.pid, signal.SIGKILL)


class Record:
    """Outcomes, written as they come. A later run takes what it finds, as long as the changed file is the same; tests and
    other files may have changed, so a figure to be quoted is that of a run with --fresh."""

    def __init__(self, path, fresh):
        self.path = path
        self.known = {}
        if path.exists() and not fresh:
            for line in path.read_text().split("\n"):
                if line:
                    entry = json.loads(line)
                    self.known[entry["identity"]] = entry
        self.file = path.open("a" if self.known else "w")

    def add(self, mutant, outcome, program):
        entry = {"identity": mutant.identity(), **mutant.describe(), "outcome": outcome, "program": program}
        self.known[entry["identity"]] = entry
        self.file.write(json.dumps(entry) + "\n")
        self.file.flush()
        return entry


def trial_of(build, record, mutant, folder, again):
    known = record.known.get(mutant.identity())
    if known is not None and not (again and known["outcome"] == "survived"):
        return known
    entry = record.add(mutant, *Trial(build, mutant, folder).outcome())
    print(f"{entry['outcome']:11} {entry['file']}:{entry['line']}  {entry['before']}  ->  {entry['after']}"
          f"{'  (' + entry['program'] + ')' if entry['program'] else ''}", flush=True)
    return entry


def try_sample(build, record, mutants, quota, options):
    """Entries of the first mutants of the list that count, as many as the quota says."""
    counted, position = [], 0
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        while len(counted) < quota and position < len(mutants):
            batch = mutants[position:position + quota - len(counted)]
            folders = [options.work / "mutants" / f"{m.file.replace('/', '_')}_{m.mutation.start}_{position + k}"
                       for k, m in enumerate(batch)]
            position += len(batch)
            entries = pool.map(lambda pair: trial_of(build, record, *pair, options.again), zip(batch, folders))
            counted += [e for e in entries if e["outcome"] in ("killed", "survived")]
    return counted


def report(entries, options):
    print(f"\nMutants that changed the machine code, seed {options.seed}:")
    rows = [(folder, [e for e in entries if e["file"].startswith(folder + "/")]) for folder in FOLDERS]
    for name, group in [*rows, ("all", entries)]:
        killed = sum(e["outcome"] == "killed" for e in group)
        if group:
            print(f"  {name:11} {len(group):5} planted {killed:5} killed  {100.0 * killed / len(group):5.1f} %")
    kinds = Counter(e["kind"] for e in entries)
    killed_kinds = Counter(e["kind"] for e in entries if e["outcome"] == "killed")
    print("  by kind: " + ", ".join(f"{kind} {killed_kinds[kind]}/{n}" for kind, n in sorted(kinds.items())))
    survivors = [e for e in entries if e["outcome"] == "survived"]
    print(f"\n{len(survivors)} survivors")
    for e in survivors:
        print(f"{e['file']}:{e['line']}: {e['kind']}\n    {e['source']}\n    {e['before']}  ->  {e['after']}")


def options_of(arguments):
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--files", nargs="+", default=[], metavar="PATTERN", help="only files like these: 'gradient/*.cpp'")
    parser.add_argument("--count", type=int, default=400, help=f"size of the sample (400), at least {LEAST_PER_FOLDER} per folder")
    parser.add_argument("--all", action="store_true", help="every change instead of a sample")
    parser.add_argument("--seed", type=int, default=1, help="of the sample (1)")
    parser.add_argument("--jobs", type=int, default=1, help="mutants at the same time (1)")
    parser.add_argument("--work", type=Path, default=ROOT / "build" / "mutation", help="work folder (build/mutation)")
    parser.add_argument("--list", action="store_true", help="list the changes and end")
    parser.add_argument("--fresh", action="store_true", help="forget the outcomes of earlier runs")
    parser.add_argument("--again", action="store_true", help="try the survivors of earlier runs again")
    parser.add_argument("--least", type=float, default=0.0, metavar="PERCENT", help="fail if fewer are killed")
    return parser.parse_args(arguments)


def main(arguments):
    options = options_of(arguments)
    options.work = options.work.resolve()
    files = library_files(options.files)
    build = Build(options.work)
    if options.list:
        for mutants in all_mutants(ROOT, files).values():
            for e in (m.describe() for m in mutants):
                print(f"{e['file']}:{e['line']}: {e['kind']}: {e['before']}  ->  {e['after']}")
        return 0
    options.work.mkdir(parents=True, exist_ok=True)
    build.make(options.jobs)
    record = Record(options.work / "outcomes.jsonl", options.fresh)
    by_folder = all_mutants(build.source, files)
    entries = []
    for folder, quota in quotas(by_folder, options.count, options.all).items():
        mutants = by_folder[folder]
        random.Random(f"{options.seed} {folder}").shuffle(mutants)
        entries += try_sample(build, record, mutants, quota, options)
    report(entries, options)
    killed = sum(e["outcome"] == "killed" for e in entries)
    return 0 if entries and 100.0 * killed >= options.least * len(entries) else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
