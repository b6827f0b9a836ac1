#!/usr/bin/env python3
"""What the Windows programs ask of the system they start on: nothing that Windows XP lacks.

One import too many and the program does not even start there, which no test under Wine would show. Checked are the DLLs
and functions of the import table, the flags for data execution prevention and address randomization, the oldest system
named in the header and, for the 32-bit program, its size. Usage: check_imports.py PROGRAM...; lists every fault, or
says OK.
"""
import re
import subprocess
import sys
from pathlib import Path

OBJDUMP = "x86_64-w64-mingw32-objdump"  # reads 32-bit programs too
MOST_BYTES = 3 * 512 * 1024
XP = (5, 1)

# Every one of them is part of Windows XP and not of something installed later.
DLLS = {"advapi32", "comctl32", "comdlg32", "gdi32", "kernel32", "msimg32", "msvcrt", "ole32", "oleaut32", "psapi",
        "shell32", "shlwapi", "urlmon", "user32", "uxtheme", "version", "winhttp", "wininet", "winmm", "ws2_32"}

# Functions that came after XP in DLLs that XP has. What we or the run time might plausibly reach for, not everything.
NEWER = {
    "advapi32": r"Reg(GetValue|DeleteTree|CopyTree|SetKeyValue|DeleteKeyValue|DeleteKeyEx|LoadAppKey)\w*"
                r"|Event(Register|Unregister|Write)\w*|\w*Transacted[AW]?",
    "comctl32": r"TaskDialog\w*|LoadIcon(Metric|WithScaleDown)",
    "kernel32": r"GetTickCount64|InitializeCriticalSectionEx|\w*SRWLock\w*|\w*ConditionVariable\w*|InitOnce\w*|Fls\w+"
                r"|\w*Threadpool\w*|WaitOnAddress|WakeByAddress\w*|Create(Event|Mutex|Semaphore|WaitableTimer)Ex[AW]"
                r"|CreateFile2|CopyFile2|ReOpenFile|CancelIoEx|CancelSynchronousIo|QueryFullProcessImageName[AW]"
                r"|GetFinalPathNameByHandle[AW]|GetFileInformationByHandleEx|SetFileInformationByHandle"
                r"|CreateSymbolicLink[AW]|\w*Transacted[AW]?|(LCMapString|CompareString|GetLocaleInfo)Ex"
                r"|Get(Date|Time)FormatEx|CompareStringOrdinal|GetUserDefaultLocaleName|K32\w+|GetThreadId"
                r"|GetProcessIdOfThread|GetSystemTimePreciseAsFileTime|QueryUnbiasedInterruptTime|GetErrorMode"
                r"|GetQueuedCompletionStatusEx|SetThread(Description|ErrorMode)|GetProductInfo|QueryThreadCycleTime"
                r"|AddDllDirectory|SetDefaultDllDirectories|(Register|Unregister)ApplicationRestart",
    # The secure variants, those with a locale and those with 32-bit times: the msvcrt.dll of Vista has them first.
    "msvcrt": r"\w+_s|\w+_l|_\w*(time|stat|findfirst|findnext)32(i64)?|_(configthreadlocale|initterm_e|[gs]et_fmode)"
              r"|_except_handler4_common",
    "shell32": r"SHGetKnownFolder\w+|Shell_NotifyIconGetRect|SetCurrentProcessExplicitAppUserModelID|SHGetStockIconInfo"
               r"|SHCreateItem\w+",
    "user32": r"\w*(Dpi|DPI)\w*|ChangeWindowMessageFilter\w*|\w+ClipboardFormatListener|CalculatePopupWindowPosition"
              r"|ShutdownBlockReason\w+|\w+(PowerSetting|SuspendResume)Notification|UpdateLayeredWindowIndirect"
              r"|GetPhysicalCursorPos|InternalGetWindowIcon",
    "uxtheme": r"Buffered\w+|(Begin|End)BufferedPaint|DrawThemeTextEx|SetWindowThemeAttribute",
    "ws2_32": r"WSAPoll|inet_(pton|ntop)|Inet(Pton|Ntop)\w*|WSAConnectBy\w+|GetAddrInfoEx[AW]|WSASendMsg|GetHostNameW",
}


def dump(program):
    return subprocess.run([OBJDUMP, "-p", program], check=True, capture_output=True, text=True).stdout


def imports(text):
    """Pairs of DLL (lower case, no ending) and function of a dump; the functions without a name are left out."""
    dll = None
    for line in text.splitlines():
        if name := re.match(r"\s*DLL Name: (.+)$", line):
            dll = name[1].strip().lower().removesuffix(".dll")
            yield dll, None
        elif function := re.match(r"\s+[0-9a-f]+\s+\d+\s+([A-Za-z_?@]\S*)", line):
            if dll is not None:
                yield dll, function[1]
        elif not line.strip():
            dll = None


# What draws the random number of the stack guard (-fstack-protector); nothing else in the program needs it.
STACK_GUARD = ("advapi32", "CryptGenRandom")


def import_faults(text):
    seen = 0
    for dll, function in imports(text):
        if function is None:
            if dll not in DLLS:
                yield f"needs {dll}.dll, which Windows XP does not have"
            continue
        seen += 1
        if re.fullmatch(NEWER.get(dll, r"(?!)"), function):
            yield f"needs {function} of {dll}.dll, which is newer than Windows XP"
    if seen == 0:
        yield "has no import table that we can read"
    elif STACK_GUARD not in imports(text):
        yield "has no stack guard"


def header_faults(text):
    flags = text.partition("DllCharacteristics")[2].partition("SizeOfStackReserve")[0]
    wanted = ["NX_COMPAT", "DYNAMIC_BASE"]
    if "(PE32+)" in text:
        wanted.append("HIGH_ENTROPY_VA")
    yield from (f"lacks the flag {flag}" for flag in wanted if flag not in flags)
    # Without its relocations a program stays where it was linked, whatever the flag says.
    if not re.search(r"^Entry 5 [0-9a-f]+ 0*[1-9a-f][0-9a-f]* Base Relocation", text, re.M):
        yield "has no base relocations"
    if "(Windows GUI)" not in text:
        yield "is not a window program: a console would open beside it"
    oldest = tuple(int(number) for number in re.findall(r"^M(?:ajor|inor)SubsystemVersion\s+(\d+)", text, re.M))
    if "(PE32)" in text and not (0, 0) < oldest <= XP:
        yield f"asks for Windows {'.'.join(map(str, oldest))}"


def faults(text, size):
    yield from import_faults(text)
    yield from header_faults(text)
    if "(PE32)" in text and size > MOST_BYTES:
        yield f"has {size} bytes; {MOST_BYTES} are allowed"


def main(programs):
    if not programs:
        raise SystemExit("usage: check_imports.py PROGRAM...")
    found = [f"{program}: {fault}" for program in programs
             for fault in faults(dump(program), Path(program).stat().st_size)]
    print("\n".join(found) or f"OK: {len(programs)} programs need nothing newer than Windows XP")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
