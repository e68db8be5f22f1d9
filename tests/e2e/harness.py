"""Drives the built programs from outside: a display, a session bus, the accessibility bus, a fresh
home, and what assistive technology sees. One test program is one desktop.

    import harness
    class TestSomething(harness.EndToEnd):
        def test_it(self):
            client = self.start_client("--show")
            client.find("push button", "Settings").press()
"""

import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import livesets

BUILD = pathlib.Path(os.environ.get("OSTRA_BUILD", "build")).resolve()
CLIENT = BUILD / "bin" / "ostra"
SERVICE = BUILD / "libexec" / "ostra" / "ostra-daemon"
PICTURES = os.environ.get("OSTRA_PICTURES")

_desktop = None


def eventually(check, what, timeout=10.0):
    """Asks until `check` answers something true; fails with `what` after `timeout` seconds."""
    deadline = time.monotonic() + timeout
    while True:
        answer = check()
        if answer:
            return answer
        if time.monotonic() > deadline:
            raise AssertionError(f"not within {timeout:g} s: {what() if callable(what) else what}")
        time.sleep(0.03)


class Desktop:
    """Xvfb with a window manager, a session bus and the accessibility bus."""

    def __init__(self, size="1280x900x24"):
        self.processes = []
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="ostra-desktop-"))
        os.environ.pop("WAYLAND_DISPLAY", None)
        read, write = os.pipe()
        # Without -noreset the server starts over when its only client goes, and takes down whoever
        # is just connecting: the launcher below comes and goes.
        self._start(["Xvfb", "-displayfd", str(write), "-screen", "0", size, "-nolisten", "tcp",
                     "-noreset"], pass_fds=[write])
        os.close(write)
        # To the end of the line: the server gives up if its number is not read whole.
        with os.fdopen(read) as number:
            os.environ["DISPLAY"] = ":" + number.readline().strip()
        os.environ["XDG_RUNTIME_DIR"] = str(self.folder)
        os.chmod(self.folder, 0o700)
        bus = self._start(["dbus-daemon", "--session", "--nofork", "--print-address"],
                          stdout=subprocess.PIPE)
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().decode().strip()
        launcher = next((path for path in ("/usr/libexec/at-spi-bus-launcher",
                                           "/usr/lib/at-spi2-core/at-spi-bus-launcher")
                         if os.path.exists(path)), None)
        if not launcher:
            raise RuntimeError("at-spi-bus-launcher is missing (package at-spi2-core)")
        self._start([launcher, "--launch-immediately"])
        os.environ["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        os.environ["QT_ACCESSIBILITY"] = "1"
        os.environ["QT_QPA_PLATFORM"] = "xcb"
        os.environ["QT_QUICK_BACKEND"] = "software"
        os.environ["NO_AT_BRIDGE"] = "1"
        self._start(["openbox", "--sm-disable"])
        # A window that comes before its manager is never given the keyboard.
        eventually(lambda: b"window id" in subprocess.run(
            ["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], capture_output=True).stdout,
            "a window manager", timeout=30)

    def _start(self, command, **options):
        options.setdefault("stdout", subprocess.DEVNULL)
        process = subprocess.Popen(command, stderr=subprocess.DEVNULL, start_new_session=True,
                                   **options)
        self.processes.append(process)
        return process

    def picture(self, path):
        """A PNG of the whole screen."""
        pathlib.Path(path).parent.mkdir(parents=True, exist_ok=True)
        subprocess.run(["import", "-window", "root", str(path)], check=True)

    def stop(self):
        for process in reversed(self.processes):
            if process.poll() is None:
                process.terminate()
        for process in self.processes:
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
        shutil.rmtree(self.folder, ignore_errors=True)


def desktop():
    """The desktop of this test program, started on first use."""
    global _desktop
    if _desktop is None:
        _desktop = Desktop()
        import atexit
        atexit.register(_desktop.stop)
    return _desktop


def atspi():
    desktop()
    import gi
    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi
    Atspi.set_timeout(5000, 5000)
    return Atspi


class Node:
    """One accessible object, read afresh at every question."""

    def __init__(self, accessible):
        self.accessible = accessible

    def _fresh(self):
        self.accessible.clear_cache_single() if hasattr(
            self.accessible, "clear_cache_single") else self.accessible.clear_cache()
        return self.accessible

    @property
    def name(self):
        return self._fresh().get_name()

    @property
    def description(self):
        return self._fresh().get_description()

    @property
    def role(self):
        return self._fresh().get_role_name()

    @property
    def extents(self):
        box = self._fresh().get_extents(atspi().CoordType.SCREEN)
        return box.x, box.y, box.width, box.height

    def has_state(self, name):
        """By AT-SPI name: "checked", "expanded", "expandable", "sensitive", "focused"…"""
        states = self._fresh().get_state_set()
        return states.contains(getattr(atspi().StateType, name.upper().replace("-", "_")))

    @property
    def children(self):
        accessible = self._fresh()
        found = (accessible.get_child_at_index(i) for i in range(accessible.get_child_count()))
        return [Node(child) for child in found if child is not None]

    @property
    def text(self):
        text = self._fresh().get_text_iface()
        return text.get_text(0, text.get_character_count()) if text else ""

    @property
    def actions(self):
        action = self._fresh().get_action_iface()
        return [action.get_action_name(i) for i in range(action.get_n_actions())] if action else []

    def press(self):
        self.act("Press")

    def act(self, name):
        action = self._fresh().get_action_iface()
        names = self.actions
        if name not in names:
            raise AssertionError(f"{self!r} does not offer {name!r}, only {names}")
        if not action.do_action(names.index(name)):
            raise AssertionError(f"{self!r} refused {name!r}")

    def focus(self):
        self._fresh().get_component_iface().grab_focus()

    def set_text(self, text):
        if not self._fresh().get_editable_text_iface().set_text_contents(text):
            raise AssertionError(f"{self!r} took no text")

    def walk(self):
        yield self
        for child in self.children:
            yield from child.walk()

    def __repr__(self):
        return f"<{self.role} {self.name!r}>"


class Client:
    """The running client as assistive technology sees it."""

    def __init__(self, process, log):
        self.process = process
        self.log = log

    @property
    def application(self):
        root = atspi().get_desktop(0)
        root.clear_cache()
        for i in range(root.get_child_count()):
            child = root.get_child_at_index(i)
            try:
                if child is not None and child.get_process_id() == self.process.pid:
                    return Node(child)
            except Exception:
                continue  # an application that is just leaving
        return None

    def all(self, role=None, name=None, within=None):
        """Every node of that role and name now; nothing while the tree changes under the reading."""
        try:
            top = within or self.application
            return [node for node in (top.walk() if top else [])
                    if (role is None or node.role == role) and (name is None or node.name == name)]
        except Exception:
            return []

    def find(self, role, name=None, timeout=10.0, within=None):
        """The first node of that role (and name), waited for."""
        return eventually(lambda: self.all(role, name, within)[:1],
                          lambda: f"{role} {name!r}; there is:\n{self.tree()}", timeout)[0]

    def gone(self, role, name=None, timeout=10.0):
        eventually(lambda: self.application is not None and not self.all(role, name),
                   lambda: f"{role} {name!r} still there:\n{self.tree()}", timeout)

    def tree(self):
        lines = []

        def show(node, depth):
            try:
                lines.append(f"{'  ' * depth}{node.role} {node.name!r}"
                             + (f" — {node.description!r}" if node.description else ""))
                for child in node.children:
                    show(child, depth + 1)
            except Exception as error:
                lines.append(f"{'  ' * depth}({error})")

        if self.application:
            show(self.application, 0)
        return "\n".join(lines)

    def type(self, text):
        """Types into whatever has the focus."""
        subprocess.run(["xdotool", "type", "--delay", "12", text], check=True)

    def key(self, *names):
        """X key names: "Return", "Escape", "Tab", "ctrl+comma"."""
        subprocess.run(["xdotool", "key", "--delay", "12", *names], check=True)

    def fill(self, placeholder, *texts):
        """Replaces the text of the field of that name, and of those that Tab goes to next; submits."""
        self.find("text", placeholder)
        for i, text in enumerate(texts):
            self.key(*["Tab"][:i], "ctrl+a")
            self.type(text)
        self.key("Return")

    def output(self):
        return self.log.read_text(errors="replace")

    def stop(self, how=signal.SIGTERM):
        if self.process.poll() is None:
            self.process.send_signal(how)
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            raise AssertionError("the client did not end")


class ScriptedService:
    """A service that answers what a test tells it to, on the real socket. Requests are kept as the
    exact lines that came."""

    def __init__(self, path, **replies):
        self.replies = {"status": {"type": "status", "repos": []},
                        "watch_path_list": {"type": "watch_paths", "paths": []},
                        "launchd_status": {"type": "launchd_info", "installed": False}}
        self.replies.update(replies)
        self.lines = []
        self.connections = []
        path = pathlib.Path(path)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.unlink(missing_ok=True)
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.bind(str(path))
        self.socket.listen()
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        while True:
            try:
                connection, _ = self.socket.accept()
            except OSError:
                return
            self.connections.append(connection)
            threading.Thread(target=self._serve, args=[connection], daemon=True).start()

    def _serve(self, connection):
        with connection.makefile("rb") as lines:
            for line in lines:
                self.lines.append(line.decode().rstrip("\n"))
                request = json.loads(line)
                reply = self.replies.get(request["cmd"], {"type": "ok"})
                if callable(reply):
                    reply = reply(request)
                if reply is not None:
                    self.push(reply, connection)

    def push(self, message, connection=None):
        """Sends a reply or an event, to the newest connection unless told. Bytes go out as they are."""
        line = message if isinstance(message, bytes) else (
            json.dumps(message, ensure_ascii=False).encode() + b"\n")
        try:
            (connection or self.connections[-1]).sendall(line)
        except OSError:
            pass

    def requests(self, cmd):
        return [line for line in list(self.lines) if json.loads(line)["cmd"] == cmd]

    def received(self, line, timeout=10.0):
        eventually(lambda: line in self.lines, lambda: f"{line}; came: {self.lines}", timeout)

    def stop(self):
        self.socket.close()
        for connection in self.connections:
            try:
                connection.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass
            connection.close()


def small_set(tempo=120.0, tracks=("Bass", "Lead")):
    """The bytes of a small but whole set file."""
    return livesets.simple(tempo, tracks).bytes()


def save(path, data):
    """Writes as Live does: a whole new file, moved into place."""
    path = pathlib.Path(path)
    path.parent.mkdir(parents=True, exist_ok=True)
    fresh = path.with_name(path.name + ".tmp")
    fresh.write_bytes(data)
    os.replace(fresh, path)


class EndToEnd(unittest.TestCase):
    """A fresh home for every test; whatever was started is stopped afterwards."""

    def setUp(self):
        desktop()
        # Short: a socket path may have 103 bytes.
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="oh-", dir="/tmp"))
        self.environment = dict(os.environ, HOME=str(self.home), LC_ALL="C.UTF-8",
                                XDG_CONFIG_HOME=str(self.home / ".config"),
                                XDG_DATA_HOME=str(self.home / ".local/share"),
                                XDG_CACHE_HOME=str(self.home / ".cache"))
        self.clients = []
        self.services = []
        self.picture_count = 0

    @property
    def socket_path(self):
        return self.home / ".ostra" / "daemon.sock"

    def start_service(self):
        """The bundled service on this home."""
        with open(self.home / "service.log", "ab") as log:
            process = subprocess.Popen([str(SERVICE)], env=self.environment, stdout=log, stderr=log)
        self.services.append(process)
        eventually(self.socket_path.exists, "the service's socket")
        return process

    def ask(self, cmd, **members):
        """One request to the service on this home, and its reply, on a connection of its own."""
        with socket.socket(socket.AF_UNIX) as connection:
            connection.settimeout(15)
            connection.connect(str(self.socket_path))
            connection.sendall(json.dumps({"cmd": cmd, **members}).encode() + b"\n")
            with connection.makefile("rb") as lines:
                for line in lines:
                    reply = json.loads(line)
                    if "type" in reply:
                        return reply
        raise AssertionError(f"{cmd}: the service closed the connection")

    def scripted_service(self, **replies):
        service = ScriptedService(self.socket_path, **replies)
        self.addCleanup(service.stop)
        return service

    def start_client(self, *arguments, **environment):
        log = self.home / f"client-{len(self.clients)}.log"
        with open(log, "wb") as output:
            process = subprocess.Popen([str(CLIENT), *arguments],
                                       env={**self.environment, **environment},
                                       stdout=output, stderr=subprocess.STDOUT)
        client = Client(process, log)
        self.clients.append(client)
        return client

    def picture(self, name):
        """Keeps what is on the screen, where OSTRA_PICTURES names a folder."""
        if PICTURES:
            time.sleep(0.4)  # animations come to rest
            desktop().picture(pathlib.Path(PICTURES) / f"{name}.png")

    def service_pids(self):
        """Every bundled service that runs on this home."""
        found = []
        for entry in pathlib.Path("/proc").iterdir():
            try:
                if entry.name.isdigit() and os.readlink(entry / "exe") == str(SERVICE):
                    if f"HOME={self.home}\0".encode() in (entry / "environ").read_bytes():
                        found.append(int(entry.name))
            except OSError:
                continue
        return found

    def tearDown(self):
        failed = any(error for _, error in getattr(self._outcome, "errors", []))
        for client in self.clients:
            if failed:
                print(f"--- {client.log.name}\n{client.output()[-4000:]}", file=sys.stderr)
            if client.process.poll() is None:
                client.process.kill()
                client.process.wait()
        for service in self.services:
            if service.poll() is None:
                service.kill()
                service.wait()
        for pid in self.service_pids():
            os.kill(pid, signal.SIGKILL)
        shutil.rmtree(self.home, ignore_errors=True)


if __name__ == "__main__":
    sys.exit("this is a library: run the test_*.py beside it")
