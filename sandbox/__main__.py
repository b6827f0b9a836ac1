"""python3 -m sandbox service|show: the service by itself, or the scene that ./run shows."""
import argparse
import asyncio
import json
import sys
from pathlib import Path

from . import show
from .program import ExeSettings, RelaySettings
from .service import Service


def _json_line(event):
    frame = event.frame
    line = {"event": event.kind, "name": event.name, "connection": event.connection, "text": event.text}
    if frame:
        line |= {"channel": frame.channel, "seq": frame.seq, "payload": frame.payload.hex()}
    print(json.dumps(line), flush=True)


async def _obey(service, command):
    """A command is a JSON object: {"do": "who" | "frame" | "goodbye" | "reset", "name": ..., "channel": ..., "payload": hex}."""
    if command["do"] == "who":
        return print(json.dumps({"event": "who", "names": [user.name for user in service.users.values()]}), flush=True)
    connection = service.user(command["name"]).connection
    if command["do"] == "frame":
        await connection.send(command["channel"], bytes.fromhex(command["payload"]))
    elif command["do"] == "goodbye":
        await connection.stream.send_bare_goodbye()
        await connection.stream.close()
    elif command["do"] == "reset":
        connection.stream.reset()
    else:
        raise ValueError(f"no such command: {command['do']}")


async def serve(port, as_json):
    """Runs until killed or until standard input ends; with `as_json`, events go out and commands come in as JSON lines."""
    plain = lambda event: print(f"{event.kind:<9} {event.name:<12} {event.connection:<11} {event.text}", flush=True)
    service = Service(on_event=_json_line if as_json else plain)
    await service.start(port)
    if not as_json:
        print(f"listening on {service.host}:{service.port}", flush=True)
        await asyncio.Event().wait()
    print(json.dumps({"event": "listening", "host": service.host, "port": service.port}), flush=True)
    commands = asyncio.StreamReader()
    await asyncio.get_running_loop().connect_read_pipe(lambda: asyncio.StreamReaderProtocol(commands), sys.stdin)
    async for line in commands:
        try:
            await _obey(service, json.loads(line))
        except (ValueError, KeyError, AttributeError) as error:
            print(json.dumps({"event": "refused", "text": repr(error)}), flush=True)
    await service.stop()


def main():
    parser = argparse.ArgumentParser(prog="python3 -m sandbox", description=__doc__)
    commands = parser.add_subparsers(dest="command", required=True)
    service = commands.add_parser("service", help="the OSCAR service alone")
    service.add_argument("--port", type=int, default=show.AIM_PORT, help="0 picks a free one")
    service.add_argument("--json", action="store_true", help="events out and commands in, as JSON lines")
    scene = commands.add_parser("show", help="two sample clients chat through a proxy")
    scene.add_argument("--proxy-port", type=int, default=11080)
    scene.add_argument("--data", required=True, help="the program's data folder")
    scene.add_argument("--relay", help="wrenlow-relay; without it, wrenlow.exe in the Wine prefix of the environment")
    scene.add_argument("--settings", help="the relay's settings file")
    scene.add_argument("--commands", help="the pipe that the relay takes commands from")
    scene.add_argument("--build", type=Path, help="build tree of a wrenlow.exe to start beside an AIM client, under Wine")
    scene.add_argument("--once", action="store_true", help="end after the scene")
    arguments = parser.parse_args()
    try:
        if arguments.command == "service":
            asyncio.run(serve(arguments.port, arguments.json))
        else:
            settings = RelaySettings(arguments.relay, arguments.settings) if arguments.relay else ExeSettings()
            scene = show.Show(("127.0.0.1", arguments.proxy_port), settings, arguments.data, arguments.commands)
            asyncio.run(show.run(scene, arguments.once, arguments.build))
    except KeyboardInterrupt:
        pass


main()
