"""The layer check finds what it is for; a check that cannot fail would be worse than none."""
import unittest

from check_layers import faults_in

FAULTY = [
    ("core/a.cpp", '#include "features/modLogging.h"'),
    ("core/a.cpp", '#include "os/win32/Wide.h"'),
    ("features/dialogs/frmAway.cpp", '#include "app/shell/frmMain.h"'),
    ("features/a.cpp", '#include "ui/popupmenu/cPopupMenu.h"'),
    ("ui/popupmenu/a.h", '#include "core/modTools.h"'),
    ("os/win32/a.cpp", '#include "core/modTools.h"'),
    ("os/posix/a.cpp", '#include "os/win32/Wide.h"'),
    ("net/Tcp.h", '#include "core/modTools.h"'),
    ("net/Acceptor.cpp", "#ifdef _WIN32"),
    ("os/Waiting.h", '#include "net/EventLoop.h"'),
    ("os/posix/Console.cpp", '#include "net/EventLoop.h"'),
    ("features/modLogging.cpp", '#include "os/desktop/MessageBox.h"'),
    ("features/modLogging.cpp", '#include "features/dialogs/SessionText.h"'),
    ("app/services/modSystem.cpp", '#include "app/windows/AimClient.h"'),
    ("app/relay/CommandChannel.cpp", '#include "features/dialogs/SessionText.h"'),
    ("app/relay/CommandChannel.cpp", '#include "os/desktop/Dialog.h"'),
    ("os/posix/Console.cpp", '#include "os/desktop/Dialog.h"'),
    ("base/a.h", '#include "os/Clock.h"'),
    ("core/a.cpp", '#include "modTools.h"'),
    ("core/a.cpp", "#include <windows.h>"),
    ("tests/unit/a.cpp", "#include <WinSock2.h>"),
    ("os/posix/a.cpp", "#include <windows.h>"),
    ("core/a.cpp", "#include <unistd.h>"),
    ("core/a.cpp", "#include <sys/socket.h>"),
    ("features/a.cpp", "#include <regex>"),
    ("core/a.cpp", "#ifdef _WIN32"),
    ("core/a.cpp", "#  elif defined(__linux__)"),
    ("stray/a.cpp", '#include "base/Event.h"'),
    ("core/a.cpp", "\n" * 401),
    ("sandbox/aim/a.cpp", '#include "core/clsHeaderFLAP.h"'),
    ("tests/long.py", "\n" * 401),
]
CLEAN = [
    ("app/shell/frmMain.cpp", '#include "ui/popupmenu/cPopupMenu.h"'),
    ("app/shell/frmMain.cpp", '#include "core/modSocket.h"'),
    ("features/a.cpp", '#include "app/services/modRegistry.h"'),
    ("os/win32/Tcp.cpp", "#include <winsock2.h>"),
    ("os/posix/Tcp.cpp", "#include <sys/epoll.h>"),
    ("os/win32/Tcp.cpp", "#ifdef _WIN32"),
    ("tests/win32/a.cpp", "#include <windows.h>"),
    ("tests/contract/PeerWin32.cpp", "#include <winsock2.h>"),
    ("tests/unit/a.cpp", '#include "app/shell/frmMain.h"'),
    ("core/a.h", "#include <string>"),
]


class LayerCheck(unittest.TestCase):
    def test_finds_every_fault(self):
        for path, text in FAULTY:
            with self.subTest(path=path, text=text[:60]):
                self.assertEqual(len(list(faults_in(path, text))), 1)

    def test_leaves_right_files_alone(self):
        for path, text in CLEAN:
            with self.subTest(path=path, text=text):
                self.assertEqual(list(faults_in(path, text)), [])


if __name__ == "__main__":
    unittest.main()
