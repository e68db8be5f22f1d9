"""The client's place in a tray: an embedding tray of X11, and a host of status notifiers."""

import json
import pathlib
import shutil
import signal
import subprocess
import sys
import unittest

import harness


def windows_of(title):
    """The ids of the visible windows of that title."""
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"],
                           capture_output=True, text=True)
    return found.stdout.split()


def place_of(title):
    """Where the window of that title is on the glass, in the screen's own pixels: x, y, width and
    height, once it has come to rest."""

    def look():
        shown = windows_of(title)
        told = shown and subprocess.run(["xdotool", "getwindowgeometry", "--shell", shown[0]],
                                        capture_output=True, text=True).stdout
        values = dict(line.split("=") for line in told.split()) if told else {}
        return tuple(int(values[key]) for key in ("X", "Y", "WIDTH", "HEIGHT")) if values else None

    def settled():
        first = look()
        subprocess.run(["xdotool", "sleep", "0.2"])
        return first if first and first == look() else None

    return harness.eventually(settled, f"a window {title}")


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

    def test_asked_for_at_the_start_the_window_comes_once_and_without_a_frame(self):
        self.start_tray()
        self.scripted_service()
        watch = subprocess.Popen(["xev", "-root", "-event", "substructure"], text=True,
                                 stdout=subprocess.PIPE)
        self.addCleanup(watch.kill)
        client = self.start_client("--show")
        client.find("label", "daemon · watching 0 projects")
        x, y, width, height = client.find("frame", "OSTRA").extents
        self.assertGreater(x, 0)
        self.assertGreater(y, 28)
        frame = subprocess.run(["xprop", "-id", windows_of("OSTRA")[-1], "_NET_FRAME_EXTENTS"],
                               capture_output=True, text=True).stdout
        self.assertIn("= 0, 0, 0, 0", frame)
        watch.terminate()
        self.assertEqual(watch.communicate()[0].count("MapNotify"), 1)

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
             "head_message": "Save", "is_dirty": False, "file_states": [
                 {"filename": "Mix.als", "branch": "main", "variations": [
                     {"name": "main", "is_current": True}]}]}]})
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

    def test_the_window_comes_back_with_the_song_page_that_was_open(self):
        client = self.open_window()
        client.find("push button", "Demo").press()
        client.find("push button", "Mix").press()
        client.find("push button", "Back")
        self.click((200, 700))
        harness.eventually(lambda: not windows_of("OSTRA"), "the window closes")
        subprocess.run([str(harness.CLIENT)], env=self.environment, check=True, timeout=20)
        harness.eventually(lambda: windows_of("OSTRA"), "the window opens")
        client.find("push button", "Back")

    def test_at_200_percent_the_window_opens_below_the_item(self):
        self.start_tray()
        self.scripted_service()
        client = self.start_client(QT_SCALE_FACTOR="2")
        at = self.item()
        self.click(at)
        client.find("label", "daemon · watching 0 projects")
        x, y, width, _ = place_of("OSTRA")
        self.assertEqual(width, 720)
        self.assertEqual(x + width, 1280)
        self.assertGreaterEqual(y, 28)
        self.assertLess(y, 60)
        self.picture("tray-200-percent")

    def test_on_a_low_screen_the_list_is_shorter_and_the_footer_stays_in_sight(self):
        tray = self.start_tray()
        self.scripted_service(status={"type": "status", "repos": [
            {"name": f"Project {i}", "path": f"/m/{i}", "current_branch": "main", "head_commit": "a",
             "head_message": "Save", "is_dirty": False, "file_states": []} for i in range(20)]})
        client = self.start_client(QT_SCALE_FACTOR="2")
        self.click(self.item())
        client.find("label", "daemon · watching 20 projects")
        _, y, _, height = place_of("OSTRA")
        self.assertLessEqual(y + height, 900)
        self.assertGreater(height, 800)
        self.picture("tray-200-percent-low")
        tray.kill()
        tray.wait()
        # With a frame of its own there is less room.
        harness.eventually(lambda: place_of("OSTRA")[3] <= 820, lambda: f"{place_of('OSTRA')}")
        self.picture("tray-200-percent-low-framed")

    def test_a_tray_that_appears_late_takes_the_item(self):
        self.scripted_service()
        client = self.start_client()
        client.find("label", "daemon · watching 0 projects")
        self.start_tray()
        self.item()
        client.key("Escape")
        harness.eventually(lambda: not windows_of("OSTRA"), "the window hides")
        self.assertIsNone(client.process.poll())

    def test_the_folder_dialog_belongs_to_the_window_as_it_is_now(self):
        portal = subprocess.Popen(
            [sys.executable, str(pathlib.Path(__file__).with_name("folder_portal.py"))], text=True,
            stdout=subprocess.PIPE)
        self.addCleanup(lambda: (portal.kill(), portal.communicate()))
        portal.stdout.readline()  # it has its name
        self.scripted_service()
        client = self.start_client()
        client.find("push button", "choose folder")
        before = windows_of("OSTRA")
        self.start_tray()
        self.item()  # the window is another kind of window now, and so another one to the desktop
        self.assertNotEqual(windows_of("OSTRA"), before)
        client.find("push button", "choose folder").press()
        parent = portal.stdout.readline().strip()
        self.assertEqual(int(parent.removeprefix("x11:"), 16), int(windows_of("OSTRA")[0]))

    def test_a_tray_that_dies_brings_the_window_back(self):
        tray = self.start_tray()
        self.scripted_service()
        client = self.start_client()
        self.item()
        tray.send_signal(signal.SIGKILL)
        tray.wait()
        client.find("label", "daemon · watching 0 projects")
        harness.eventually(lambda: windows_of("OSTRA"), "the window is there")


