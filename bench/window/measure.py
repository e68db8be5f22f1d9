"""Start-up, memory, idle cost and the road of one save, of the built programs on this machine.
Each figure of the client stands beside the same figure of an empty window, measured in turn."""

import json
import os
import pathlib
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "e2e"))

import harness  # noqa: E402

STARTS = 25  # short and unsteady
RUNS = 9
ACCESSIBILITY = ("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "QT_ACCESSIBILITY")
EMPTY = harness.BUILD / "bench" / "window" / "empty_window"
FRAMES = {"QT_LOGGING_RULES": "qt.scenegraph.time.renderloop=true", "QT_FORCE_STDERR_LOGGING": "1"}


class Started:
    """A program on a home, and the time from its start to its first painted frame."""

    def __init__(self, command, home, **environment):
        self.begun = time.monotonic()
        self.process = subprocess.Popen(
            command, env={**os.environ, **FRAMES, "HOME": str(home), **environment},
            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        for line in self.process.stderr:
            if b"scenegraph" in line or b"rame rendered" in line or b"syncAndRender" in line:
                break
        else:
            raise RuntimeError(f"{command[0]} ended before it had painted anything")
        self.first_frame = time.monotonic() - self.begun
        os.set_blocking(self.process.stderr.fileno(), False)

    def pss(self):
        """Proportional memory in MB."""
        for line in open(f"/proc/{self.process.pid}/smaps_rollup"):
            if line.startswith("Pss:"):
                return int(line.split()[1]) / 1024

    def ticks(self):
        fields = open(f"/proc/{self.process.pid}/stat").read().rsplit(")", 1)[1].split()
        return int(fields[11]) + int(fields[12])

    def stop(self):
        self.process.kill()
        self.process.wait()
        self.process.stderr.close()


def projects(count=20):
    now = int(time.time())
    return [{"name": f"Project {i}", "path": f"/music/Project {i}", "current_branch": "main",
             "head_commit": "a" * 40, "head_message": "Save", "is_dirty": i % 3 == 0,
             "size_bytes": 1_000_000 * (i + 1),
             "file_states": [{"filename": f"Song {j}.als", "branch": "main", "last_saved": now - 600,
                              "changed_since_version": j == 0,
                              "variations": [{"name": "main", "is_current": True}]}
                             for j in range(5)]} for i in range(count)]


def report(name, client, empty, unit, budget):
    ratio = client / empty
    verdict = "" if ratio <= budget else "   OVER BUDGET"
    print(f"{name:34} {client:8.1f} {unit}   empty window {empty:6.1f} {unit}   "
          f"ratio {ratio:4.2f} (budget {budget}){verdict}")
    return ratio <= budget


def in_turn(test, runs, client, empty, home):
    """Medians of both, run after run in turn, so that a drift of the machine hits both."""
    ours, theirs = [], []
    for run in range(runs + 1):
        for command, figures in ((client, ours), (empty, theirs)):
            started = Started(command, home)
            try:
                figure = test(started)
                if run:
                    figures.append(figure)
            finally:
                started.stop()
    return statistics.median(ours), statistics.median(theirs)


def memory(started):
    time.sleep(1.5)
    return started.pss()


def idle(started):
    time.sleep(3)
    before = started.ticks()
    time.sleep(10)
    return started.ticks() - before


class Measure(harness.EndToEnd):
    def runTest(self):
        held = True
        # Nobody reads the window here; a screen reader costs both programs the same.
        asked = [os.environ.pop(name) for name in ACCESSIBILITY]
        self.addCleanup(lambda: os.environ.update(zip(ACCESSIBILITY, asked)))
        # Ready to be sent: what the service does meanwhile is not the client's time.
        status = json.dumps({"type": "status", "repos": projects()}).encode() + b"\n"
        self.scripted_service(status=status)
        client, empty = [str(harness.CLIENT), "--show"], [str(EMPTY)]

        ours, theirs = in_turn(lambda started: started.first_frame * 1000, STARTS, client, empty,
                               self.home)
        held &= report("start to first painted window", ours, theirs, "ms", 1.5)
        ours, theirs = in_turn(memory, RUNS, client, empty, self.home)
        held &= report("memory (PSS) after start", ours, theirs, "MB", 1.5)

        started = Started(client, self.home)
        ticks = idle(started)
        held &= ticks == 0
        print(f"{'idle for 10 s, window shown':34} {ticks:8} CPU ticks")
        subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "OSTRA", "windowminimize"],
                       check=False)
        ticks = idle(started)
        held &= ticks == 0
        print(f"{'idle for 10 s, window hidden':34} {ticks:8} CPU ticks")
        started.stop()
        self.assertTrue(held, "a budget is exceeded")


class MeasureASave(harness.EndToEnd):
    def runTest(self):
        client = self.start_client("--show")
        client.find("label", "daemon · watching 0 projects")
        music = self.home / "Music"
        music.mkdir()
        self.ask("watch_path_add", path=str(music))
        song = music / "Bench Project" / "Bench.als"
        harness.save(song, harness.small_set(tempo=100))
        client.find("push button", "Bench Project").press()
        client.find("push button", "Bench")
        taken = []
        for run in range(5):
            self.ask("song_version_create", repo="Bench Project", path=str(song.parent),
                     file=song.name, name=f"v{run}")
            client.key("ctrl+r")  # the window hears of its own actions only
            client.gone("label", "1 changed")
            begun = time.monotonic()
            harness.save(song, harness.small_set(tempo=101 + run))
            client.find("label", "1 changed")
            taken.append((time.monotonic() - begun) * 1000)
        figure = statistics.median(taken)
        print(f"{'saved file to updated card':34} {figure:8.1f} ms   of which 300 ms are the quiet time "
              f"(budget 1000){'' if figure <= 1000 else '   OVER BUDGET'}")
        self.assertLessEqual(figure, 1000)


if __name__ == "__main__":
    import unittest

    suite = unittest.TestSuite([Measure(), MeasureASave()])
    sys.exit(not unittest.TextTestRunner(verbosity=0).run(suite).wasSuccessful())
