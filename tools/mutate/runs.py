"""Runs the tests against mutants.

First every test runs once by itself with the original behaviour: it must pass, and tells how long it
takes and which places it comes by. A mutant then meets only the tests that come by its place, the
quick ones first and together, the others one by one, until one of them fails.
"""

import concurrent.futures
import dataclasses
import os
import pathlib
import resource
import signal
import subprocess
import tempfile
import time

QUICK = 0.15  # seconds; a test that takes longer runs only against what the quick ones let live
MEMORY = 4 << 30  # bytes; a mutant that goes round and round may collect more and more


@dataclasses.dataclass
class Test:
    command: list  # the program and its arguments, without any gtest filter
    name: str = ""  # of the gtest test; empty: the program is the test
    expected: str = ""  # what its output must contain
    seconds: float = 0.0
    reached: frozenset = frozenset()


def gtest_tests(program):
    """The tests of a GoogleTest program."""
    listed = subprocess.run([program, "--gtest_list_tests"], capture_output=True, text=True,
                            check=True).stdout
    tests, suite = [], ""
    for line in listed.splitlines():
        name = line.split("#")[0].strip()
        if line.startswith(" "):
            tests.append(Test([program], suite + name))
        elif name.endswith("."):
            suite = name
    return [test for test in tests if "DISABLED_" not in test.name]


def limit(seconds):
    """Of the process time: how long a test takes otherwise depends on what else the machine does.
    A process that goes round and round ends by it also when nobody waits for it any more."""
    resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def passes(tests, mutant, seconds, reached=None):
    """Whether these tests, all of one program, pass within so many seconds."""
    environment = dict(os.environ, INTERLOCK_MUTANT=str(mutant))
    if reached:
        environment["INTERLOCK_MUTANT_REACHED"] = reached
    command = list(tests[0].command)
    if tests[0].name:
        command += ["--gtest_filter=" + ":".join(t.name for t in tests), "--gtest_fail_fast",
                    "--gtest_brief=1"]
    # A session of its own: a test may have started programs, which end with it.
    process = subprocess.Popen(command, env=environment, stdout=subprocess.PIPE, text=True,
                               stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL,
                               errors="replace", preexec_fn=lambda: limit(seconds),
                               start_new_session=True)
    try:
        output, _ = process.communicate(timeout=10 * seconds)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.communicate()
        return False
    return process.returncode == 0 and tests[0].expected in output


def in_parallel(function, items):
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        return list(pool.map(function, items))


def profile(tests, places):
    """Fills in time and places of each test; returns those that fail without any mutant."""
    def run(test):
        with tempfile.NamedTemporaryFile() as reached:
            reached.write(bytes(places))
            reached.flush()
            before = time.monotonic()
            good = passes([test], 0, 600, reached.name)
            test.seconds = time.monotonic() - before
            marks = pathlib.Path(reached.name).read_bytes()
            test.reached = frozenset(n for n, mark in enumerate(marks) if mark)
        return None if good else test

    return [test for test in in_parallel(run, tests) if test]


def killer(mutant, tests):
    """The name of a test, or of a program, that fails with this mutant; None: none does."""
    meeting = sorted((t for t in tests if mutant in t.reached), key=lambda t: t.seconds)
    quick = {}
    for test in meeting:
        if test.seconds < QUICK and test.name:
            quick.setdefault(test.command[0], []).append(test)
    groups = list(quick.values()) + [[t] for t in meeting if t.seconds >= QUICK or not t.name]
    for group in groups:
        seconds = 3 + int(3 * sum(test.seconds for test in group))
        if not passes(group, mutant, seconds):
            alone = group[0].name if len(group) == 1 else ""
            return alone or group[0].command[0].split("/")[-1]
    return None
