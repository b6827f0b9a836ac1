"""What a running program holds of the machine and where it stands, read from the kernel."""
import os
from dataclasses import dataclass
from pathlib import Path

TICKS = os.sysconf("SC_CLK_TCK")
TCP_STATES = " ESTABLISHED SYN_SENT SYN_RECV FIN_WAIT1 FIN_WAIT2 TIME_WAIT CLOSE CLOSE_WAIT LAST_ACK LISTEN CLOSING".split(" ")
KEEP_ALIVE = 2  # the timer that waits for the next probe


@dataclass
class Held:
    memory: int  # KiB that are resident
    files: int   # open files, sockets among them
    threads: int

    def __str__(self):
        return f"{self.memory} KiB, {self.files} files, {self.threads} threads"


def held_by(pid):
    status = Path(f"/proc/{pid}/status").read_text(encoding="ascii")
    numbers = dict(line.split(":", 1) for line in status.splitlines())
    return Held(int(numbers["VmRSS"].split()[0]), len(os.listdir(f"/proc/{pid}/fd")), int(numbers["Threads"]))


def stat(path):
    """The fields behind the name: state, ..."""
    return Path(path, "stat").read_text(encoding="ascii").rsplit(")", 1)[1].split()


@dataclass
class Socket:
    """One end of a connection on this machine, as in /proc/net/tcp."""
    port: int
    peer_port: int
    state: str
    unsent: int  # bytes that the other end has not acknowledged
    unread: int  # bytes that have arrived here and not been read
    timer: int   # what the kernel waits for, ...
    when: float  # ... and for how many seconds yet
    inode: int

    def __str__(self):
        return f"socket {self.port} <-> {self.peer_port}: {self.state}, {self.unread} bytes unread, {self.unsent} unsent"


def sockets():
    def number(text):
        return int(text, 16)
    for line in Path("/proc/net/tcp").read_text(encoding="ascii").splitlines()[1:]:
        _, local, remote, state, queues, timer, _, _, _, inode, *_ = line.split()
        unsent, unread = map(number, queues.split(":"))
        timer, when = map(number, timer.split(":"))
        yield Socket(number(local.split(":")[1]), number(remote.split(":")[1]), TCP_STATES[number(state)], unsent, unread,
                     timer, when / TICKS, int(inode))


def describe(pid, port):
    """Where each thread of the process waits, and how its sockets and all connections to its port are, as lines."""
    inodes = set()
    for entry in os.scandir(f"/proc/{pid}/fd"):
        try:
            inodes.add(os.readlink(entry.path))
        except FileNotFoundError:
            pass  # closed meanwhile
    for thread in sorted(Path(f"/proc/{pid}/task").iterdir()):
        fields = stat(thread)
        yield (f"thread {thread.name}: {fields[0]} in {(thread / 'wchan').read_text(encoding='ascii')}, "
               f"{(int(fields[11]) + int(fields[12])) / TICKS} s of the processor")
    # Wine's server has sockets open that the program has not.
    yield from (str(end) for end in sockets()
                if end.inode and (f"socket:[{end.inode}]" in inodes or port in (end.port, end.peer_port)))
