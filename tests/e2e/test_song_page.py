"""The page of one song, from outside: every action, with the exact line that it sends."""

import json
import subprocess
import threading
import unittest

import harness

ALBUM = "/sets/Album"


class Service:
    """What the scripted service knows: one project with one song, which the requests change."""

    def __init__(self):
        self.lock = threading.Lock()
        self.file = "Demo.als"
        self.deleted = False
        self.current = "main"
        self.variations = ["main", "chorus idea"]
        self.versions = ["mix-v1"]

    def status(self, _):
        with self.lock:
            song = {"filename": self.file, "branch": self.current, "is_modified": False,
                    "changed_since_version": False, "last_saved": 1700000000,
                    "variations": [{"name": name, "is_current": name == self.current}
                                   for name in self.variations]}
            if self.versions:
                song["last_version"] = {"name": self.versions[0], "commit": "c0ffee"}
            return {"type": "status", "repos": [{
                "name": "Album", "path": ALBUM, "current_branch": "main", "head_commit": "c0ffee",
                "head_message": "save", "is_dirty": False,
                "file_states": [] if self.deleted else [song]}]}

    def answers(self):
        def versions(_):
            return {"type": "tags", "tags": [{"name": name, "commit": "c0ffee"}
                                             for name in self.versions]}

        def graph(_):
            return {"type": "song_graph", "lanes": ["main"], "current": "main", "nodes": [
                {"id": "c1", "short": "c1", "message": "save", "timestamp": 1700000000,
                 "parents": [], "lane": 0, "variation": "main", "is_merge": False,
                 "is_tip": True}]}

        def save(request):
            self.versions.insert(0, request["name"])
            return {"type": "ok"}

        def forget_version(request):
            self.versions.remove(request["name"])
            return {"type": "ok"}

        def create(request):
            self.variations.append(request["name"])
            return {"type": "ok"}

        def switch(request):
            self.current = request["branch"]
            return {"type": "ok"}

        def rename_variation(request):
            at = self.variations.index(request["from"])
            self.variations[at] = request["to"]
            return {"type": "variation_renamed", "file": self.file, "from": request["from"],
                    "to": request["to"]}

        def delete_variation(request):
            self.variations.remove(request["name"])
            return {"type": "variation_deleted", "file": self.file, "name": request["name"]}

        def rename_song(request):
            old, self.file = self.file, request["to"] + ".als"
            return {"type": "song_renamed", "from": old, "to": self.file}

        def delete_song(_):
            self.deleted = True
            return {"type": "song_deleted", "file": self.file}

        return {"status": self.status, "song_version_list": versions, "song_graph": graph,
                "diff_track": {"type": "diff_result", "summaries": [
                    {"kind": "add", "text": "added track Bass"}]},
                "song_version_create": save, "song_version_delete": forget_version,
                "song_version_restore": lambda request: {
                    "type": "song_version_restored", "file": self.file, "name": request["name"]},
                "branch_track": create, "checkout_track": switch,
                "variation_rename": rename_variation, "variation_delete": delete_variation,
                "song_rename": rename_song, "song_delete": delete_song}


class SongPageTest(harness.EndToEnd):
    """The page of Album/Demo.als: "main" is current, "chorus idea" the other variation, "mix-v1"
    the only version. `sent` says how a request is proved."""

    def open_page(self):
        self.client = self.start_client("--show")
        self.client.find("push button", "Album").press()
        self.client.find("push button", "Demo").press()
        self.client.find("push button", "Rename song")

    def press(self, name, last=False):
        """Presses the first or the last button of that name, once there is one that answers."""
        def attempt():
            found = self.client.all("push button", name)
            try:
                found[-1 if last else 0].press()
            except (IndexError, AssertionError):
                return False  # not there yet, or just leaving
            return True

        harness.eventually(attempt, lambda: f"button {name!r}; there is:\n{self.client.tree()}")

    def enter(self, field, text):
        node = self.client.find("text", field)
        harness.eventually(lambda: node.has_state("focused"), f"{field} takes the keyboard")
        node.set_text(text)
        self.client.key("Return")

    def sent(self, **request):
        raise NotImplementedError


