"""What the tests of the agent share: an agent as a process, and a client at its socket.

Nothing here sleeps: whoever waits, waits for something that comes, and SAFETY only ends a test that
would otherwise hang.
"""

import json
import pathlib
import signal
import socket
import subprocess

SAFETY = 60  # seconds
MARK = "link Mark 0"  # changes nothing; what it is told behind is complete


class Client:
    """A connection to an agent: lines out, events in."""

    def __init__(self, path):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(SAFETY)
        self.socket.connect(str(path))
        self.unread = b""
        self.state = self.event()
        self.number = self.state["client"]
        self.sent = 0  # lines

    def send(self, *lines):
        self.write("".join(line + "\n" for line in lines).encode())

    def write(self, data):
        self.sent += data.count(b"\n")
        self.socket.sendall(data)

    def event(self):
        """The next one; None at the end of the connection."""
        while b"\n" not in self.unread:
            data = self._receive()
            if not data:
                return None
            self.unread += data
        line, self.unread = self.unread.split(b"\n", 1)
        return json.loads(line)

    def _receive(self):
        try:
            return self.socket.recv(1 << 16)
        except ConnectionResetError:  # it ended without reading all that it was sent
            return b""

    def until(self, **wanted):
        """The events up to the first one that has these keys and values."""
        events = []
        while True:
            event = self.event()
            if event is None:
                raise AssertionError(f"the connection ended before {wanted}: {events[-5:]}")
            events.append(event)
            if wanted.items() <= event.items():
                return events

    def done(self, *lines):
        """Sends the lines and waits until all that comes of them has come; what happened."""
        self.send(*lines, MARK)
        return self.until(kind="statement", client=self.number, line=self.sent)[:-1]

    def rest(self):
        """What comes until the connection ends."""
        events = []
        while (event := self.event()) is not None:
            events.append(event)
        return events

    def close(self):
        self.socket.close()


class Agent:
    """An agent in a folder, which may be killed and started again."""

    def __init__(self, program, folder, name="agent"):
        self.program = program
        self.socket = pathlib.Path(folder) / f"{name}.sock"
        self.trace = pathlib.Path(folder) / f"{name}.trace"
        self.log = pathlib.Path(folder) / f"{name}.log"
        self.process = None

    def start(self, **options):
        """Returns when it listens."""
        with self.log.open("a") as log:
            self.process = subprocess.Popen([self.program, self.socket, self.trace], text=True,
                                            stdout=subprocess.PIPE, stderr=log, **options)
        line = self.process.stdout.readline()
        if line != f"interlock-agent: listening on {self.socket}\n":
            raise AssertionError(f"said '{line}' and {self.errors()}")
        return self

    def client(self):
        return Client(self.socket)

    def errors(self):
        return self.log.read_text()

    def signal(self, number):
        self.process.send_signal(number)

    def ended(self):
        """Waits until it has ended; its exit status."""
        status = self.process.wait(SAFETY)
        self.process.stdout.close()
        return status

    def kill(self):
        self.signal(signal.SIGKILL)
        return self.ended()

    def stop(self):
        """Ends it as a test ends."""
        if self.process is not None and self.process.poll() is None:
            self.kill()
