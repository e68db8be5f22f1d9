"""The three panels of the song page as assistive technology sees them: graph, diff and merge."""

import json
import unittest

import harness

ALBUM = "/sets/Album"


def node(number, lane=0, parents=(), **more):
    return {"id": f"c{number}", "short": f"c{number}", "message": f"save {number}",
            "timestamp": 1700000000 + number, "parents": [f"c{parent}" for parent in parents],
            "lane": lane, "variation": "idea" if lane else "main", "is_merge": len(parents) > 1,
            "is_tip": False, **more}


GRAPH = {"type": "song_graph", "lanes": ["main", "idea"], "current": "main", "nodes": [
    node(0), node(1, parents=[0], version="v1"), node(2, 1, [1]), node(3, 0, [1, 2], is_tip=True)]}

FEW_CHANGES = [{"kind": "add", "category": "Tracks", "text": "Added track Bass"},
               {"kind": "remove", "category": "Tracks", "text": "Removed track Lead"},
               {"kind": "modify", "text": "Tempo 120 → 124 bpm"}]

MANY_CHANGES = FEW_CHANGES + [{"kind": "add", "category": "Clips", "text": f"Added clip {number}"}
                              for number in range(31)]


def change(id, category, summary, auto, **more):
    return {"id": id, "side": "from", "summary": summary, "category": category,
            "class": "addition", "auto_approved": auto, "forced_pick": False, **more}


def pick(id, key, into, taken):
    return {"key_id": id, "key_summary": key, "into_summary": into, "from_summary": taken}


PLAN = {"type": "merge_plan_result", "clean": False, "fingerprint": "fp", "changes": [
            change("a1", "Clips", "Added clip Intro", True),
            change("r1", "Mixer", "Volume of Bass", False, detail="−3 dB → 0 dB"),
            change("r2", "Mixer", "Volume of Lead", False)],
        "picks": [pick("p1", "Tempo", "120 bpm", "124 bpm"), pick("p2", "Filter", "1 kHz", "2 kHz"),
                  pick("p3", "Filter", "3 kHz", "4 kHz")],
        "fallbacks": [{"key_id": "f1", "region_summary": "Groove pool"}]}

CONFLICTS = {"type": "merge_result", "auto_merged": 2,
             "conflicts": [{"id": "Bass · Filter", "track_id": "Bass"}]}


