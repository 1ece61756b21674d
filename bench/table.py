"""The table: what was measured, beside where it must arrive."""

import json

SIZES = [1024, 16384, 65536, 1048576]
LAST_SIZE_WITH_GOAL = 65536


def read(path):
    """Nanoseconds (or counters) by the name of the benchmark: medians where it was repeated."""
    if not path.exists():
        return {}, {}
    times, counters = {}, {}
    content = json.loads(path.read_text())
    for entry in content["benchmarks"]:
        if entry.get("error_occurred") or entry.get("aggregate_name", "median") != "median":
            continue
        name = "/".join(part for part in entry["run_name"].split("/")
                        if ":" not in part and part != "manual_time")
        rate = entry.get("items_per_second")
        times[name] = 1e9 / rate if rate else entry["cpu_time"]
        counters[name] = entry
    return times, counters


class Goal:
    """A bound that a ratio has to keep."""

    def __init__(self, bound, at_least=False):
        self.bound = bound
        self.at_least = at_least

    def __str__(self):
        return ("at least " if self.at_least else "at most ") + f"{self.bound:g}"

    def verdict(self, value):
        met = value >= self.bound if self.at_least else value <= self.bound
        return "ok" if met else "MISSED"


def at_most(bound):
    return Goal(bound)


def at_least(bound):
    return Goal(bound, at_least=True)


