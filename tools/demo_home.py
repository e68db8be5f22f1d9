"""A believable home for demonstrations: three projects with saves, versions and variations, made
by writing sets as Live does and talking to the bundled service on its socket."""

import argparse
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "e2e"))

import livesets  # noqa: E402
from livesets import Clip, LiveSet, beat  # noqa: E402

BUILD = pathlib.Path(os.environ.get("OSTRA_BUILD", ROOT / "build")).resolve()


class Service:
    """The bundled service on a home, and a connection to it."""

    def __init__(self, home):
        self.home = home
        self.environment = dict(os.environ, HOME=str(home))
        self.process = subprocess.Popen(
            [str(BUILD / "libexec" / "ostra" / "ostra-daemon")], env=self.environment,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        path = str(home / ".ostra" / "daemon.sock")
        for _ in range(200):
            self.connection = socket.socket(socket.AF_UNIX)
            try:
                self.connection.connect(path)
                break
            except OSError:
                self.connection.close()
                time.sleep(0.05)
        else:
            raise SystemExit("the service does not answer")
        self.connection.settimeout(20)
        self.lines = self.connection.makefile("rb")
        self.events = []

    def read(self):
        return json.loads(next(self.lines))

    def ask(self, cmd, **members):
        self.connection.sendall(json.dumps({"cmd": cmd, **members}).encode() + b"\n")
        while True:
            line = self.read()
            if "type" in line:
                if line["type"] == "error":
                    raise SystemExit(f"{cmd}: {line['message']}")
                return line
            self.events.append(line)

    def save(self, path, music):
        """Writes a set as Live does and waits until the service has recorded it."""
        path.parent.mkdir(parents=True, exist_ok=True)
        fresh = path.with_name(path.name + ".tmp")
        fresh.write_bytes(music.bytes())
        os.replace(fresh, path)
        while True:
            event = self.events.pop(0) if self.events else self.read()
            if event.get("event") == "save_detected":
                return

    def stop(self):
        self.connection.close()
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(10)


def prepare(service):
    """Three projects under Music; the first one with most of a life behind it."""
    music = service.home / "Music"
    music.mkdir()
    service.ask("watch_path_add", path=str(music))

    name = "Night Drive Project"
    path = music / name / "Night Drive.als"
    song = {"repo": name, "path": str(path.parent), "file": path.name}
    drive = LiveSet(122, locators=[(1, "Intro"), (17, "Verse")])
    drive.add("Drums", Clip("Beat 1", 1, 16, beat(16)), colour=2)
    drive.add("Bass", Clip("Low", 9, 8, beat(8, (33, 40))), colour=8)
    drive.add("Lead", Clip("Chorus", 17, 8, beat(8, (64, 67))), colour=14)
    service.save(path, drive)
    service.ask("song_version_create", name="sketch", **song)
    drive.track("Bass").volume = 0.7
    service.save(path, drive)
    drive.add("Pads", Clip("Wide", 1, 32, beat(8, (48, 55))), colour=20)
    drive.tempo = 124
    service.save(path, drive)
    service.ask("song_version_create", name="rough mix", **song)

    service.ask("branch_track", name="chorus idea", **song)
    idea = drive.but(lambda other: other.track("Lead").clips.append(
        Clip("Chorus 2", 33, 8, beat(8, (67, 71)))))
    service.save(path, idea)
    idea.track("Pads").volume = 0.5
    service.save(path, idea)
    service.ask("checkout_track", branch="main", **song)
    drive.track("Drums").volume = 0.9
    service.save(path, drive)
    drive.track("Lead").clips[0].bar = 25
    drive.add("Vox", Clip("Hook", 25, 8, beat(8, (60, 62))), colour=26)
    service.save(path, drive)

    second = path.with_name("Interlude.als")
    interlude = livesets.simple(90, ("Piano", "Strings"))
    service.save(second, interlude)
    service.ask("song_version_create", name="v1", repo=name, path=str(path.parent), file=second.name)
    service.ask("version_create", name="album-mix-v1", note="for the label", repo=name,
                path=str(path.parent))

    for project, file, tempo in (("Ålesund Sessions", "Fjord (live).als", 98),
                                 ("Remixes 2026", "Tokyo 東京 Edit.als", 140)):
        path = music / project / file
        service.save(path, livesets.simple(tempo, ("Kick", "Pad", "Vox")))
        service.ask("song_version_create", name="first take", repo=project, path=str(path.parent),
                    file=file)

    found = service.home / "Desktop" / "Old Ideas Project" / "Loop 7.als"
    found.parent.mkdir(parents=True)
    found.write_bytes(livesets.simple(110).bytes())
    service.ask("rescan")


def draw(home, file):
    """The window on that home, its first card opened, in a virtual display."""
    import harness

    harness.desktop()
    environment = dict(os.environ, HOME=str(home))
    with open(home / "client.log", "wb") as log:
        process = subprocess.Popen([str(BUILD / "bin" / "ostra"), "--show"], env=environment,
                                   stdout=log, stderr=log)
    client = harness.Client(process, home / "client.log")
    try:
        client.find("push button", "Night Drive Project", timeout=20).press()
        client.find("push button", "Night Drive")
        time.sleep(1)  # the card opens, the picture is of what it opens to
        x, y, width, height = client.find("frame", "OSTRA").extents
        subprocess.run(["import", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "+repage",
                        str(file)], check=True)
    finally:
        process.terminate()
        process.wait(10)


def main():
    parser = argparse.ArgumentParser(prog="./dev demo")
    parser.add_argument("--picture", metavar="FILE.png", type=pathlib.Path)
    options = parser.parse_args()
    home = pathlib.Path(tempfile.mkdtemp(prefix="ostra-demo-", dir="/tmp"))
    service = Service(home)
    try:
        prepare(service)
        if options.picture:
            options.picture.parent.mkdir(parents=True, exist_ok=True)
            draw(home, options.picture.resolve())
            print(options.picture)
        else:
            subprocess.run([str(BUILD / "bin" / "ostra"), "--show"],
                           env=dict(os.environ, HOME=str(home)), check=False)
    finally:
        service.stop()
        shutil.rmtree(home, ignore_errors=True)


if __name__ == "__main__":
    main()
