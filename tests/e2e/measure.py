"""What a running program holds of the machine, read from the kernel."""
import os
from dataclasses import dataclass


@dataclass
class Held:
    memory: int  # KiB that are resident
    files: int   # open files, sockets among them
    threads: int

    def __str__(self):
        return f"{self.memory} KiB, {self.files} files, {self.threads} threads"


def held_by(pid):
    with open(f"/proc/{pid}/status", encoding="ascii") as status:
        numbers = dict(line.split(":", 1) for line in status)
    return Held(int(numbers["VmRSS"].split()[0]), len(os.listdir(f"/proc/{pid}/fd")), int(numbers["Threads"]))


def processor_seconds(pid):
    with open(f"/proc/{pid}/stat", encoding="ascii") as stat:
        fields = stat.read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