class SongPageActions:
    """What can be done on the page, whatever service answers."""

    album = ALBUM

    def test_rename_the_song_and_stay_on_its_page(self):
        self.press("Rename song")
        self.enter("Song name", "Démo 2")
        self.sent(cmd="song_rename", repo="Album", file="Demo.als", to="Démo 2")
        self.client.find("label", "Démo 2")
        self.client.find("push button", "Rename song")
        self.sent(cmd="song_graph", repo="Album", file="Démo 2.als")
        self.picture("song-renamed")

    def test_create_rename_switch_to_and_delete_a_variation(self):
        self.press("New variation")
        self.enter("Variation name", " verse ")
        self.sent(cmd="branch_track", repo="Album", name="verse", path=self.album, file="Demo.als")
        self.client.find("label", "verse")

        self.press("Rename", last=True)
        self.enter("Variation name", "bridge")
        self.sent(cmd="variation_rename", repo="Album", path=self.album, file="Demo.als",
                  **{"from": "verse"}, to="bridge")
        self.client.find("label", "bridge")

        self.press("Switch", last=True)
        self.sent(cmd="checkout_track", repo="Album", branch="bridge", path=self.album, file="Demo.als")
        harness.eventually(lambda: len(self.client.all("push button", "Delete variation")) == 2,
                           "the current variation cannot be deleted")
        self.picture("song-variations")

        self.press("Delete variation", last=True)
        self.client.find("label", "Delete chorus idea? Unmerged work is lost.")
        self.press("Delete")
        self.sent(cmd="variation_delete", repo="Album", name="chorus idea", path=self.album,
                  file="Demo.als")
        self.client.gone("label", "chorus idea")

    def test_save_restore_and_delete_a_version(self):
        self.press("Save")
        self.enter("Version name", "mix-v2")
        self.sent(cmd="song_version_create", repo="Album", name="mix-v2", path=self.album,
                  file="Demo.als")
        self.client.find("label", "CHANGES · since mix-v2")

        self.press("Restore this version", last=True)
        self.sent(cmd="song_version_restore", repo="Album", name="mix-v1", path=self.album,
                  file="Demo.als")

        self.press("Delete this version", last=True)
        self.client.find("label", "Delete mix-v1? Its saves stay in history.")
        self.picture("song-question")
        self.press("Delete")
        self.sent(cmd="song_version_delete", repo="Album", name="mix-v1", path=self.album,
                  file="Demo.als")
        self.client.gone("label", "mix-v1")

    def test_delete_the_song_and_return_to_the_list(self):
        self.press("Delete")
        self.client.find("label", "Moves Demo to the Trash and removes its history from OSTRA.")
        self.press("Delete")
        self.sent(cmd="song_delete", repo="Album", path=self.album, file="Demo.als")
        self.client.gone("push button", "Rename song")
        self.client.find("push button", "Album")


class TestSongPage(SongPageActions, SongPageTest):
    def setUp(self):
        super().setUp()
        self.service = self.scripted_service(**Service().answers())
        self.open_page()

    def sent(self, **request):
        self.service.received(json.dumps(request, separators=(",", ":"), ensure_ascii=False))

    def test_a_slow_service_leaves_every_control_responsive(self):
        waiting = threading.Event()
        self.addCleanup(waiting.set)

        def slowly(_):
            waiting.wait(20)
            return {"type": "ok"}

        self.service.replies["checkout_track"] = slowly
        self.press("Switch")
        self.press("Save")
        self.client.find("text", "Version name")
        self.press("Cancel")
        self.press("Delete")
        self.client.find("label", "Moves Demo to the Trash and removes its history from OSTRA.")

    def test_the_notice_offers_to_relaunch_a_running_live(self):
        live = self.home / "Ableton Live 12 Suite.exe"
        live.symlink_to("/bin/sleep")
        opened = self.home / "opened"
        tools = self.home / "tools"
        tools.mkdir()
        (tools / "xdg-open").write_text(f'#!/bin/sh\nprintf %s "$1" > "{opened}"\n')
        (tools / "xdg-open").chmod(0o755)
        process = subprocess.Popen([str(live), "600"])
        self.addCleanup(process.kill)
        self.client.stop()
        self.client = self.start_client("--show", PATH=f"{tools}:/usr/bin:/bin")
        self.client.find("push button", "Album").press()
        self.client.find("push button", "Demo").press()
        self.press("Switch")
        self.client.find("label", "Live is still playing Demo.als as it was before the switch — "
                                  "don't save it. Relaunch to load the switched version.")
        self.picture("song-notice")
        self.press("Relaunch")
        harness.eventually(lambda: process.poll() is not None, "Live ends")
        harness.eventually(lambda: opened.exists() and opened.read_text() == f"{ALBUM}/Demo.als",
                           "the set is opened")
        self.client.gone("push button", "Relaunch")


if __name__ == "__main__":
    unittest.main()
