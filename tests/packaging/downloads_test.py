"""The downloads as files: always the same bytes, complete, and good for what they are. Needs the programs in build/."""
import filecmp
import gzip
import hashlib
import os
import re
import subprocess
import tempfile
import unittest
import zipfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = ROOT / "build"
VERSION = re.search(r'VERSION_TEXT "(.+)"', (ROOT / "base/Version.h").read_text())[1]


def output(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, check=True, timeout=300, **options).stdout


def name_of(heading):
    """By which links know a heading, here and on the web pages of the sources."""
    return re.sub(r"[^a-z0-9 -]", "", heading.lower()).replace(" ", "-")


def package(folder, **environment):
    subprocess.run([ROOT / "packaging/package", BUILD, folder], check=True, timeout=300, stdout=subprocess.DEVNULL,
                   env={**os.environ, "SOURCE_DATE_EPOCH": "1700000000", **environment})
    return folder


class Downloads(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls._temporary = tempfile.TemporaryDirectory()
        cls.home = Path(cls._temporary.name)
        cls.folder = package(cls.home / "dist")
        cls.deb = next(cls.folder.glob("*.deb"))
        cls.unpacked = cls.home / "deb"
        output("dpkg-deb", "-x", cls.deb, cls.unpacked)
        cls.relay = cls.unpacked / "usr/bin/wrenlow-relay"

    @classmethod
    def tearDownClass(cls):
        cls._temporary.cleanup()

    def test_another_users_run_gives_the_same_bytes(self):
        os.mkdir(self.home / "elsewhere")
        umask = os.umask(0o077)
        try:
            again = package(self.home / "again", TZ="Asia/Tokyo", LC_ALL="C", TMPDIR=str(self.home / "elsewhere"))
        finally:
            os.umask(umask)
        names = sorted(path.name for path in self.folder.iterdir())
        self.assertEqual(names, sorted(path.name for path in again.iterdir()))
        self.assertEqual(filecmp.cmpfiles(self.folder, again, names, shallow=False)[0], names)

    def test_nothing_is_missing(self):
        names = {path.name.replace(VERSION, "V") for path in self.folder.iterdir()}
        architecture = output("dpkg", "--print-architecture").strip()
        self.assertEqual(names, {"wrenlow-V-setup.exe", "wrenlow-V-win32.zip", "wrenlow-V-win64.zip", "wrenlow-V.spdx",
                                 f"wrenlow-relay_V_{architecture}.deb", "SHA256SUMS"})

    def test_sums_and_list_of_parts_tell_every_download(self):
        output("sha256sum", "--check", "--strict", "SHA256SUMS", cwd=self.folder)
        sums, parts = (self.folder / "SHA256SUMS").read_text(), (self.folder / f"wrenlow-{VERSION}.spdx").read_text()
        for download in self.folder.glob("wrenlow*"):
            digest = hashlib.sha256(download.read_bytes()).hexdigest()
            self.assertIn(f"{digest}  {download.name}", sums)
            if download.suffix != ".spdx":
                self.assertIn(f"PackageFileName: {download.name}\n", parts)
                self.assertIn(f"PackageChecksum: SHA256: {digest}\n", parts)

    def test_a_zip_holds_its_own_program_and_the_texts(self):
        for system in ("win32", "win64"):
            with zipfile.ZipFile(self.folder / f"wrenlow-{VERSION}-{system}.zip") as archive:
                top = f"wrenlow-{VERSION}-{system}/"
                self.assertTrue(all(name.startswith(top) for name in archive.namelist()))
                self.assertEqual(archive.read(top + "wrenlow.exe"),
                                 (BUILD / system / "app/shell/wrenlow.exe").read_bytes())
                for text in ("LICENSE.txt", "third-party.txt", "CHANGELOG.txt", "manual/index.html"):
                    self.assertIn(top + text, archive.namelist())

    def test_the_setup_program_asks_for_no_rights_and_is_32_bit(self):
        setup = (self.folder / f"wrenlow-{VERSION}-setup.exe").read_bytes()
        self.assertIn(b'requestedExecutionLevel level="asInvoker"', setup)
        header = int.from_bytes(setup[0x3C:0x40], "little")
        self.assertEqual(setup[header + 4:header + 6], b"\x4C\x01")  # IMAGE_FILE_MACHINE_I386

    def test_every_link_of_the_manual_leads_somewhere(self):
        manual = self.unpacked / "usr/share/doc/wrenlow-relay/manual"
        pages = {page.name: page.read_text(encoding="utf-8") for page in manual.glob("*.html")}
        self.assertGreater(len(pages), 4)
        for name, text in pages.items():
            links = re.findall(r'(?:href|src)="([^"]+)', text) + re.findall(r'srcset="(\S+)', text)
            for link in links:
                with self.subTest(page=name, link=link):
                    file, _, heading = link.partition("#")
                    self.assertTrue((manual / (file or name)).is_file())
                    if heading:
                        self.assertIn(f'id="{heading}"', pages[file or name])

    def test_every_link_of_the_sources_leads_somewhere(self):
        pages = {page: page.read_text(encoding="utf-8") for page in ROOT.rglob("*.md")
                 if page.relative_to(ROOT).parts[0] not in ("build", "dist")}
        for page, text in pages.items():
            for link in re.findall(r"\]\((?!https?:)([^)\s]+)\)", text):
                with self.subTest(page=str(page.relative_to(ROOT)), link=link):
                    file, _, heading = link.partition("#")
                    target = (page.parent / file).resolve() if file else page
                    self.assertTrue(target.exists())
                    if heading:
                        self.assertIn(heading, map(name_of, re.findall(r"(?m)^#+ (.*)", pages[target])))

    def test_the_version_is_told_the_same_everywhere(self):
        header = (ROOT / "base/Version.h").read_text(encoding="utf-8")
        self.assertEqual(".".join(re.findall(r"(?:MAJOR|MINOR|REVISION) (\d+)", header)), VERSION)
        told = re.findall(r"(?m)^## (\S+)", (ROOT / "CHANGELOG.md").read_text(encoding="utf-8"))[:1]
        for page in (ROOT / "README.md", *(ROOT / "docs/manual").glob("*.md")):
            told += re.findall(r"wrenlow(?:-relay)?[-_](\d[\d.]*\d)[-_]", page.read_text(encoding="utf-8"))
        self.assertGreater(len(told), 4)
        self.assertEqual(set(told), {VERSION})

    def test_every_page_of_the_manual_can_be_reached(self):
        pages = {page.stem for page in (ROOT / "docs/manual").glob("*.md")}
        contents = (ROOT / "docs/manual/index.md").read_text(encoding="utf-8")
        self.assertEqual(pages - {"index"}, set(re.findall(r"\(([a-z-]+)\.md", contents)))

    def test_every_window_that_has_a_picture_is_described(self):
        shipped = {path.name for path in (self.unpacked / "usr/share/doc/wrenlow-relay/manual/images").iterdir()}
        self.assertEqual({path.name for path in (ROOT / "docs/manual/images").glob("*.png")}, shipped)

    def test_the_debian_package_installs_and_goes_without_a_trace(self):
        system = self.home / "system"
        for folder in ("var/lib/dpkg/info", "var/lib/dpkg/updates", "var/log"):
            (system / folder).mkdir(parents=True)
        (system / "var/lib/dpkg/status").touch()
        # The libraries that it depends on are not installed in the empty system, only here.
        dpkg = ["dpkg", f"--root={system}", "--force-depends", "--force-not-root", "--force-bad-path"]
        output(*dpkg, "--install", self.deb)
        self.assertEqual(output(system / "usr/bin/wrenlow-relay", "--version"), f"Wrenlow {VERSION}\n")
        output(*dpkg, "--purge", "wrenlow-relay")
        self.assertEqual(list((system / "usr").rglob("*wrenlow*")) if (system / "usr").exists() else [], [])

    def test_the_installed_relay_keeps_its_data_with_the_user(self):
        home = self.home / "user"
        home.mkdir()
        environment = {"HOME": str(home), "PATH": os.environ["PATH"]}
        with subprocess.Popen([self.relay, "--listen-port", "0"], env=environment, stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE, text=True) as relay:
            relay.communicate("quit\n", timeout=60)
        self.assertEqual(relay.returncode, 0)
        self.assertTrue((home / ".local/share/wrenlow").is_dir())

    def test_the_man_page_knows_every_option_and_command(self):
        with gzip.open(self.unpacked / "usr/share/man/man1/wrenlow-relay.1.gz", "rt", encoding="utf-8") as source:
            page = source.read().replace("\\-", "-")
        options = re.findall(r"(?:^ +|, )(--[a-z-]+)", output(self.relay, "--help"), re.M)
        source = (ROOT / "app/relay/CommandChannel.cpp").read_text(encoding="utf-8")
        commands = re.findall(r'"([a-z]+)(?: NAME| text| minutes)* {2,}', source)
        self.assertIn("--help", options)
        self.assertIn("away", commands)
        for name in options + commands:
            self.assertRegex(page, rf"(?m)^\.BI? {name}\b")


if __name__ == "__main__":
    unittest.main()
