"""A musician saves a set, the window shows it as changed and keeps it as a named version."""

import os
import signal
import unittest

import harness


class TestASavedSetShowsUp(harness.EndToEnd):
    def setUp(self):
        super().setUp()
        self.music = self.home / "Music"
        self.set = self.music / "Night Drive Project" / "Night Drive.als"
        self.music.mkdir()

    def start(self):
        """The client alone: it finds and starts the bundled service itself."""
        client = self.start_client("--show")
        client.find("label", "daemon · watching 0 projects")
        self.assertEqual(self.ask("watch_path_add", path=str(self.music)), {"type": "ok"})
        return client

    def row(self, client):
        return client.find("push button", "Night Drive")

    def name_version(self, client, name):
        client.find("push button", "Save").press()
        field = client.find("text", "Version name")
        harness.eventually(lambda: field.has_state("focused"), "the field takes the keyboard")
        client.type(name)
        client.key("Return")
        harness.eventually(lambda: name in self.row(client).description,
                           lambda: f"{name} in the info line: {self.row(client).description}")

    def test_it_appears_changes_and_keeps_its_name_over_a_restart(self):
        client = self.start()
        harness.save(self.set, harness.small_set(tempo=120))
        card = client.find("push button", "Night Drive Project", timeout=5)
        self.assertTrue(card.has_state("expandable"))
        card.press()
        harness.eventually(lambda: card.has_state("expanded"), "the card opens")
        self.assertIn("main", self.row(client).description)
        self.picture("saved-set-1-recorded")

        self.name_version(client, "first take")
        client.gone("push button", "Save")
        client.gone("label", "1 changed")

        harness.save(self.set, harness.small_set(tempo=124))
        client.find("label", "1 changed", timeout=5)
        self.picture("saved-set-2-changed")
        self.name_version(client, "faster")
        client.gone("label", "1 changed")
        self.picture("saved-set-3-named")
        shown = self.row(client).description
        self.assertIn("main · faster · saved ", shown)

        client.stop()
        client = self.start_client("--show")
        client.find("push button", "Night Drive Project").press()
        self.assertIn("main · faster · saved ", self.row(client).description)
        client.find("label", "daemon · watching 1 project")

    def test_a_service_that_is_killed_comes_back_and_has_lost_nothing(self):
        client = self.start()
        harness.save(self.set, harness.small_set(tempo=120))
        client.find("push button", "Night Drive Project").press()
        self.name_version(client, "first take")
        [pid] = self.service_pids()
        os.kill(pid, signal.SIGKILL)
        client.find("label", "daemon · offline")
        self.assertIn("first take", self.row(client).description)
        client.find("label", "daemon · watching 1 project", timeout=20)
        self.assertIn("first take", self.row(client).description)
        harness.save(self.set, harness.small_set(tempo=90))
        client.find("label", "1 changed", timeout=5)
        self.assertNotEqual(self.service_pids(), [pid])


if __name__ == "__main__":
    unittest.main()
