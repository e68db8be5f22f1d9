"""The project list, its cards, the strip of album versions and the settings, as assistive technology
sees and drives them."""

import time
import unittest

import harness


def song(filename, changed=False, branch="main", **members):
    return {"filename": filename, "branch": branch, "changed_since_version": changed,
            "variations": [{"name": branch, "is_current": True}], **members}


def repo(name, *songs, **members):
    return {"name": name, "path": f"/sets/{name}", "current_branch": "main", "head_commit": "c0ffee",
            "head_message": "save", "is_dirty": False, "file_states": list(songs), **members}


def status(*repos, discovered=()):
    return {"type": "status", "repos": list(repos), "discovered": list(discovered)}


def version(name, variation="main", created="2025-03-04T10:00:00Z", **members):
    return {"name": name, "created": created,
            "songs": [{"file": "Mix.als", "variation": variation, "commit": "c0ffee"}], **members}


class ProjectsTest(harness.EndToEnd):
    def open(self, **replies):
        self.service = self.scripted_service(**replies)
        client = self.start_client("--show")
        client.find("frame", "OSTRA")
        return client

    def said(self, client, role):
        return [node.name for node in client.all(role)]


class TestList(ProjectsTest):
    def test_without_projects_the_empty_state_is_all_there_is(self):
        client = self.open()
        client.find("label", "daemon · watching 0 projects")
        self.assertEqual(self.said(client, "heading"), ["TRACKED PROJECTS"])
        self.assertEqual(self.said(client, "label"), [
            "OSTRA", "No projects tracked yet",
            "Open an Ableton set in a watched folder and OSTRA starts versioning every save.",
            "daemon · watching 0 projects", client.all("label")[-1].name])
        self.assertEqual(self.said(client, "push button"),
                         ["Relaunch Ableton Live", "Settings", "Quit OSTRA", "choose folder"])
        self.picture("list-empty")

    def test_a_card_says_what_it_is_and_whether_it_is_open(self):
        client = self.open(status=status(
            repo("Demo", song("Mix.als", last_saved=int(time.time()) - 310),
                 song("Intro.als", changed=True), size_bytes=12_300_000)))
        card = client.find("push button", "Demo")
        self.assertEqual(card.description, "2 songs · 12.3 MB · saved 5m ago")
        client.find("label", "1 changed")
        self.assertTrue(card.has_state("expandable"))
        self.assertFalse(card.has_state("expanded"))
        client.gone("push button", "Mix")
        card.press()
        self.assertEqual(client.find("push button", "Mix").description, "main · saved 5m ago")
        harness.eventually(lambda: card.has_state("expanded"), "expanded")
        self.picture("card-expanded")
        card.press()
        client.gone("push button", "Mix")
        self.assertFalse(card.has_state("expanded"))

    def test_a_save_event_brings_the_save_button_and_saving_a_version_takes_it_away(self):
        client = self.open(status=status(repo("Demo", song("Mix.als"))))
        client.find("push button", "Demo").press()
        client.find("push button", "Mix")
        self.service.replies["status"] = status(repo("Demo", song("Mix.als", changed=True)))
        self.service.push({"event": "save_detected", "repo": "Demo", "path": "/sets/Demo",
                           "commit": "c0ffee", "delta_count": 2})
        client.find("push button", "Save").press()
        field = client.find("text", "Version name")
        harness.eventually(lambda: field.has_state("focused"), "the field has the keyboard")
        self.assertFalse(client.find("push button", "Save").has_state("sensitive"))
        client.type("mix-v3")
        harness.eventually(lambda: field.text == "mix-v3", lambda: field.text)
        self.picture("naming-a-version")
        self.service.replies["status"] = status(repo("Demo", song("Mix.als")))
        client.key("Return")
        self.service.received('{"cmd":"song_version_create","repo":"Demo","name":"mix-v3",'
                              '"path":"/sets/Demo","file":"Mix.als"}')
        client.gone("text", "Version name")
        client.gone("push button", "Save")

    def test_a_project_is_renamed_from_the_keyboard(self):
        client = self.open(status=status(repo("Demo")),
                           project_rename={"type": "project_renamed", "name": "Finished"})
        client.find("push button", "Rename project").press()
        field = client.find("text", "Project name")
        self.assertEqual(field.text, "Demo")
        client.key("Escape")
        client.gone("text", "Project name")
        client.find("push button", "Rename project").press()
        self.service.replies["status"] = status({**repo("Finished"), "path": "/sets/Demo"})
        client.fill("Project name", "Finished")
        self.service.received('{"cmd":"project_rename","repo":"Demo","to":"Finished"}')
        client.find("push button", "Finished")

    def test_a_discovered_project_is_adopted(self):
        client = self.open(status=status(discovered=[
            {"path": "/found/Old", "name": "Old", "als_files": ["a.als", "b.als", "c.als"]}]))
        client.find("heading", "DISCOVERED")
        client.find("label", "UNTRACKED · 3 SETS")
        self.service.replies["status"] = status(repo("Old"))
        client.find("push button", "Init repo").press()
        self.service.received('{"cmd":"init","path":"/found/Old"}')
        client.find("push button", "Old")
        client.gone("heading", "DISCOVERED")

    def test_a_failed_action_is_told_and_dismissed(self):
        client = self.open(rescan={"type": "error", "message": "the disk is full"})
        client.find("label", "daemon · watching 0 projects")
        client.key("ctrl+r")
        client.find("label", "Rescan error: the disk is full")
        client.find("label", "ACTION FAILED")
        self.picture("action-failed")
        client.find("push button", "Dismiss").press()
        client.gone("label", "ACTION FAILED")

    def test_relaunching_live_is_asked_first(self):
        client = self.open()
        client.find("push button", "Relaunch Ableton Live").press()
        client.find("label", "Ableton will be relaunched")
        client.find("push button", "Relaunch now")
        client.find("push button", "Keep Ableton as it is").press()
        client.gone("label", "Ableton will be relaunched")

    def test_many_projects_scroll_with_the_keyboard(self):
        client = self.open(status=status(*[repo(f"Project {n}") for n in range(300)]))
        client.find("push button", "Project 0")
        self.assertLess(len(client.all("push button", "Rename project")), 40)
        client.find("push button", "Quit OSTRA").focus()
        client.key(*["Tab"] * 40)
        focused = harness.eventually(
            lambda: [node for node in client.all("push button") if node.has_state("focused")],
            client.tree)[0]
        self.assertEqual(focused.name, "Rename project")
        card = harness.eventually(lambda: client.all("push button", "Project 19")[:1], client.tree)[0]
        frame = client.find("frame", "OSTRA").extents
        top = card.extents[1]
        self.assertTrue(frame[1] < top < frame[1] + frame[3], (frame, top))


