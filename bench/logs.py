"""Searching log files: the log library beside `grep -ri`, on 20,000 files with 2 million lines; in CPU time."""
import json
import random
import resource
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FOLDER = ROOT / "build/bench/logs"
INDEX = ROOT / "build/bench/logs.idx"
FILES, LINES, BUDDIES, VOCABULARY = 20_000, 100, 100, 60_000


def make_logs():
    """The same files at every run: words by Zipf's law, as people use them."""
    if (FOLDER / "done").exists():
        return
    chance = random.Random(1)
    letters = "etaoinshrdlucmfwypvbgk"
    words = ["".join(chance.choices(letters, k=chance.randint(2, 9))) for _ in range(VOCABULARY)]
    weights = [1 / (rank + 2) for rank in range(VOCABULARY)]
    FOLDER.mkdir(parents=True, exist_ok=True)
    for number in range(FILES):
        buddy, day = f"buddy{number % BUDDIES}", number // BUDDIES
        date = f"{2004 + day // 336}-{1 + day // 28 % 12:02}-{1 + day % 28:02}"
        spoken = chance.choices(words, weights, k=8 * LINES)
        lines = [f"{buddy if line % 2 else 'My Name'} ({line // 60:02}:{line % 60:02}:00): "
                 + " ".join(spoken[8 * line:8 * line + 8]) + "\r\n" for line in range(LINES)]
        lines[7] = lines[7].rstrip() + f" only{number}\r\n"
        (FOLDER / f"{buddy} {date}.txt").write_text("".join(lines), newline="")
    (FOLDER / "done").touch()


def library(words):
    run = subprocess.run([ROOT / "build/release/bench/logsbench", FOLDER, INDEX, *words], check=True,
                         capture_output=True, text=True)
    return json.loads(run.stdout)


def grep(word):
    def used():
        usage = resource.getrusage(resource.RUSAGE_CHILDREN)
        return usage.ru_utime + usage.ru_stime

    begin = used()
    found = subprocess.run(["grep", "-ri", word, FOLDER], capture_output=True, check=False).stdout.count(b"\n")
    return (used() - begin) * 1000, found


def main():
    make_logs()
    words = [f"only{number}" for number in (17, 9_999, 19_998)] + ["tea", "thenos"]
    INDEX.unlink(missing_ok=True)
    first = library(words[:1])
    again = library(words)
    print(f"{FILES} files, {FILES * LINES} lines, "
          f"{sum(path.stat().st_size for path in FOLDER.iterdir()) / 1e6:.0f} MB; index {INDEX.stat().st_size / 1e6:.1f} MB")
    print(f"indexed once in {first['indexed_ms'] / 1000:.1f} s, longest turn of the loop {first['longest_turn_ms']:.1f} ms")
    print(f"next start: names after {again['names_ms']:.0f} ms, longest turn {again['longest_turn_ms']:.1f} ms")
    print("| word | search, ms | hits | grep -ri, ms | lines | ratio |\n|---|---|---|---|---|---|")
    for word in words:
        milliseconds, hits = again["searches"][word]
        by_grep, lines = grep(word)
        print(f"| {word} | {milliseconds:.1f} | {hits} | {by_grep:.0f} | {lines} | {by_grep / milliseconds:.0f} |")


main()
