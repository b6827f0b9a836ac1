"""unshare --net python3 -m tests.e2e.neighbour RELAY: in a network of its own, with one more address and no way out,
only 127.0.0.1 reaches the relay; and requests that are none, read as addresses out there, end with their connection.
"""
import socket
import subprocess
import sys
import tempfile

from tests.e2e.target import PATIENCE, Program

PUBLIC = "192.0.2.1"
PORT = 11080  # everything is free here
NO_REQUESTS = [b"GET / HTTP/1.1\r\nHost: localhost\r\n\r\n", b"POST /x HTTP/1.1\r\n\r\n", b"\x16\x03\x01\x00\xF8\x01\x00\x00\xF4" + bytes(244)]


def connects(address, port):
    try:
        socket.create_connection((address, port), PATIENCE).close()
        return True
    except ConnectionRefusedError:
        return False


def expect(what, holds):
    print(("ok     " if holds else "FAILED ") + what)
    return holds


def reach(program):
    with socket.create_server(("", 0)) as open_to_all:
        yield expect("the address is there", connects(PUBLIC, open_to_all.getsockname()[1]))
    yield expect("127.0.0.1 connects", connects("127.0.0.1", program.port))
    for address in (PUBLIC, "127.0.0.2", "::1"):
        yield expect(f"{address} does not connect", not connects(address, program.port))


def garbage(program):
    for request in NO_REQUESTS:
        with socket.create_connection(program.address, PATIENCE) as connection:
            connection.sendall(request)
            try:
                ended = connection.recv(1) == b""
            except ConnectionResetError:
                ended = True
            yield expect(f"{request[:6]!r} is ended without a word", ended)
    yield expect("the program is still there", program.alive())


def main():
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    subprocess.run(["ip", "address", "add", PUBLIC + "/32", "dev", "lo"], check=True)
    with tempfile.TemporaryDirectory() as data:
        program = Program([sys.argv[1], "--data", data, "--settings", data + "/settings", "--listen-port", str(PORT)], PORT)
        try:
            program.wait_until_listening()
            program.accompany()
            held = all([*reach(program), *garbage(program)])
            program.bystander.how_it_goes()
            return 0 if held else 1
        finally:
            program.kill()


sys.exit(main())
