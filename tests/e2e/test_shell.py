"""How the client starts, stays alone, hides and ends."""

import os
import pathlib
import signal
import subprocess
import unittest

import harness


class TestStarting(harness.EndToEnd):
    def run_client(self, *arguments):
        return subprocess.run([str(harness.CLIENT), *arguments], env=self.environment, text=True,
                              capture_output=True, timeout=20)

    def test_version_prints_name_and_version(self):
        ended = self.run_client("--version")
        self.assertEqual(ended.returncode, 0)
        self.assertRegex(ended.stdout, r"^ostra \d+\.\d+\.\d+\n$")

    def test_an_unknown_option_prints_a_usage_line_and_ends_with_2(self):
        ended = self.run_client("--frobnicate")
        self.assertEqual(ended.returncode, 2)
        self.assertIn("Usage: ostra", ended.stderr)
        self.assertEqual(ended.stdout, "")

    def test_without_a_tray_the_window_opens_at_once(self):
        self.scripted_service()
        client = self.start_client()
        client.find("frame", "OSTRA")
        client.find("label", "daemon · watching 0 projects")

    def test_it_runs_without_a_display(self):
        service = self.scripted_service()
        client = self.start_client("--show", QT_QPA_PLATFORM="offscreen")
        service.received('{"cmd":"status"}')
        self.assertEqual(self.run_client().returncode, 0)  # it answers, so its window is made
        self.assertIsNone(client.process.poll())

    def test_a_second_start_shows_the_window_of_the_first_and_ends_with_0(self):
        self.scripted_service()
        client = self.start_client("--show")
        client.find("frame", "OSTRA")
        self.assertEqual(self.run_client().returncode, 0)
        self.assertIsNone(client.process.poll())

    def test_a_client_that_was_killed_does_not_keep_the_next_from_starting(self):
        self.scripted_service()
        client = self.start_client("--show")
        client.find("frame", "OSTRA")
        client.stop(signal.SIGKILL)
        self.start_client("--show").find("frame", "OSTRA")

    def test_closing_the_window_without_a_tray_ends_the_client_and_leaves_the_service(self):
        client = self.start_client("--show")
        client.find("label", "daemon · watching 0 projects")
        client.key("Escape")
        harness.eventually(lambda: client.process.poll() is not None, "the client ends")
        self.assertEqual(client.process.returncode, 0)
        self.assertEqual(len(self.service_pids()), 1)

    def test_quit_stops_the_service_too(self):
        client = self.start_client("--show")
        client.find("label", "daemon · watching 0 projects")
        client.find("push button", "Quit OSTRA").press()
        harness.eventually(lambda: client.process.poll() is not None, "the client ends")
        self.assertEqual(client.process.returncode, 0)
        harness.eventually(lambda: not self.service_pids(), "the service ends")

    def test_quit_asks_any_service_to_shut_down(self):
        service = self.scripted_service()
        client = self.start_client("--show")
        client.find("label", "daemon · watching 0 projects")
        client.key("ctrl+q")
        harness.eventually(lambda: client.process.poll() is not None, "the client ends")
        self.assertEqual(service.requests("shutdown"), ['{"cmd":"shutdown"}'])

    def test_the_keys_of_the_window(self):
        service = self.scripted_service()
        client = self.start_client("--show")
        client.find("label", "daemon · watching 0 projects")
        client.key("ctrl+comma")
        client.find("heading", "WATCH PATHS")
        client.key("Escape")
        client.gone("heading", "WATCH PATHS")
        client.key("ctrl+r")
        service.received('{"cmd":"rescan"}')
        client.key("ctrl+w")
        harness.eventually(lambda: client.process.poll() == 0, "without a tray closing ends it")

    def test_f1_opens_the_guide(self):
        opener = self.home / "bin" / "xdg-open"
        opener.parent.mkdir()
        opener.write_text('#!/bin/sh\necho "$1" > "$HOME/opened"\n')
        opener.chmod(0o755)
        self.scripted_service()
        client = self.start_client("--show", PATH=f"{opener.parent}:{os.environ['PATH']}")
        client.find("label", "daemon · watching 0 projects")
        client.key("F1")
        opened = self.home / "opened"
        harness.eventually(lambda: opened.exists() and opened.read_text(), "the guide")
        page = pathlib.Path(opened.read_text().strip().removeprefix("file://"))
        self.assertEqual(page.resolve(), harness.BUILD / "share/ostra/guide/index.html")
        self.assertIn("guide for musicians", page.read_text())

    def test_the_client_lives_on_when_nobody_reads_its_output_any_more(self):
        read, write = os.pipe()
        os.close(read)
        with os.fdopen(write) as output:
            process = subprocess.Popen([str(harness.CLIENT), "--show"], stdout=output,
                                       env=self.environment)
        client = harness.Client(process, self.home / "client.log")
        self.clients.append(client)
        # The service is only started now: until it listens, what is asked fails, which is printed.
        client.find("label", "daemon · watching 0 projects")
        self.assertIsNone(process.poll())


if __name__ == "__main__":
    unittest.main()
