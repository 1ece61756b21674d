"""What became of the mutants, held against the list of those that no test can kill."""

import collections


def read_list(path):
    """Blocks of `FILE`, `function: text of the mutant` and the reason, empty lines between."""
    listed = {}
    for block in path.read_text().split("\n\n"):
        lines = [line.strip() for line in block.splitlines() if not line.startswith("#")]
        if not lines:
            continue
        if len(lines) < 3:
            raise SystemExit(f"mutate: {path}: an entry of less than three lines: {lines[0]}")
        key = (lines[0], lines[1])
        if key in listed:
            raise SystemExit(f"mutate: {path}: listed twice: {lines[0]}: {lines[1]}")
        listed[key] = " ".join(lines[2:])
    return listed


def key_of(mutant):
    return mutant.file, f"{mutant.function}: {mutant.text}"


def report(mutants, killers, listed, complete):
    """Prints the table and what is wrong; returns whether all is well."""
    good = True
    counts = collections.defaultdict(lambda: [0, 0, 0])
    for mutant, killed_by in zip(mutants, killers):
        known = key_of(mutant) in listed
        counts[mutant.file][0 if killed_by else 1 if known else 2] += 1
        if killed_by and known:
            good = False
            print(f"{mutant.file}:{mutant.line}: is in the list, but killed by {killed_by}: "
                  f"{mutant.function}: {mutant.text}")
        elif not killed_by and not known:
            good = False
            print(f"{mutant.file}:{mutant.line}: survives: {mutant.function}: {mutant.text}")
    if complete:
        for file, text in sorted(listed.keys() - {key_of(m) for m in mutants}):
            good = False
            print(f"{file}: is in the list, but no mutant any more: {text}")
    print(f"\n{'killed':>7} {'listed':>7} {'survive':>8}")
    for file, numbers in sorted(counts.items()) + [
            ("total", [sum(c[n] for c in counts.values()) for n in range(3)])]:
        print("{:7} {:7} {:8}  ".format(*numbers) + file)
    return good
