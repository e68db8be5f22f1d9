"""The client's place in a tray: an embedding tray of X11, and a host of status notifiers."""

import os
import shutil
import signal
import subprocess
import unittest

import harness


def windows_of(title):
    """The ids of the visible windows of that title."""
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"],
                           capture_output=True, text=True)
    return found.stdout.split()


class WithATray(harness.EndToEnd):
    def start_tray(self):
        """A panel along the top with an embedding tray, at the right."""
        tray = subprocess.Popen(
            ["trayer", "--edge", "top", "--align", "right", "--widthtype", "pixel", "--width", "120",
             "--heighttype", "pixel", "--height", "28", "--SetPartialStrut", "true"],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(lambda: tray.poll() is None and (tray.kill(), tray.wait()))
        harness.eventually(
            lambda: subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "trayer"],
                                   capture_output=True).stdout, "the tray")
        return tray

    def item(self):
        """The centre of the one icon in the tray, once it is there."""

        def look():
            tree = subprocess.run(["xwininfo", "-root", "-tree"], capture_output=True, text=True)
            inside = False
            for line in tree.stdout.splitlines():
                if '"trayer"' in line or "(\"panel\" \"trayer\")" in line:
                    inside = True
                elif inside and "ostra" in line.lower():
                    geometry, at = line.split()[-2:]
                    width, height = geometry.split("+")[0].split("x")
                    x, y = at.lstrip("+").split("+")
                    if int(width) > 4:
                        return int(x) + int(width) // 2, int(y) + int(height) // 2
            return None

        def settled():
            first = look()
            return first if first and first == look() == look() else None

        return harness.eventually(settled, "an icon in the tray")

    def click(self, at):
        """A click of its own: one that follows another sooner would be a double click."""
        subprocess.run(["xdotool", "sleep", "0.6", "mousemove", str(at[0]), str(at[1]), "click", "1"],
                       check=True)

    def test_with_a_tray_the_window_stays_closed_until_the_item_is_clicked(self):
        self.start_tray()
        self.scripted_service()
        client = self.start_client()
        at = self.item()
        self.assertEqual(windows_of("OSTRA"), [])
        self.click(at)
        client.find("label", "daemon · watching 0 projects")
        x, y, width, height = client.find("frame", "OSTRA").extents
        self.assertGreaterEqual(y, 28)
        self.assertLess(y, 60)
        self.assertLessEqual(x + width, 1280)
        self.assertLess(abs(x + width / 2 - at[0]), 200)
        self.picture("tray-1-open")
        self.click(at)
        harness.eventually(lambda: not windows_of("OSTRA"), "a second click closes the window")
        self.assertIsNone(client.process.poll())

    def test_escape_hides_the_window_and_the_client_lives_on(self):
        self.start_tray()
        self.scripted_service()
        client = self.start_client("--show")
        self.item()
        client.find("label", "daemon · watching 0 projects")
        client.key("Escape")
        harness.eventually(lambda: not windows_of("OSTRA"), "the window hides")
        self.assertIsNone(client.process.poll())
        subprocess.run([str(harness.CLIENT)], env=self.environment, check=True, timeout=20)
        client.find("label", "daemon · watching 0 projects")

    def open_window(self):
        self.start_tray()
        self.scripted_service(status={"type": "status", "repos": [
            {"name": "Demo", "path": "/m/Demo", "current_branch": "main", "head_commit": "a",
             "head_message": "Save", "is_dirty": False}]})
        client = self.start_client()
        self.click(self.item())
        client.find("push button", "Demo")
        harness.eventually(lambda: client.find("frame", "OSTRA").has_state("active"),
                           "the window has the keyboard")
        return client

    def test_a_click_elsewhere_closes_the_window(self):
        self.open_window()
        self.click((200, 700))
        harness.eventually(lambda: not windows_of("OSTRA"), "the window closes")

    def test_a_click_elsewhere_leaves_a_window_with_an_open_field(self):
        client = self.open_window()
        client.find("push button", "Rename project").press()
        client.find("text", "Project name")
        self.click((200, 700))
        harness.eventually(lambda: not client.find("frame", "OSTRA").has_state("active"),
                           "the window loses the keyboard")
        self.assertEqual(len(windows_of("OSTRA")), 1)
        client.find("text", "Project name")

    def test_a_tray_that_appears_late_takes_the_item(self):
        self.scripted_service()
        client = self.start_client()
        client.find("label", "daemon · watching 0 projects")
        self.start_tray()
        self.item()
        client.key("Escape")
        harness.eventually(lambda: not windows_of("OSTRA"), "the window hides")
        self.assertIsNone(client.process.poll())

    def test_a_tray_that_dies_brings_the_window_back(self):
        tray = self.start_tray()
        self.scripted_service()
        client = self.start_client()
        self.item()
        tray.send_signal(signal.SIGKILL)
        tray.wait()
        client.find("label", "daemon · watching 0 projects")
        harness.eventually(lambda: windows_of("OSTRA"), "the window is there")


if __name__ == "__main__":
    if not shutil.which("trayer"):
        raise SystemExit("trayer is needed: ./dev setup")
    unittest.main()
