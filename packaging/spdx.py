#!/usr/bin/env python3
"""spdx.py VERSION DOWNLOAD...: what is in the downloads and under which licence, as an SPDX 2.3 document (tag-value).

The time is that of SOURCE_DATE_EPOCH, the namespace is made from the downloads themselves: the same downloads always
give the same document.
"""
import hashlib
import os
import sys
from datetime import datetime, timezone
from pathlib import Path

GCC = "GPL-3.0-or-later WITH GCC-exception-3.1"

# Parts of others that end up in a download: (identifier, name, licence, kinds of downloads).
PARTS = [
    ("libstdcxx", "GNU C++ library and libgcc, statically linked", GCC, (".exe", ".zip")),
    ("mingw-w64", "mingw-w64 run time, statically linked", "ZPL-2.1", (".exe", ".zip")),
    ("nsis", "NSIS, the frame of the setup program", "Zlib AND CPL-1.0", (".exe",)),
]


def digest(path, algorithm):
    return hashlib.new(algorithm, path.read_bytes()).hexdigest()


def package(identifier, name, version, licence, extra=()):
    return ["", f"PackageName: {name}", f"SPDXID: SPDXRef-{identifier}", f"PackageVersion: {version}",
            "PackageDownloadLocation: NOASSERTION", "FilesAnalyzed: false", *extra,
            f"PackageLicenseConcluded: {licence}", f"PackageLicenseDeclared: {licence}",
            "PackageCopyrightText: NOASSERTION"]


def document(version, downloads):
    """The lines of the document."""
    created = datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), timezone.utc)
    sums = {path: digest(path, "sha256") for path in downloads}
    whole = hashlib.sha256("".join(sums.values()).encode()).hexdigest()
    lines = ["SPDXVersion: SPDX-2.3", "DataLicense: CC0-1.0", "SPDXID: SPDXRef-DOCUMENT",
             f"DocumentName: wrenlow-{version}", f"DocumentNamespace: urn:sha256:{whole}",
             "Creator: Organization: The Wrenlow authors", f"Created: {created:%Y-%m-%dT%H:%M:%SZ}"]
    for number, path in enumerate(downloads, 1):
        extra = [f"PackageFileName: {path.name}", f"PackageChecksum: SHA1: {digest(path, 'sha1')}",
                 f"PackageChecksum: SHA256: {sums[path]}"]
        lines += package(f"download-{number}", path.name, version, "MIT", extra)
        lines.append(f"Relationship: SPDXRef-DOCUMENT DESCRIBES SPDXRef-download-{number}")
        lines += [f"Relationship: SPDXRef-download-{number} CONTAINS SPDXRef-{identifier}"
                  for identifier, _, _, kinds in PARTS if path.suffix in kinds]
    for identifier, name, licence, _ in PARTS:
        lines += package(identifier, name, "NOASSERTION", licence)
    return lines


if __name__ == "__main__":
    print("\n".join(document(sys.argv[1], [Path(name) for name in sys.argv[2:]])))
