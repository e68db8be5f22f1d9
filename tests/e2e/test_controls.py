"""What assistive technology and the keyboard meet in every control, on the gallery of them all."""

import subprocess
import unittest

import harness
from harness import eventually

GALLERY = harness.BUILD / "bin" / "ostra-gallery"

# In the order of the page, which is the order of reading and of Tab.
REACHED_BY_TAB = [
    "Save", "Hovered", "Focused", "Save", "Hovered", "Focused", "Save", "Hovered", "Focused",
    "Rename", "Switch", "Relaunch Ableton Live", "Settings", "Quit OSTRA", "Back", "Relaunch now",
    "Keep Ableton as it is", "New variation", "Restore this version", "Remove folder",
    "Rename project", "Version name", "Song name", "nothing",
    "Bass: volume 0.0 dB → −3.0 dB", "Lead: reverb removed", "Drums: new clip at bar 17", "Keep",
    "Take", "Start at login", "from", "Night Drive", "Hovered row"] + [f"scrolled {i}" for i in range(8)]


class TestControls(harness.EndToEnd):
    def setUp(self):
        super().setUp()
        log = self.home / "gallery.log"
        with open(log, "wb") as output:
            process = subprocess.Popen([str(GALLERY)], env=self.environment, stdout=output,
                                       stderr=subprocess.STDOUT)
        self.gallery = harness.Client(process, log)
        self.clients.append(self.gallery)
        window = self.gallery.find("frame", "OSTRA gallery")
        eventually(lambda: window.has_state("active"), "the window takes the keyboard")

    def logged(self, text):
        self.gallery.find("label", text)

    def focused(self):
        return next((node for node in self.gallery.all() if node.has_state("focused")
                     and node.role != "frame"), None)

    def opened_menu(self):
        self.gallery.find("combo box", "from").press()
        return self.gallery.find("list", "from")

    def test_every_control_has_its_role_name_and_description(self):
        for role, name, description in [
                ("heading", "TEXT BUTTONS", ""),
                ("push button", "Save", ""),
                ("push button", "Rename", ""),
                ("push button", "Relaunch Ableton Live", ""),
                ("push button", "Night Drive", "3 songs · 12.3 MB · saved 5m ago"),
                ("text", "Version name", ""),
                ("combo box", "from", "chorus-alt"),
                ("check box", "Bass: volume 0.0 dB → −3.0 dB", "Mixer · Track 3"),
                ("radio button", "Keep", "tempo 120.00"),
                ("check box", "Start at login", "Auto-start the daemon when you log in"),
                ("image", "connected", ""),
                ("label", "12 saves · 3 variations", "")]:
            with self.subTest(name):
                self.assertEqual(self.gallery.find(role, name).description, description)

    def test_a_text_that_is_cut_short_is_read_whole(self):
        self.gallery.find("check box",
                          "A very long summary of a change that does not fit on the line at all")

    def test_texts_of_a_control_are_not_repeated_as_labels(self):
        for text in ["Save", "Night Drive", "3 songs · 12.3 MB · saved 5m ago", "Keep",
                     "tempo 120.00", "Start at login", "scrolled 0"]:
            self.assertEqual(self.gallery.all("label", text), [], text)
        row = self.gallery.find("push button", "Night Drive")
        self.assertEqual([node.name for node in row.children], ["2 changed"])

    def test_decoration_is_not_read(self):
        self.assertEqual([node.name for node in self.gallery.all("image")], ["connected"])
        known = {"application", "frame", "heading", "label", "push button", "text", "combo box",
                 "check box", "radio button", "image"}
        self.assertEqual({node.role for node in self.gallery.all()} - known, set())

    def test_disabled_controls_are_neither_enabled_nor_sensitive_and_offer_nothing(self):
        for role, name in [("push button", "Disabled"), ("push button", "Tick all"),
                           ("text", "Project name"), ("combo box", "disabled"),
                           ("check box", "Off and disabled")]:
            for node in self.gallery.all(role, name):
                with self.subTest(name):
                    self.assertFalse(node.has_state("enabled"))
                    self.assertFalse(node.has_state("sensitive"))
                    self.assertFalse(node.has_state("focusable"))
                    self.assertEqual(node.actions, [])
        for node in self.gallery.all("push button", "Save"):
            self.assertTrue(node.has_state("enabled"))
            self.assertTrue(node.has_state("sensitive"))

    def test_every_enabled_control_answers_press(self):
        for name in set(REACHED_BY_TAB):
            for node in self.gallery.all(name=name):
                self.assertEqual(node.actions[0], "Press", name)

    def test_press_on_a_button_is_a_click(self):
        self.gallery.find("push button", "Settings").press()
        self.logged("settings")
        self.gallery.find("push button", "Save").press()
        self.logged("save 0")

    def test_press_on_boxes_options_and_switches_changes_their_checked_state(self):
        for role, name in [("check box", "Bass: volume 0.0 dB → −3.0 dB"),
                           ("check box", "Start at login")]:
            node = self.gallery.find(role, name)
            self.assertTrue(node.has_state("checked"))
            node.press()
            eventually(lambda: not node.has_state("checked"), f"{name} unchecked")
            node.press()
            eventually(lambda: node.has_state("checked"), f"{name} checked again")
        keep, take = (self.gallery.find("radio button", name) for name in ["Keep", "Take"])
        take.press()
        eventually(lambda: take.has_state("checked"), "the other option")
        self.assertFalse(keep.has_state("checked"))

    def test_a_row_that_opens_says_whether_it_is_open(self):
        row = self.gallery.find("push button", "Night Drive")
        self.assertTrue(row.has_state("expandable"))
        self.assertFalse(row.has_state("expanded"))
        self.assertEqual(self.gallery.all("label", "what the fold hides"), [])
        row.press()
        self.gallery.find("label", "what the fold hides")
        self.assertTrue(row.has_state("expanded"))
        row.press()
        self.gallery.gone("label", "what the fold hides")
        self.assertFalse(self.gallery.find("push button", "Settings").has_state("expandable"))

    def test_the_options_of_a_menu_belong_to_it_and_answer_press(self):
        picker = self.gallery.find("combo box", "from")
        self.assertTrue(picker.has_state("expandable"))
        self.assertEqual(self.gallery.all("list item"), [])
        self.opened_menu()
        self.assertTrue(picker.has_state("expanded"))
        options = self.gallery.all("list item", within=picker)
        self.assertEqual([option.name for option in options],
                         ["main", "chorus-alt", "a variation with a long name"])
        self.assertEqual([option.has_state("selected") for option in options],
                         [False, True, False])
        options[0].press()
        eventually(lambda: picker.description == "main", "the choice")
        self.gallery.gone("list item")
        self.assertFalse(picker.has_state("expanded"))

    def test_a_menu_is_driven_by_the_keyboard(self):
        picker = self.gallery.find("combo box", "from")
        picker.focus()
        self.gallery.key("space")
        self.gallery.find("list", "from")
        eventually(lambda: getattr(self.focused(), "name", "") == "chorus-alt", "the current option")
        self.gallery.key("Down", "Return")
        eventually(lambda: picker.description == "a variation with a long name", "the choice")
        self.gallery.gone("list item")
        eventually(lambda: picker.has_state("focused"), "the keyboard back on the menu")
        self.gallery.key("Return")
        self.gallery.find("list", "from")
        self.gallery.key("Escape")
        self.gallery.gone("list item")
        self.assertEqual(picker.description, "a variation with a long name")

    def test_a_field_takes_text_submits_with_return_and_cancels_with_escape(self):
        field = self.gallery.find("text", "Version name")
        self.assertTrue(field.has_state("editable"))
        field.press()
        eventually(lambda: field.has_state("focused"), "the keyboard in the field")
        self.gallery.type("mix 1")
        eventually(lambda: field.text == "mix 1", "the typed text")
        self.gallery.key("Return")
        self.logged("submitted mix 1")
        field.set_text("Größe")
        eventually(lambda: field.text == "Größe", "the given text")
        self.gallery.key("Escape")
        self.logged("cancelled")

    def test_space_and_return_press_the_focused_control(self):
        self.gallery.find("push button", "Settings").focus()
        self.gallery.key("space")
        self.logged("settings")
        self.gallery.find("push button", "Save").focus()
        self.gallery.key("Return")
        self.logged("save 0")

    def test_tab_walks_the_controls_in_reading_order_and_passes_over_disabled_ones(self):
        self.gallery.find("push button", REACHED_BY_TAB[0]).focus()
        walked = []
        for expected in REACHED_BY_TAB:
            eventually(lambda: getattr(self.focused(), "name", None) == expected,
                       lambda: f"{expected!r} after {walked}, not {self.focused()!r}")
            walked.append(expected)
            self.gallery.key("Tab")

    def test_rows_out_of_sight_keep_their_place_and_are_brought_into_view_by_the_keyboard(self):
        first, last = (self.gallery.find("push button", f"scrolled {i}") for i in [0, 7])
        x, y, width, height = first.extents
        self.assertEqual(last.extents, (x, y + 7 * height, width, height))
        last.focus()
        eventually(lambda: last.extents[1] < y + 96, "the row in view")

    def test_a_banner_is_announced_once(self):
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi, GLib
        heard = []
        listener = Atspi.EventListener.new(lambda event: heard.append(
            (event.source.get_role_name(), event.source.get_name(), event.detail1)))
        listener.register("object:state-changed:showing")
        self.addCleanup(listener.deregister, "object:state-changed:showing")
        self.assertEqual(self.gallery.all("alert"), [])
        self.gallery.find("radio button", "Take").press()
        self.gallery.find("alert", "A banner")
        # What the client said before this answer has been heard when it comes.
        self.gallery.find("radio button", "Keep").press()
        self.gallery.gone("alert", "A banner")
        context = GLib.MainContext.default()
        eventually(lambda: (context.iteration(False), heard)[1], "an announcement")
        while context.pending():
            context.iteration(False)
        self.assertEqual([entry for entry in heard if entry[0] == "alert" and entry[2] == 1],
                         [("alert", "A banner", 1)])


if __name__ == "__main__":
    unittest.main()
