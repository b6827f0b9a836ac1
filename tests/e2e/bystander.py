"""python3 -m tests.e2e.bystander PORT: a steady conversation through the program that listens on the port, every byte of
which is checked, in a process of its own, so that its times do not hold what the tests do.

A client and a server exchange frames of many sizes that no feature has a reason to touch. A line of standard input is
answered with "well COUNT SECONDS", messages so far and how long one took at most since the last answer, as soon as an
exchange that began after it is over. After "until the end" the program may end the conversation, which is answered once more:
the message on its way came whole or not at all, and then a close and no reset. Whatever is wrong is told as a line instead.
"""
import contextlib
import select
import socket
import struct
import sys
import time

from sandbox.client import GRANTED, socks4_request
from sandbox.record import PATIENCE
from sandbox.wire import DATA, HELLO, SIGN_ON, snac

SIZES = (0, 1, 160, 1_450, 9_000)
FAMILY = 0x7A  # nobody's
PAUSE = 0.005  # seconds between two exchanges


class Parted(ConnectionError):
    """Closed between two messages."""


class Conversation:
    def __init__(self, port):
        socket.create_connection(("127.0.0.1", port), PATIENCE).close()  # the first one gets the commands for nobody
        listener = socket.create_server(("127.0.0.1", 0))
        listener.settimeout(PATIENCE)
        self._client = socket.create_connection(("127.0.0.1", port), PATIENCE)
        self._client.sendall(socks4_request(*listener.getsockname()))
        if receive(self._client, 8)[:2] != GRANTED:
            raise ConnectionError("the request was refused")
        self._server = listener.accept()[0]
        self._server.settimeout(PATIENCE)
        self._numbers = {self._client: 1, self._server: 100}
        self.messages, self.longest = 0, 0.0
        self._exchange(SIGN_ON, HELLO)

    def exchange(self):
        text = b"undisturbed %d " % self.messages
        self._exchange(DATA, snac(FAMILY, 1, text + b"*" * SIZES[self.messages // 2 % len(SIZES)]))

    def go_on_until_the_end(self):
        with contextlib.suppress(Parted):
            while True:
                self.exchange()

    def _exchange(self, channel, payload):
        for speaker, listener in ((self._client, self._server), (self._server, self._client)):
            begin = time.monotonic()
            frame = struct.pack(">BBHH", 0x2A, channel, self._numbers[speaker], len(payload)) + payload
            self._numbers[speaker] = (self._numbers[speaker] + 1) & 0xFFFF
            with contextlib.suppress(ConnectionError):  # closed: the other end shows how
                speaker.sendall(frame)
            arrived = receive(listener, len(frame))
            if arrived != frame:
                raise ConnectionError(f"{arrived[:40].hex(' ')}... instead of {frame[:40].hex(' ')}...")
            self.messages += 1
            self.longest = max(self.longest, time.monotonic() - begin)


def receive(connection, size):
    arrived = b""
    while len(arrived) < size:
        chunk = connection.recv(size - len(arrived))
        if not chunk:
            raise (ConnectionError if arrived else Parted)(f"ended {size - len(arrived)} bytes before the end of a message")
        arrived += chunk
    return arrived


def answer(conversation):
    print("well", conversation.messages, conversation.longest, flush=True)
    conversation.longest = 0.0


def main():
    conversation = None
    try:
        conversation = Conversation(int(sys.argv[1]))
        while True:
            asked = select.select([sys.stdin], [], [], PAUSE)[0]
            question = sys.stdin.readline() if asked else " "
            if not question:
                return  # whoever would ask has gone
            conversation.exchange()
            if asked:
                answer(conversation)
            if question == "until the end\n":
                conversation.go_on_until_the_end()
                return answer(conversation)
    except OSError as error:  # an end or a time limit, too
        print(f"message {conversation.messages if conversation else 'at the beginning'}: {error!r}")


main()
