"""The books of one switch: its entities as they were published, what its agent tells, and whether
that is allowed. They follow an agent through its deaths, as the entities of a switch do.
"""

TIME_OUT = 0.1  # seconds that the peer has to answer
ROUNDING = 2e-6  # of a time in an event
MLAG_ACTIVE = "2"


class Entities:
    """What the other agents of a switch publish."""

    def __init__(self):
        self.globals = {}  # of MLAG: what is set, to its statement
        self.lags = {}  # to a dict of members, as an ordered set; None: it has gone
        self.mlag = {}  # LAG to the state on the peer
        self.inputs = {}  # ("acl" or "vlan-ready", member, LAG) to whether it is so
        self.translated = set()  # LAGs with a mapping

    def apply(self, text):
        match text.split():
            case ["mlag", "state" | "peer-interlock" as what, _]:
                self.globals[what] = text
            case ["lag", lag, *members]:
                self.lags[lag] = dict.fromkeys(members)
            case ["no", "lag", lag]:
                self.lags[lag] = None
            case ["member", lag, member]:
                self.lags[lag][member] = None
            case ["no", "member", lag, member]:
                if self.has(lag):
                    self.lags[lag].pop(member, None)
            case ["mlag", "intf", lag, _, peer]:
                self.mlag[lag] = peer
            case ["no", "mlag", "intf", lag]:
                self.mlag.pop(lag, None)
            case ["acl" | "vlan-ready" as what, member, lag]:
                self.inputs[what, member, lag] = True
            case ["no", "acl" | "vlan-ready" as what, member, lag]:
                self.inputs[what, member, lag] = False
            case ["switchport", lag]:
                self.translated.discard(lag)
            case ["vlan-xlate", lag, "ingress", "10", "20"]:
                self.translated.add(lag)
            case ["no", "vlan-xlate", lag, "ingress", "10"]:
                self.translated.discard(lag)
            case _:
                raise AssertionError(f"the books do not know '{text}'")

    def has(self, lag):
        return self.lags.get(lag) is not None

    def statements(self):
        """All of it, for an agent that has just been started, and what is not, for those who
        listen to it and may have missed that."""
        yield from self.globals.values()
        for lag in LAGS:
            yield f"switchport {lag}"
        for lag in sorted(self.translated):
            yield f"vlan-xlate {lag} ingress 10 20"
        for lag, peer in self.mlag.items():
            yield f"mlag intf {lag} 2 {peer}"
        for lag, members in self.lags.items():
            yield f"no lag {lag}" if members is None else " ".join(["lag", lag, *members])
        for (what, member, lag), so in self.inputs.items():
            yield f"{'' if so else 'no '}{what} {member} {lag}"


LAGS = ["PortChannel10", "PortChannel20", "PortChannel30", "PortChannel99"]


class Observer:
    """Follows what an agent tells, and holds each verdict against the rules."""

    def __init__(self, name):
        self.name = name
        self.admitted = {"egress-acl": {}, "vlan-xlate": {}}  # pairs, as ordered sets
        self.requests = {}  # LAG to token
        self.responses = {}
        self.heard = Entities()  # as the agent that runs has been told
        self.started = False
        self.asked_at = {}
        self.answered = set()  # LAGs whose request has been answered, now or before
        self.verdicts = 0
        self.failed_open = 0

    def agent_died(self):
        """Its entities, and what it wrote, stand; the next one has yet to hear of them."""
        self.heard = Entities()
        self.responses = {}
        self.started = False

    def left_behind(self):
        """What it wrote, for the next one."""
        for interlock, pairs in self.admitted.items():
            for member, lag in pairs:
                yield f"output {interlock} {member} {lag}"
        for lag, token in self.requests.items():
            yield f"request {lag} {token}"

    def matched(self, lag):
        return lag in self.requests and self.responses.get(lag) == self.requests[lag]

    def see(self, event):
        match event["kind"]:
            case "statement":
                self.statement(event["text"], event["t"])
            case "request" if self.started:  # before, what is left behind is told once more
                self.request(event["lag"], event["token"], event["t"])
            case "verdict" if self.started:
                self.verdict(event)
            case "error":
                raise AssertionError(f"{self.name}: {event}")

    def statement(self, text, time):
        match text.split():
            case ["response", lag, token]:
                self.responses[lag] = int(token)
                if self.matched(lag):
                    self.answered.add(lag)
            case ["no", "response", lag]:
                self.responses.pop(lag, None)
            case ["start", "controller"]:
                self.started = True
                self.asked_at = dict.fromkeys(self.requests, time)
                self.answered = {lag for lag in self.requests if self.matched(lag)}
            case ["link" | "start" | "output" | "request", *_]:
                pass
            case _:
                self.heard.apply(text)

    def request(self, lag, token, time):
        self.answered.discard(lag)
        self.asked_at.pop(lag, None)
        if token is None:
            del self.requests[lag]
        else:
            self.requests[lag] = token
            self.asked_at[lag] = time
            if self.matched(lag):
                self.answered.add(lag)

    def verdict(self, event):
        pair = event["member"], event["lag"]
        pairs = self.admitted[event["interlock"]]
        if event["admitted"] == (pair in pairs):
            raise AssertionError(f"{self.name}: no change: {event}")
        if not event["admitted"]:
            del pairs[pair]
            return
        pairs[pair] = None
        self.verdicts += 1
        if not self.may_join(event["interlock"], pair, event["t"]):
            raise AssertionError(f"{self.name}: admitted without a reason: {event}")

    def reported(self, what, pair):
        return self.heard.inputs.get((what, *pair), False)

    def may_join(self, interlock, pair, time):
        lag = pair[1]
        if not self.heard.has(lag) or pair[0] not in self.heard.lags[lag]:
            return False
        if interlock == "vlan-xlate":
            return lag not in self.heard.translated or self.reported("vlan-ready", pair)
        if lag not in self.heard.mlag:
            return True
        if self.matched(lag):
            return self.heard.mlag[lag] != MLAG_ACTIVE or self.reported("acl", pair)
        waited = time - self.asked_at.get(lag, time)
        if waited >= TIME_OUT - ROUNDING:
            self.failed_open += 1
            return True
        return lag in self.answered  # the answer is lost