class NotifierHost:
    """A panel that shows status notifiers; see notifier_host.py."""

    def __init__(self):
        program = pathlib.Path(__file__).with_name("notifier_host.py")
        self.process = subprocess.Popen([sys.executable, str(program)], text=True,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.process.stdout.readline()  # it has its name

    def ask(self, what, **more):
        self.process.stdin.write(json.dumps({"do": what, **more}) + "\n")
        self.process.stdin.flush()
        return json.loads(self.process.stdout.readline())

    def die(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.communicate()


class WithANotifierHost(harness.EndToEnd):
    def start_host(self):
        host = NotifierHost()
        self.addCleanup(host.die)
        return host

    def start(self, **replies):
        self.service = self.scripted_service(**replies)
        self.host = self.start_host()
        client = self.start_client()
        self.wait_for_the_item()
        return client

    def wait_for_the_item(self):
        harness.eventually(lambda: len(self.host.ask("items")) == 1, "an item")

    def wait_for_the_keyboard(self, client):
        harness.eventually(lambda: client.find("frame", "OSTRA").has_state("active"),
                           "the window has the keyboard")

    def choose(self, label):
        line = next(line for line in self.host.ask("menu") if line["label"] == label)
        self.assertTrue(line["enabled"])
        self.host.ask("choose", number=line["id"])

    def wait_for_tool_tip(self, text):
        harness.eventually(lambda: self.host.ask("properties")["ToolTip"] == text,
                           lambda: f"{text}; there is {self.host.ask('properties')}")

    def test_the_item_names_the_client_and_sends_a_picture(self):
        self.start()
        item = self.host.ask("properties")
        self.assertEqual(item["Title"], "ostra")
        self.assertEqual(item["Status"], "Active")
        self.assertFalse(item["ItemIsMenu"])
        self.assertTrue(item["IconPixmap"])
        for picture in item["IconPixmap"]:
            width, height = picture["size"]
            self.assertEqual(picture["bytes"], width * height * 4)
            self.assertGreater(picture["drawn"], width * height // 20)

    def test_the_tool_tip_says_the_state_in_words(self):
        self.start(status={"type": "status", "repos": [
            {"name": "Demo", "path": "/m/Demo", "current_branch": "main", "head_commit": "a",
             "head_message": "Save", "is_dirty": True}]})
        self.wait_for_tool_tip("OSTRA · watching 1 project · unsaved changes")
        before = self.host.ask("properties")["IconPixmap"]
        self.service.stop()
        self.socket_path.unlink()
        self.wait_for_tool_tip("OSTRA · offline")
        self.assertNotEqual(self.host.ask("properties")["IconPixmap"], before)

    def test_a_click_on_the_item_opens_and_closes_the_window(self):
        client = self.start()
        self.assertEqual(windows_of("OSTRA"), [])
        self.host.ask("activate", at=[640, 10])
        client.find("label", "daemon · watching 0 projects")
        self.host.ask("activate", at=[640, 10])
        harness.eventually(lambda: not windows_of("OSTRA"), "a second click closes the window")
        self.assertIsNone(client.process.poll())

    def test_the_menu_offers_what_there_is_to_do(self):
        self.start()
        self.assertEqual([line["label"] for line in self.host.ask("menu")],
                         ["Open OSTRA", "Keep open", "Retry", "Settings", "Quit OSTRA"])

    def test_the_menu_opens_the_window_and_its_settings(self):
        client = self.start()
        self.choose("Open OSTRA")
        client.find("label", "daemon · watching 0 projects")
        self.choose("Settings")
        client.find("heading", "WATCH PATHS")

    def test_kept_open_the_window_stays_when_the_user_turns_elsewhere(self):
        client = self.start()
        self.choose("Keep open")
        self.open_at(640, 10)
        self.wait_for_the_keyboard(client)
        other = subprocess.Popen(["xev", "-event", "keyboard"], stdout=subprocess.DEVNULL)
        self.addCleanup(lambda: (other.kill(), other.wait()))
        harness.eventually(lambda: not client.find("frame", "OSTRA").has_state("active"),
                           "another window has the keyboard")
        self.assertTrue(windows_of("OSTRA"))
        self.host.ask("activate", at=[640, 10])
        harness.eventually(lambda: not windows_of("OSTRA"), "a click on the item still closes it")

    def test_the_menu_retries_and_quits(self):
        client = self.start()
        connections = len(self.service.connections)
        self.choose("Retry")
        harness.eventually(lambda: len(self.service.connections) > connections, "a new connection")
        self.choose("Quit OSTRA")
        harness.eventually(lambda: client.process.poll() is not None, "the client ends")
        self.assertEqual(self.service.requests("shutdown"), ['{"cmd":"shutdown"}'])

    def open_at(self, x, y):
        """Clicks the item where the host says that it is, which is where the pointer is."""
        subprocess.run(["xdotool", "sleep", "0.8", "mousemove", str(x), str(y)], check=True)
        self.host.ask("activate", at=[x, y])
        return place_of("OSTRA")

    def test_the_window_stays_on_the_monitor_of_the_item(self):
        for name, place, output in (("left", "640/169x900/238+0+0", "screen"),
                                    ("right", "640/169x900/238+640+0", "none")):
            subprocess.run(["xrandr", "--setmonitor", name, place, output], check=True,
                           capture_output=True)
            self.addCleanup(subprocess.run, ["xrandr", "--delmonitor", name])
        self.start()
        x, y, width, height = self.open_at(630, 10)
        self.assertEqual((x + width, y), (640, 15))
        self.picture("monitor-left")
        self.host.ask("activate", at=[630, 10])
        harness.eventually(lambda: not windows_of("OSTRA"), "the window closes")
        x, y, _, _ = self.open_at(650, 890)
        self.assertEqual((x, y + height), (640, 886))
        self.picture("monitor-right")

    def test_at_200_percent_the_window_is_centred_on_the_item_and_stays_on_the_screen(self):
        self.service = self.scripted_service()
        self.host = self.start_host()
        self.start_client(QT_SCALE_FACTOR="2")
        self.wait_for_the_item()
        x, y, width, _ = self.open_at(500, 10)
        self.assertEqual((x, y, width), (140, 20, 720))
        self.host.ask("activate", at=[500, 10])
        harness.eventually(lambda: not windows_of("OSTRA"), "the window closes")
        x, _, _, _ = self.open_at(1270, 10)
        self.assertEqual(x, 560)

    def test_the_docked_window_has_no_place_in_the_task_bar(self):
        self.start()
        self.open_at(640, 10)

        def states():
            return subprocess.run(["xprop", "-id", windows_of("OSTRA")[0], "_NET_WM_STATE"],
                                  capture_output=True, text=True).stdout

        harness.eventually(lambda: "_NET_WM_STATE_SKIP_TASKBAR" in states(), states)
        self.assertIn("_NET_WM_STATE_ABOVE", states())

    def test_a_host_that_dies_brings_the_window_and_a_new_one_takes_the_item_again(self):
        client = self.start()
        self.host.die()
        client.find("label", "daemon · watching 0 projects")
        harness.eventually(lambda: windows_of("OSTRA"), "an ordinary window")
        self.host = self.start_host()
        self.wait_for_the_item()
        self.wait_for_the_keyboard(client)
        client.key("Escape")
        harness.eventually(lambda: not windows_of("OSTRA"), "the window hides")
        self.assertIsNone(client.process.poll())
        self.choose("Open OSTRA")
        client.find("label", "daemon · watching 0 projects")

    def test_a_host_that_hangs_neither_hides_the_window_nor_loses_the_item(self):
        self.scripted_service()
        self.host = self.start_host()
        self.host.process.send_signal(signal.SIGSTOP)
        client = self.start_client()
        client.find("label", "daemon · watching 0 projects")
        self.host.process.send_signal(signal.SIGCONT)
        self.wait_for_the_item()

    def test_a_host_that_appears_late_takes_the_item(self):
        self.scripted_service()
        client = self.start_client()
        client.find("label", "daemon · watching 0 projects")
        self.host = self.start_host()
        self.wait_for_the_item()
        self.wait_for_the_keyboard(client)
        client.key("Escape")
        harness.eventually(lambda: not windows_of("OSTRA"), "the window hides")
        self.assertIsNone(client.process.poll())


if __name__ == "__main__":
    if not shutil.which("trayer"):
        raise SystemExit("trayer is needed: ./dev setup")
    unittest.main()
