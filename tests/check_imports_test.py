"""The import check finds what it is for; a check that cannot fail would be worse than none."""
import unittest

from check_imports import MOST_BYTES, faults

CLEAN = """\
program.exe:     file format pei-i386

Magic\t\t\t010b\t(PE32)
MajorSubsystemVersion\t4
MinorSubsystemVersion\t0
Subsystem\t\t00000002\t(Windows GUI)
DllCharacteristics\t00000140
\t\t\t\t\tDYNAMIC_BASE
\t\t\t\t\tNX_COMPAT
SizeOfStackReserve\t00200000
Entry 5 0000f000 000003d8 Base Relocation Directory [.reloc]

The Import Tables (interpreted .idata section contents)

 00009000\t0000903c 00000000 00000000 000094d8 000090c8

\tDLL Name: KERNEL32.dll
\tvma:  Hint/Ord Member-Name Bound-To
\t91c0\t  277  DeleteCriticalSection
\t91d8\t  526  GetFileInformationByHandle

 00009014\t000090b4 00000000 00000000 000094f8 00009140

\tDLL Name: msvcrt.dll
\tvma:  Hint/Ord Member-Name Bound-To
\t93a0\t   56  __getmainargs
\t93b0\t   57  _fstat64

 00009028\t000090c4 00000000 00000000 00009528 00009160

\tDLL Name: ADVAPI32.dll
\tvma:  Hint/Ord Member-Name Bound-To
\t93c0\t 1194  CryptGenRandom

"""
CLEAN_64 = (CLEAN.replace("010b\t(PE32)", "020b\t(PE32+)").replace("\tNX_COMPAT", "\tNX_COMPAT HIGH_ENTROPY_VA")
            .replace("SubsystemVersion\t4", "SubsystemVersion\t6"))
FAULTS = [
    ("GetFileInformationByHandle", "GetFileInformationByHandleEx"),
    ("DeleteCriticalSection", "GetTickCount64"),
    ("DeleteCriticalSection", "AcquireSRWLockExclusive"),
    ("__getmainargs", "strcpy_s"),
    ("__getmainargs", "_localtime32"),
    ("msvcrt.dll", "api-ms-win-crt-runtime-l1-1-0.dll"),
    ("CryptGenRandom", "RegOpenKeyExA"),
    ("NX_COMPAT", ""),
    ("DYNAMIC_BASE", ""),
    ("000003d8 Base", "00000000 Base"),
    ("(Windows GUI)", "(Windows CUI)"),
    ("SubsystemVersion\t4", "SubsystemVersion\t6"),
    ("DLL Name", "DLL"),
]


class ImportCheck(unittest.TestCase):
    def test_passes_what_windows_xp_can_start(self):
        self.assertEqual(list(faults(CLEAN, MOST_BYTES)), [])
        self.assertEqual(list(faults(CLEAN_64, 2 * MOST_BYTES)), [])

    def test_finds_each_fault(self):
        for good, bad in FAULTS:
            with self.subTest(bad or "without " + good):
                self.assertIn(good, CLEAN)
                self.assertEqual(len(list(faults(CLEAN.replace(good, bad), 1000))), 1)

    def test_finds_what_only_the_64_bit_program_needs(self):
        self.assertEqual(len(list(faults(CLEAN_64.replace("HIGH_ENTROPY_VA", ""), 1000))), 1)

    def test_finds_a_32_bit_program_that_is_too_large(self):
        self.assertEqual(len(list(faults(CLEAN, MOST_BYTES + 1))), 1)


if __name__ == "__main__":
    unittest.main()
