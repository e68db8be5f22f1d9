"""The page of one song with the service that comes with the program: every action, and what it has
done to the set on disk and to its history."""

import unittest

import harness
import test_song_page

TAKES = {"first": harness.small_set(120), "idea": harness.small_set(124),
         "second": harness.small_set(128)}


class TestBundledSongPage(test_song_page.SongPageActions, test_song_page.SongPageTest):
    def setUp(self):
        super().setUp()
        self.music = self.home / "Music"
        self.album = str(self.music / "Album")
        self.set = self.music / "Album" / "Demo.als"
        self.music.mkdir()
        self.start_service()
        self.assertEqual(self.ask("watch_path_add", path=str(self.music)), {"type": "ok"})
        self.record("first")
        self.assertEqual(self.song("song_version_create", name="mix-v1"), {"type": "ok"})
        self.assertEqual(self.song("branch_track", name="chorus idea"), {"type": "ok"})
        self.record("idea")
        self.assertEqual(self.song("checkout_track", branch="main"), {"type": "ok"})
        self.record("second")
        self.open_page()

    def song(self, cmd, file="Demo.als", **members):
        return self.ask(cmd, repo="Album", file=file, **members)

    def state(self):
        return next((repo["file_states"][0] for repo in self.ask("status")["repos"]
                     if repo["file_states"]), None)

    def variations(self):
        return [variation["name"] for variation in self.state()["variations"]]

    def versions(self):
        return [tag["name"] for tag in self.song("song_version_list")["tags"]]

    def record(self, take):
        before = [repo["head_commit"] for repo in self.ask("status")["repos"]]
        harness.save(self.set, TAKES[take])
        harness.eventually(lambda: [repo["head_commit"] for repo in self.ask("status")["repos"]]
                           not in ([], before), "the save is recorded")

    def sent(self, cmd, file="Demo.als", **request):
        """By what it has done."""
        effects = {
            "song_rename": lambda: (self.set.with_name(f"{request['to']}.als").read_bytes()
                                    == TAKES["second"] and not self.set.exists()),
            "song_graph": lambda: len(self.song("song_graph", file=file)["nodes"]) == 3,
            "branch_track": lambda: (self.state()["branch"] == request["name"]
                                     and self.set.read_bytes() == TAKES["second"]),
            "variation_rename": lambda: (request["to"] in self.variations()
                                         and request["from"] not in self.variations()),
            "checkout_track": lambda: self.state()["branch"] == request["branch"],
            "variation_delete": lambda: request["name"] not in self.variations(),
            "song_version_create": lambda: request["name"] in self.versions(),
            "song_version_restore": lambda: self.set.read_bytes() == TAKES["first"],
            "song_version_delete": lambda: request["name"] not in self.versions(),
            "song_delete": lambda: (
                not self.set.exists() and self.state() is None and
                (self.home / ".local/share/Trash/files/Demo.als").read_bytes() == TAKES["second"]),
        }
        harness.eventually(effects[cmd], lambda: f"the effect of {cmd}; {self.ask('status')}")

    def test_create_rename_switch_to_and_delete_a_variation(self):
        """A new variation is current at once; the set stays as it is."""
        self.press("New variation")
        self.enter("Variation name", " verse ")
        self.sent("branch_track", name="verse")
        self.client.find("label", "verse")

        self.press("Rename", last=True)
        self.enter("Variation name", "bridge")
        self.sent("variation_rename", **{"from": "verse"}, to="bridge")
        self.client.find("label", "bridge")

        self.press("Switch")
        self.sent("checkout_track", branch="main")
        harness.eventually(lambda: len(self.client.all("push button", "Delete variation")) == 2,
                           "the current variation cannot be deleted")
        self.press("Delete variation", last=True)
        self.client.find("label", "Delete bridge? Unmerged work is lost.")
        self.press("Delete")
        self.sent("variation_delete", name="bridge")
        self.client.gone("label", "bridge")

    def test_switching_rewrites_the_set(self):
        self.press("Switch")
        self.sent("checkout_track", branch="chorus idea")
        self.assertEqual(self.set.read_bytes(), TAKES["idea"])
        harness.eventually(lambda: len(self.client.all("push button", "Switch")) == 1, "reloaded")
        self.press("Switch")
        self.sent("checkout_track", branch="main")
        self.assertEqual(self.set.read_bytes(), TAKES["second"])

    def test_a_refused_name_is_told(self):
        self.press("New variation")
        self.enter("Variation name", "chorus idea")
        self.client.find("label", "New variation error: This song already has a variation "
                                  "“chorus idea”.")


if __name__ == "__main__":
    unittest.main()