class Table:
    def __init__(self, folder):
        self.times, self.counters = read(folder / "interlock.json")
        for other in ("thread-safe.json", "lttng.json"):
            times, counters = read(folder / other)
            self.times = {**times, **self.times}
            self.counters = {**counters, **self.counters}
        replay = folder / "replay.json"
        self.replay = json.loads(replay.read_text()) if replay.exists() else None
        self.met = self.missed = 0
        self.pending = []

    def print(self):
        for section in (self.events, self.growth, self.passes, self.cold, self.start_up, self.space,
                        self.records, self.notifications, self.references, self.timers,
                        self.bursts, self.replays):
            section()
        print(f"\n{self.met} goals met, {self.missed} missed")

    # --- pieces ---

    def heading(self, text, **goals):
        """Printed with the first row that follows: a part that was not run has none."""
        self.pending = [f"\n{text}"] + [f"   goal for {column}: {goal}"
                                        for column, goal in goals.items()]

    def cell(self, value, goal):
        if value is None:
            return "-"
        text = f"{value:.2f}" if value >= 0.01 or value == 0 else f"{value:.1g}"
        if goal is None:
            return text
        verdict = goal.verdict(value)
        self.met += verdict == "ok"
        self.missed += verdict != "ok"
        return f"{text} {verdict}"

    def row(self, label, cells, times=()):
        if all(cell == "-" for _, cell in cells) and all(ns is None for _, ns in times):
            return
        for line in self.pending:
            print(line)
        self.pending = []
        shown = "".join(f"{name} {cell:<14} " for name, cell in cells)
        beside = "  ".join(f"{name} {ns:,.1f}" for name, ns in times if ns is not None)
        print(f"   {label:<28}{shown}{'| ns  ' + beside if beside else ''}".rstrip())

    def ratio(self, above, below):
        a, b = self.times.get(above), self.times.get(below)
        return a / b if a and b else None

    def compare(self, measure, interlock, trace, size, floor_goal, others_goal,
                others=("signals2", "sigc")):
        """One row: ours beside the floor, the others beside ours."""
        def name(implementation):
            return f"{measure}/{interlock}/{implementation}/{trace}/{size}"

        if name("ours") not in self.times:
            return
        if size > LAST_SIZE_WITH_GOAL:
            floor_goal = others_goal = None
        cells = [("ours/floor", self.cell(self.ratio(name("ours"), name("floor")), floor_goal))]
        for other in ("signals2", "sigc"):
            goal = others_goal if other in others else None
            cells.append((f"{other}/ours",
                          self.cell(self.ratio(name(other), name("ours")), goal)))
        times = [(one, self.times.get(name(one))) for one in ("ours", "floor", "signals2", "sigc")]
        self.row(f"{interlock}, {size:,} pairs", cells, times)

    # --- sections ---

    def events(self):
        for trace, what, floor, others in (("ring", "ring on", at_most(1.25), at_least(7)),
                                           ("off", "all trace off", at_most(1.3), None)):
            for measure, kind in (("event-input", "input pair goes or comes"),
                                  ("event-member", "member leaves or joins")):
                goals = {"ours/floor": floor} | ({"others/ours": others} if others else {})
                self.heading(f"From event to verdict: {kind}, {what}", **goals)
                for interlock in ("basic", "peer", "vlan"):
                    for size in SIZES:
                        self.compare(measure, interlock, trace, size, floor, others)
        self.heading("Allocations an event", ours=at_most(0))
        for name, entry in sorted(self.counters.items()):
            part = name.split("/")
            if part[0].startswith("event-") and part[2:4] == ["ours", "ring"] \
                    and "allocations" in entry and int(part[-1]) <= LAST_SIZE_WITH_GOAL:
                self.row(f"{part[1]}, {part[0]}, {int(part[-1]):,}",
                         [("", self.cell(entry["allocations"], at_most(0)))])

    def growth(self):
        goal = at_most(1.15)
        self.heading("Growth from 1,024 to 65,536 pairs, beside that of the floor",
                     **{"ours/floor": goal})
        for measure in ("event-input", "event-member", "pass-half", "pass-none"):
            for interlock in ("basic", "peer", "vlan"):
                growth = [self.ratio(f"{measure}/{interlock}/{one}/ring/65536",
                                     f"{measure}/{interlock}/{one}/ring/1024")
                          for one in ("ours", "floor")]
                if None not in growth:
                    self.row(f"{interlock}, {measure}",
                             [("ours/floor", self.cell(growth[0] / growth[1], goal)),
                              ("ours", f"{growth[0]:.2f}"), ("floor", f"{growth[1]:.2f}")])

    def passes(self):
        for measure, kind in (("pass-half", "half of the verdicts change"),
                              ("pass-none", "none changes")):
            for trace, what, floor, others in (("ring", "ring on", at_most(1.15), at_least(8)),
                                               ("off", "all trace off", None, None)):
                goals = {"ours/floor": floor, "others/ours": others} if floor else {}
                self.heading(f"Full pass, per pair: {kind}, {what}", **goals)
                for interlock in ("basic", "peer", "vlan"):
                    for size in SIZES:
                        self.compare(measure, interlock, trace, size, floor, others)

    def cold(self):
        floor, others = at_most(1.3), at_least(2.5)
        self.heading("Event with cold caches, ring on",
                     **{"ours/floor": floor, "signals2/ours": others})
        for interlock in ("basic", "peer", "vlan"):
            self.compare("event-cold", interlock, "ring", 65536, floor, others, ["signals2"])

    def start_up(self):
        floor, others = at_most(1.25), at_least(6)
        self.heading("Start-up, per pair, ring on",
                     **{"ours/floor": floor, "signals2/ours": others})
        for interlock in ("basic", "peer", "vlan"):
            for size in SIZES:
                self.compare("start-up", interlock, "ring", size, floor, others, ["signals2"])

    def space(self):
        self.heading("Bytes a pair, 65,536 pairs", **{
            "ours fresh": at_most(90), "ours worn/fresh and refilled/fresh": at_most(1.4)})
        for interlock in ("basic", "peer", "vlan"):
            for one in ("ours", "floor", "signals2", "sigc"):
                entry = self.counters.get(f"memory/{interlock}/{one}/ring/65536")
                if entry:
                    fresh = entry["fresh"]
                    ours = one == "ours"
                    cells = [("fresh", self.cell(fresh, at_most(90) if ours else None))]
                    cells += [(f"{what}/fresh",
                               self.cell(entry[what] / fresh, at_most(1.4) if ours else None))
                              for what in ("worn", "refilled")]
                    self.row(f"{interlock}, {one}", cells)
        self.heading("Slowest single event while growing to 65,536 pairs, microseconds",
                     ours=at_most(500))
        for interlock in ("basic", "peer", "vlan"):
            for one in ("ours", "floor", "signals2", "sigc"):
                entry = self.counters.get(f"slowest/{interlock}/{one}/ring/65536")
                if entry:
                    what = "input pair comes" if entry["is_input"] else "member joins"
                    self.row(f"{interlock}, {one}",
                             [("", self.cell(entry["slowest_us"],
                                             at_most(500) if one == "ours" else None)),
                              ("", f"{what}, {int(entry['pairs_there']):,} pairs there")])

    def records(self):
        bare, others = at_most(1.4), at_least(8)
        self.heading("Ring record with two interfaces",
                     **{"ours/bare": bare, "others/ours": others})
        ours = self.times.get("record/ours")
        for other in ("bare", "floor"):
            self.row(f"beside {other}",
                     [("ours/" + other, self.cell(self.ratio("record/ours", f"record/{other}"),
                                                  bare if other == "bare" else None))],
                     [("ours", ours), (other, self.times.get(f"record/{other}"))])
        for other in ("spdlog", "lttng"):
            self.row(f"beside {other}",
                     [(other + "/ours", self.cell(self.ratio(f"record/{other}", "record/ours"),
                                                  others))],
                     [("ours", ours), (other, self.times.get(f"record/{other}"))])
        for what in ("ours", "ours-without-arguments"):
            event, floor = f"record/event/{what}", f"record/event/floor{what[4:]}"
            self.row(f"within an event{what[4:].replace('-', ' ')}",
                     [("ours/floor", self.cell(self.ratio(event, floor), None))],
                     [("ours", self.times.get(event)), ("floor", self.times.get(floor))])
        self.row("for comparison", [], [(what, self.times.get(f"record/{what}"))
                                        for what in ("clock-read", "disabled-text")])

    def notifications(self):
        self.heading("Notification", **{"ours/bare to 1": at_most(2), "ours/bare to 64":
                                        at_most(1.25), "signals2/ours to 1": at_least(15)})
        for count in (1, 4, 64):
            goal = {1: at_most(2), 64: at_most(1.25)}.get(count)
            ours = f"notify/ours/{count}"
            self.row(f"to {count}", [
                ("ours/bare", self.cell(self.ratio(ours, f"notify/bare/{count}"), goal)),
                ("signals2/ours", self.cell(self.ratio(f"notify/signals2/{count}", ours),
                                            at_least(15) if count == 1 else None)),
                ("sigc/ours", self.cell(self.ratio(f"notify/sigc/{count}", ours), None))],
                [(one, self.times.get(f"notify/{one}/{count}"))
                 for one in ("ours", "bare", "signals2", "sigc")])

    def references(self):
        self.heading("A counted reference is taken and dropped")
        for mode in ("plain", "thread-safe"):
            ours = f"reference/ours-{mode}"
            self.row(mode, [
                ("ours/intrusive", self.cell(self.ratio(ours, f"reference/intrusive-{mode}"), None)),
                ("ours/shared_ptr", self.cell(self.ratio(ours, "reference/shared_ptr"), None))],
                [("ours", self.times.get(ours))])

    def timers(self):
        others = at_least(4)
        for what, kind in (("arm", "an armed task is armed again"),
                           ("cancel", "an armed task is cancelled and armed again"),
                           ("fire", "all tasks are due, per task")):
            goals = {"libuv/ours and libevent/ours beside 1,000 and 100,000":
                     others} if what == "arm" else {}
            self.heading(f"Timers: {kind}", **goals)
            for count in (1, 1000, 100000):
                goal = others if what == "arm" and count > 1 else None
                ours = f"timer-{what}/ours/{count}"
                self.row(f"{count:,} tasks", [
                    (f"{one}/ours", self.cell(self.ratio(f"timer-{what}/{one}/{count}", ours),
                                              goal if one != "priority_queue" else None))
                    for one in ("libuv", "libevent", "priority_queue")],
                    [("ours", self.times.get(ours))])
        for terms, kind, ones in (("exact-clock", "each reads the exact clock",
                                   ("libuv", "libevent")),
                                  ("kept-time", "none reads a clock", ("libuv",))):
            self.heading(f"Timers: an armed task is armed again; {kind}")
            for count in (1, 1000, 100000):
                ours = f"timer-arm-{terms}/ours/{count}"
                self.row(f"{count:,} tasks", [
                    (f"{one}/ours", self.cell(self.ratio(f"timer-arm-{terms}/{one}/{count}", ours),
                                              None)) for one in ones],
                    [("ours", self.times.get(ours))])

    def bursts(self):
        goal = at_most(1.5)
        self.heading("Burst of the peer interlock, cost a LAG beside that in a burst of 256",
                     **{"4,096 LAGs of 16 members": goal})
        for members in (16, 1):
            for kind in ("in-order", "in-reverse", "at-random", "never", "all-ports-go",
                         "all-lags-go"):
                cells = []
                for lags in (1024, 4096, 16384):
                    ratio = self.ratio(f"burst/{kind}/{lags}/{members}",
                                       f"burst/{kind}/256/{members}")
                    held = lags == 4096 and members == 16 and not kind.startswith("all-")
                    cells.append((f"{lags:,}", self.cell(ratio, goal if held else None)))
                self.row(f"{kind}, {members} a LAG", cells,
                         [(f"{lags:,}", self.times.get(f"burst/{kind}/{lags}/{members}"))
                          for lags in (256, 4096, 16384)])

    def replays(self):
        if self.replay:
            self.heading("interlock-replay, a scenario of a million statements")
            statements, seconds = self.replay["statements"], self.replay["seconds"]
            self.row(f"{statements / seconds:,.0f} statements a second", [],
                     [("a statement", 1e9 * seconds / statements)])
