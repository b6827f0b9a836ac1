#!/usr/bin/env python3
"""The direction of includes, checked and not wished; and a few more rules that are cheap to check on text.

    relay floor    base <- os <- net <- core <- app/services <- features
    windows floor  os/desktop <- app/windows <- features/dialogs <- desktop; ui/popupmenu
    front doors    app/relay on the relay floor alone, app/shell on both

A file includes its own layer and those before it. The system's implementations see only the contracts, base and the system.
Usage: check_layers.py [ROOT]; lists every fault, or says OK.
"""
import os
import re
import sys
from pathlib import Path

RELAY = ["base", "os", "net", "core", "app/services", "features"]
WINDOWS = ["os/desktop", "app/windows", "features/dialogs", "desktop"]
# What a layer may include of ours.
ALLOWED = {layer: set(RELAY[:index + 1]) for index, layer in enumerate(RELAY)}
ALLOWED |= {layer: {*RELAY, *WINDOWS[:index + 1]} for index, layer in enumerate(WINDOWS)}
ALLOWED["os/desktop"] = {"os/desktop", "base", "os"}
ALLOWED["ui/popupmenu"] = {"ui/popupmenu", "base", "os", "os/desktop"}
ALLOWED["app/relay"] = {"app/relay", *RELAY}
ALLOWED["app/shell"] = {"app/shell", *RELAY, *WINDOWS, "ui/popupmenu"}
ALLOWED["os/posix"] = {"os/posix", "base", "os"}
# The message loop is the loop of net/, and the fakes run it for a test.
ALLOWED |= {system: {system, "base", "os", "os/desktop", "net"} for system in ("os/win32", "os/fake")}
ALLOWED["sandbox"] = {"sandbox"}  # what plays the other side shares no fault with us
LAYERS = sorted(ALLOWED, key=len, reverse=True)  # the longest prefix decides

# Tests, benchmarks and what draws the manual's pictures may use everything below. These folders and those of the system's
# implementations may also speak to the system itself.
FREE = ("tests/", "bench/", "docs/manual/pictures/")
SYSTEM_FOLDERS = ("os/win32/", "os/posix/", "sandbox/", *FREE)
WINDOWS_PLACES = re.compile(r"os/win32/|sandbox/|docs/manual/pictures/|bench/winrelay\.|tests/(win32|wine)/|tests/.*Win32\.cpp$")
WINDOWS_HEADER = re.compile(r"(windows|winsock2?|ws2tcpip|win(inet|http|user|base|def|reg)|shellapi|shl(obj|wapi)|comm(ctrl|dlg)"
                            r"|tlhelp32|psapi|iphlpapi|obj(base|idl)|ole2?|prsht|richedit|htmlhelp|mmsystem|wt?sapi32)\.h", re.I)
HEAVY = {"filesystem", "fstream", "iostream", "regex"}  # each adds hundreds of kilobytes to the program
PLATFORM_MACRO = re.compile(r"^\s*#\s*(?:el)?if.*\b(_?WIN(32|64)|__\w*(linux|unix|APPLE|MINGW)\w*|_MSC_VER)\b")
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')

SOURCES = {".h", ".cpp"}
COUNTED = SOURCES | {".py", ".sh", ".cmake", ".rc"}
SKIPPED = {"build", "dist", ".git", ".cache"}
MOST_LINES = 400


def layer_of(path):
    return next((layer for layer in LAYERS if path.startswith(layer + "/")), None)


def include_fault(path, bracket, header):
    """What is wrong with `#include` of `header` in the file `path` (both relative to the root), or None."""
    if bracket == "<":
        return system_include_fault(path, header)
    if "/" not in header:
        return f'"{header}" is not written from the root'
    if path.startswith(FREE):
        return None
    own, other = layer_of(path), layer_of(header)
    if own is None:
        return "the file is in no layer"
    if other not in ALLOWED[own]:
        return f'{own} may not include "{header}"'
    return None


def system_include_fault(path, header):
    if WINDOWS_HEADER.fullmatch(header):
        return None if WINDOWS_PLACES.match(path) else f"<{header}> belongs to os/win32"
    if path.startswith(SYSTEM_FOLDERS):
        return None
    if header.endswith(".h") or "/" in header:
        return f"<{header}> is no header of the C++ library"
    if header in HEAVY:
        return f"<{header}> is too heavy for the product; files and texts go through os/Files"
    return None


def faults_in(path, text):
    lines = text.splitlines()
    if len(lines) > MOST_LINES:
        yield f"{path}: {len(lines)} lines, {MOST_LINES} are the most: is it one thing?"
    if Path(path).suffix not in SOURCES:
        return
    for number, line in enumerate(lines, 1):
        include = INCLUDE.match(line)
        fault = include_fault(path, *include.groups()) if include else None
        if PLATFORM_MACRO.match(line) and not path.startswith("os/"):
            fault = "a platform is chosen by linking, not by a macro"
        if fault:
            yield f"{path}:{number}: {fault}"


def files_to_check(root):
    for folder, folders, names in os.walk(root):
        folders[:] = sorted(set(folders) - SKIPPED)  # where a build makes and removes folders meanwhile
        for path in (Path(folder, name) for name in sorted(names)):
            relative = path.relative_to(root).as_posix()
            if path.suffix in COUNTED or relative in ("run", "test", ".ci/run"):
                yield path, relative


def main():
    root = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parent.parent).resolve()
    checked, faults = 0, []
    for path, name in files_to_check(root):
        checked += 1
        faults += faults_in(name, path.read_text(encoding="utf-8"))
    for fault in faults:
        print(fault)
    print(f"{checked} files checked, {len(faults)} faults" if faults else f"OK: {checked} files")
    return 1 if faults or not checked else 0


if __name__ == "__main__":
    sys.exit(main())