class TestStrip(ProjectsTest):
    def open_strip(self, *versions):
        client = self.open(status=status(repo("Demo", song("Mix.als"))),
                           version_list={"type": "versions", "versions": list(versions)})
        client.find("push button", "Demo").press()
        strip = client.find("push button", "Album versions")
        return client, strip

    def test_the_strip_tells_the_current_version_and_opens(self):
        client, strip = self.open_strip(version("mix-v1", "song/Mix.als/main"),
                                        version("auto/1"), version("auto/2"))
        harness.eventually(lambda: strip.description == "current · mix-v1",
                           lambda: strip.description)
        strip.press()
        client.find("label", "CURRENT")
        client.find("label", "Mar 4, 2025")
        client.gone("label", "auto/1")
        disclosure = client.find("push button", "safety snapshots (2)")
        self.assertFalse(disclosure.has_state("expanded"))
        disclosure.press()
        client.find("label", "auto/1")
        harness.eventually(lambda: disclosure.has_state("expanded"), "expanded")
        self.picture("strip-open")

    def test_an_album_version_is_named_with_a_note(self):
        client, strip = self.open_strip()
        strip.press()
        client.find("push button", "Save").press()
        client.fill("Version name (e.g. album-mix-v1)", "mix-v2", "softer")
        self.service.received('{"cmd":"version_create","repo":"Demo","name":"mix-v2",'
                              '"path":"/sets/Demo","note":"softer"}')
        client.gone("text", "Note (optional)")

    def test_an_album_version_is_restored(self):
        client, strip = self.open_strip(version("mix-v1"))
        strip.press()
        client.find("push button", "Restore this version").press()
        self.service.received('{"cmd":"version_restore","repo":"Demo","name":"mix-v1",'
                              '"path":"/sets/Demo"}')


class TestSettings(ProjectsTest):
    def open_settings(self, **replies):
        client = self.open(**replies)
        client.find("push button", "Settings").press()
        client.find("heading", "WATCH PATHS")
        return client

    def test_folders_are_listed_and_removed(self):
        client = self.open_settings(watch_path_list={
            "type": "watch_paths", "paths": [str(self.home / "Music"), "/media/disk"]})
        client.find("label", "~/Music")
        client.find("label", "/media/disk")
        client.gone("heading", "TRACKED PROJECTS")
        self.picture("settings")
        self.service.replies["watch_path_list"] = {"type": "watch_paths", "paths": ["/media/disk"]}
        client.find("push button", "Remove folder").press()
        self.service.received('{"cmd":"watch_path_remove","path":"%s"}' % (self.home / "Music"))
        client.gone("label", "~/Music")

    def test_without_a_portal_a_folder_is_typed(self):
        (self.home / "Music").mkdir()
        client = self.open_settings()
        client.find("label", "No watch paths configured")
        client.find("push button", "Add Folder").press()
        client.find("text", "Folder")
        client.type("Mus")
        client.find("push button", "~/Music")
        client.type("ic")
        client.key("Return")
        self.service.received('{"cmd":"watch_path_add","path":"%s"}' % (self.home / "Music"))
        client.gone("text", "Folder")

    def test_the_switch_shows_what_the_service_says(self):
        client = self.open_settings()
        box = client.find("check box", "Start at login")
        self.assertEqual(box.description, "Auto-start the daemon when you log in")
        self.assertFalse(box.has_state("checked"))
        self.service.replies["launchd_status"] = {"type": "launchd_info", "installed": True}
        box.press()
        self.service.received('{"cmd":"launchd_install"}')
        harness.eventually(lambda: box.has_state("checked"), "checked")


if __name__ == "__main__":
    unittest.main()
