"""Two variations of one real set, edited apart, are reviewed in the merge panel and become one."""

import gzip
import pathlib
import re
import unittest

import harness

DATA = pathlib.Path(__file__).resolve().parent.parent / "sets" / "data"


def real(name):
    return gzip.decompress((DATA / f"{name}.als").read_bytes()).decode()


def as_file(text):
    return gzip.compress(text.encode(), 6, mtime=0)


def without_first_clip(text):
    begin = text.index('<MidiClip Id="0" Time="0">')
    end = text.index("</Value>", text.index("</MidiClip>", begin)) + len("</Value>")
    return text[:text.rindex("<Value>", 0, begin)] + "<Value />" + text[end:]


def track(text, number):
    return re.search(rf'<MidiTrack Id="{number}".*?</MidiTrack>', text, re.S).group()


class TestMerge(harness.EndToEnd):
    def setUp(self):
        super().setUp()
        self.music = self.home / "Music"
        self.set = self.music / "Night Drive Project" / "Night Drive.als"
        self.music.mkdir()
        self.base = real("test-5")
        # One variation: another tempo, and the track that the musician added next.
        self.idea = (real("test-6").replace('<Manual Value="60" />', '<Manual Value="74" />')
                     .replace('Time="-63072000" Value="60"', 'Time="-63072000" Value="74"'))
        # The other: a fader down, and one clip less.
        self.main = without_first_clip(
            self.base.replace('<Manual Value="1.41253746" />', '<Manual Value="0.5" />'))

    def state(self):
        [repo] = self.ask("status")["repos"]
        return repo

    def record(self, text):
        before = self.state()["head_commit"] if self.ask("status")["repos"] else ""
        harness.save(self.set, as_file(text))
        harness.eventually(lambda: self.ask("status")["repos"]
                           and self.state()["head_commit"] not in ("", before),
                           "the save is recorded")

    def song(self, cmd, **members):
        return self.ask(cmd, repo="Night Drive Project", file="Night Drive.als", **members)

    def make_variations(self):
        self.start_service()
        self.assertEqual(self.ask("watch_path_add", path=str(self.music)), {"type": "ok"})
        self.record(self.base)
        self.assertEqual(self.song("branch_track", name="idea"), {"type": "ok"})
        self.record(self.idea)
        self.assertEqual(self.song("checkout_track", branch="main"), {"type": "ok"})
        self.record(self.main)

    def test_two_variations_are_reviewed_and_become_one(self):
        self.make_variations()
        client = self.start_client("--show")
        client.find("push button", "Night Drive Project").press()
        client.find("push button", "Night Drive").press()
        client.find("push button", "Merge").press()
        client.find("combo box", "from").press()
        client.find("list item", "idea", within=client.find("list", "from")).press()
        client.find("push button", "Review merge").press()

        client.find("heading", "AUTO")
        client.find("heading", "REVIEW")
        client.find("push button", "Tracks").press()
        client.find("label", "Added MIDI track “4-LLM-r”")
        client.find("push button", "Tempo & signature").press()
        tempo = client.find("check box", "Tempo 60 → 74 bpm")
        self.assertFalse(tempo.has_state("checked"))
        tempo.press()
        harness.eventually(lambda: tempo.has_state("checked"), "the tempo is ticked")
        self.picture("merge-review")
        before = self.set.read_bytes()
        client.find("push button", "Apply").press()
        client.find("label", "saved onto main")
        self.picture("merge-summary")

        self.assertNotEqual(self.set.read_bytes(), before)
        self.check_merged(gzip.decompress(self.set.read_bytes()).decode())
        nodes = self.song("song_graph")["nodes"]
        self.assertTrue(nodes[-1]["is_merge"])
        self.assertEqual(len(nodes[-1]["parents"]), 2)

    def check_merged(self, merged):
        # The tempo, in both places.
        self.assertIn('<Manual Value="74" />', merged)
        self.assertIn('Time="-63072000" Value="74"', merged)
        # The other side's fader and its missing clip stay.
        self.assertIn('<Manual Value="0.5" />', merged)
        self.assertNotIn('<Manual Value="1.41253746" />', merged)
        self.assertEqual(merged.count("<MidiClip "), self.main.count("<MidiClip ")
                         + self.idea.count("<MidiClip ") - self.base.count("<MidiClip "))
        # The new track came whole, its parameters under numbers of their own.
        names = re.findall(r'<MidiTrack Id="(\d+)".*?<EffectiveName Value="([^"]*)"', merged, re.S)
        self.assertEqual([name for _, name in names][-1], "4-LLM-r")
        added = track(merged, names[-1][0])
        self.assertEqual(added.count("<AutomationTarget "),
                         track(self.idea, names[-1][0]).count("<AutomationTarget "))
        numbers = re.findall(r'<(?:\w*Target|Pointee|ControllerTargets\.\d+) Id="(\d+)"', merged)
        self.assertEqual(len(numbers), len(set(numbers)))
        counter = int(re.search(r'<NextPointeeId Value="(\d+)"', merged).group(1))
        self.assertLess(max(map(int, numbers)), counter)
        # What nobody edited is untouched.
        self.assertEqual(track(merged, 13), track(self.main, 13))


if __name__ == "__main__":
    unittest.main()
