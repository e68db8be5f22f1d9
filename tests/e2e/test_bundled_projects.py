"""The project list, the strip of album versions and the settings with the service that comes with
the program: nothing is scripted."""

import unittest

import harness


class BundledTest(harness.EndToEnd):
    def setUp(self):
        super().setUp()
        self.music = self.home / "Music"
        self.music.mkdir()
        self.start_service()

    def watch(self):
        self.assertEqual(self.ask("watch_path_add", path=str(self.music)), {"type": "ok"})

    def save(self, song, tempo=120):
        """A recorded save of "Demo/<song>.als"; its bytes."""
        data = harness.small_set(tempo)

        def heads():
            return [repo["head_commit"] for repo in self.ask("status")["repos"]]

        before = heads()
        harness.save(self.music / "Demo" / f"{song}.als", data)
        harness.eventually(lambda: heads() not in ([], before), "the save is recorded")
        return data

    def read(self, song):
        return (self.music / "Demo" / f"{song}.als").read_bytes()

    def open(self):
        client = self.start_client("--show")
        client.find("frame", "OSTRA")
        return client


class TestBundledList(BundledTest):
    def test_a_card_tells_what_the_service_knows(self):
        self.watch()
        self.save("Mix")
        self.save("Intro", 90)
        client = self.open()
        card = client.find("push button", "Demo")
        self.assertRegex(card.description, r"^2 songs · .+ · saved just now$")
        client.find("label", "2 changed")
        card.press()
        self.assertEqual(client.find("push button", "Mix").description, "main · saved just now")

    def test_a_project_is_renamed_from_the_keyboard_and_its_folder_stays(self):
        self.watch()
        self.save("Mix")
        client = self.open()
        client.find("push button", "Rename project").press()
        client.fill("Project name", "Finished")
        client.find("push button", "Finished")
        [repo] = self.ask("status")["repos"]
        self.assertEqual((repo["name"], repo["path"]), ("Finished", str(self.music / "Demo")))

    def test_a_discovered_project_is_adopted(self):
        for song in ("A", "B"):
            harness.save(self.music / "Old" / f"{song}.als", harness.small_set())
        self.assertEqual(self.ask("rescan"), {"type": "ok"})
        client = self.open()
        client.find("label", "UNTRACKED · 2 SETS")
        client.find("push button", "Init repo").press()
        client.find("push button", "Old").press()
        client.find("push button", "A")
        client.gone("heading", "DISCOVERED")
        self.assertTrue((self.music / "Old" / ".ostra" / "history" / "HEAD").exists())

    def test_a_refused_name_is_told_and_changes_nothing(self):
        self.watch()
        self.save("Mix")
        harness.save(self.music / "Other" / "Tune.als", harness.small_set())
        client = self.open()
        client.find("push button", "Other")
        client.find("push button", "Rename project").press()
        client.find("text", "Project name")
        client.key("ctrl+a")
        client.type("Other")
        client.key("Return")
        client.find("label", "ACTION FAILED")
        self.assertEqual(sorted(repo["name"] for repo in self.ask("status")["repos"]),
                         ["Demo", "Other"])


class TestBundledStrip(BundledTest):
    def test_an_album_version_is_named_and_restored_behind_a_snapshot(self):
        self.watch()
        takes = {song: self.save(song, tempo) for song, tempo in (("Mix", 120), ("Intro", 90))}
        for song in takes:  # a changed song would show a button "Save" of its own
            self.assertEqual(self.ask("song_version_create", repo="Demo", file=f"{song}.als",
                                      name="take 1"), {"type": "ok"})
        client = self.open()
        client.find("push button", "Demo").press()
        strip = client.find("push button", "Album versions")
        strip.press()
        client.find("push button", "Save").press()
        client.fill("Version name (e.g. album-mix-v1)", "mix-v2", "softer")
        client.gone("text", "Note (optional)")
        client.find("label", "mix-v2")
        [version] = self.ask("version_list", repo="Demo")["versions"]
        self.assertEqual((version["name"], version["note"]), ("mix-v2", "softer"))

        later = self.save("Mix", 140)
        client.find("push button", "Restore this version").press()
        harness.eventually(lambda: self.read("Mix") == takes["Mix"], "the restored take")
        self.assertEqual(self.read("Intro"), takes["Intro"])
        client.find("push button", "safety snapshots (1)").press()
        snapshot = self.ask("version_list", repo="Demo")["versions"][0]["name"]
        client.find("label", snapshot)
        self.assertEqual(self.ask("version_restore", repo="Demo", name=snapshot), {"type": "ok"})
        self.assertEqual(self.read("Mix"), later)


class TestBundledSettings(BundledTest):
    def test_folders_and_the_login_switch(self):
        client = self.open()
        client.find("push button", "Settings").press()
        client.find("label", "No watch paths configured")
        client.find("push button", "Add Folder").press()
        client.find("text", "Folder")
        client.type("Mus")
        client.find("push button", "~/Music")
        client.type("ic")
        client.key("Return")
        client.find("label", "~/Music")
        self.assertEqual(self.ask("watch_path_list")["paths"], [str(self.music)])
        client.find("push button", "Remove folder").press()
        client.gone("label", "~/Music")
        self.assertEqual(self.ask("watch_path_list")["paths"], [])

        box = client.find("check box", "Start at login")
        self.assertFalse(box.has_state("checked"))
        box.press()
        harness.eventually(lambda: box.has_state("checked"), "checked")
        self.assertTrue(self.ask("launchd_status")["installed"])
        box.press()
        harness.eventually(lambda: not box.has_state("checked"), "not checked")
        self.assertFalse(self.ask("launchd_status")["installed"])


if __name__ == "__main__":
    unittest.main()