class TestPanels(harness.EndToEnd):
    def open(self, changes=FEW_CHANGES):
        song = {"filename": "Demo.als", "branch": "main", "is_modified": False,
                "changed_since_version": False,
                "variations": [{"name": name, "is_current": name == "main"}
                               for name in ("main", "idea")]}
        self.service = self.scripted_service(
            status={"type": "status", "repos": [{
                "name": "Album", "path": ALBUM, "current_branch": "main", "head_commit": "c3",
                "head_message": "save", "is_dirty": False, "file_states": [song]}]},
            song_version_list={"type": "tags", "tags": []}, song_graph=GRAPH,
            diff_track={"type": "diff_result", "summaries": changes},
            variation_list={"type": "branches", "branches": [
                {"name": "main", "is_current": True, "head_commit": "c3"},
                {"name": "idea", "is_current": False, "head_commit": "c2"}]},
            merge_plan=PLAN, merge_apply=CONFLICTS,
            resolve={"type": "error", "message": "the set is open elsewhere"})
        self.client = self.start_client("--show")
        self.client.find("push button", "Album").press()
        self.client.find("push button", "Demo").press()

    def sent(self, **request):
        self.service.received(json.dumps(request, separators=(",", ":"), ensure_ascii=False))

    def becomes(self, node, state, value=True):
        harness.eventually(lambda: node.has_state(state) == value,
                           lambda: f"{node!r} {state}: {value}\n{self.client.tree()}")

    def labels(self):
        return [node.name for node in self.client.all("label")]

    def reads(self, *texts):
        """These labels follow one another."""
        def follow():
            labels = self.labels()
            return any(tuple(labels[i:i + len(texts)]) == texts for i in range(len(labels)))
        harness.eventually(follow, lambda: f"{texts}; there is:\n{self.client.tree()}")

    def test_the_graph_is_one_image_with_a_description(self):
        self.open()
        self.client.find("heading", "GRAPH")
        self.client.find("label", "4 saves · 2 variations · 1 merge")
        image = self.client.find("image", "Commit graph. 4 saves · 2 variations · 1 merge. "
                                          "Variations: main, idea, named versions: v1.")
        self.assertEqual(len(self.client.all("image")), 1)
        image.focus()
        self.becomes(image, "focused")

    def test_a_short_diff_is_read_symbol_and_text(self):
        self.open()
        self.reads("CHANGES · latest save", "+", "Added track Bass", "−", "Removed track Lead", "~",
                   "Tempo 120 → 124 bpm")

    def test_a_long_diff_folds_into_groups(self):
        self.open(MANY_CHANGES)
        self.reads("CHANGES · latest save", "· 34 changes")
        clips = self.client.find("push button", "Clips")
        self.assertEqual(clips.description, "31")
        self.assertTrue(clips.has_state("expandable"))
        self.assertFalse(clips.has_state("expanded"))
        self.assertNotIn("Added clip 0", self.labels())
        clips.press()
        self.becomes(clips, "expanded")
        self.reads("+", "Added clip 29", "… and 1 more")
        self.assertNotIn("Added clip 30", self.labels())
        clips.press()
        self.becomes(clips, "expanded", False)
        self.assertEqual(self.client.find("push button", "Other changes").description, "1")

    def review(self):
        self.client.find("push button", "Merge").press()
        self.client.find("label", "MERGE INTO main")
        start = self.client.find("push button", "Review merge")
        self.assertFalse(start.has_state("sensitive"))
        self.client.find("combo box", "from").press()
        self.client.find("list item", "idea", within=self.client.find("list", "from")).press()
        self.becomes(start, "sensitive")
        start.press()
        self.sent(cmd="merge_plan", repo="Album", file="Demo.als", **{"from": "idea"}, into="main")
        self.client.find("heading", "AUTO")

    def test_a_review_is_decided_and_sent(self):
        self.open()
        self.review()
        for section in ("REVIEW", "PICKS", "FALLBACK"):
            self.client.find("heading", section)
        apply = self.client.find("push button", "Apply")
        self.assertFalse(apply.has_state("sensitive"))

        automatic = self.client.find("push button", "Clips")
        self.assertEqual(automatic.description, "1")
        automatic.press()
        self.becomes(automatic, "expanded")
        self.reads("+", "Added clip Intro", "auto")

        self.client.find("push button", "Mixer").press()
        box = self.client.find("check box", "Volume of Bass")
        self.assertEqual(box.description, "−3 dB → 0 dB")
        self.assertFalse(box.has_state("checked"))
        self.client.find("push button", "Tick all").press()
        self.becomes(box, "checked")
        self.becomes(self.client.find("check box", "Volume of Lead"), "checked")
        box.press()
        self.becomes(box, "checked", False)

        # "Tempo", the folded "Filter", and the file.
        keep = self.client.all("radio button", "Keep")
        take = self.client.all("radio button", "Take")
        self.assertEqual((len(keep), len(take)), (2, 2))
        self.assertEqual((keep[0].description, take[0].description), ("120 bpm", "124 bpm"))
        group = self.client.find("push button", "Filter")
        self.assertEqual(group.description, "2")
        each = self.client.find("push button", "Show each one")
        self.assertTrue(each.has_state("expandable"))
        take[0].press()
        self.becomes(take[0], "checked")
        self.assertFalse(apply.has_state("sensitive"))
        keep[1].press()
        self.becomes(apply, "sensitive")
        each.press()
        self.becomes(each, "expanded")
        harness.eventually(lambda: len(self.client.all("radio button", "Keep")) == 3,
                           "each pick by itself")
        self.client.all("radio button", "Take")[2].press()

        warning = "takes the whole file — other changes above won't apply"
        self.assertNotIn(warning, self.labels())
        self.client.find("radio button", "idea").press()
        self.client.find("label", warning)
        self.client.find("radio button", "main").press()
        self.client.gone("label", warning)
        self.picture("panels-review")

        apply.press()
        self.sent(cmd="merge_apply", repo="Album", path=ALBUM, file="Demo.als",
                  **{"from": "idea"}, into="main", approved_ids=["a1", "r2"],
                  picks=[{"key_id": "p1", "side": "from"}, {"key_id": "p2", "side": "into"},
                         {"key_id": "p3", "side": "from"}],
                  fallback_sides=[{"key_id": "f1", "side": "into"}], fingerprint="fp")

    def test_a_conflict_is_resolved_and_the_merge_is_named(self):
        self.open()
        self.service.replies["merge_plan"] = {**PLAN, "clean": True}
        self.client.find("push button", "Merge").press()
        self.client.find("combo box", "from").press()
        self.client.find("list item", "idea", within=self.client.find("list", "from")).press()
        self.client.find("push button", "Review merge").press()
        self.client.find("heading", "CONFLICTS")
        self.reads("Bass · Filter", "tracks: Bass", "keep main · take idea")
        self.client.find("push button", "Take").press()
        self.sent(cmd="resolve", repo="Album", path=ALBUM, conflict_id="Bass · Filter",
                  choice="TakeLeft")
        self.client.find("label", "the set is open elsewhere")
        self.picture("panels-conflict")
        self.service.replies["resolve"] = {"type": "ok"}
        self.client.find("push button", "Keep").press()
        self.sent(cmd="resolve", repo="Album", path=ALBUM, conflict_id="Bass · Filter",
                  choice="TakeRight")
        self.reads("2 file(s) merged", "saved onto main")
        self.client.gone("heading", "CONFLICTS")
        field = self.client.find("text", "Version name")
        field.focus()
        field.set_text(" rough mix ")
        self.client.key("Return")
        self.sent(cmd="song_version_create", repo="Album", name="rough mix", path=ALBUM,
                  file="Demo.als")
        self.client.find("label", "✓ version saved")
        self.client.gone("text", "Version name")


if __name__ == "__main__":
    unittest.main()
