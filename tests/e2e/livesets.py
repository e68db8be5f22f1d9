"""Small sets for demonstrations and end-to-end tests: the parts of a Live set that music is made
of, in the order and with the names that Live writes, zipped as Live zips."""

import copy
import dataclasses
import struct
import zlib


@dataclasses.dataclass
class Clip:
    name: str
    bar: int  # the first bar is 1
    bars: int = 4
    notes: tuple = ()  # (beat, key) pairs

    def xml(self, number):
        start, end = (self.bar - 1) * 4, (self.bar - 1 + self.bars) * 4
        by_key = {}
        for index, (beat, key) in enumerate(self.notes):
            by_key.setdefault(key, []).append((beat, index + 1))
        keys = "".join(
            f'<KeyTrack Id="{i}"><Notes>' + "".join(
                f'<MidiNoteEvent Time="{beat:g}" Duration="0.5" Velocity="100" OffVelocity="64" '
                f'NoteId="{note}" />' for beat, note in notes) +
            f'</Notes><MidiKey Value="{key}" /></KeyTrack>'
            for i, (key, notes) in enumerate(sorted(by_key.items())))
        return (f'<MidiClip Id="{number}" Time="{start}"><LomId Value="0" />'
                f'<CurrentStart Value="{start}" /><CurrentEnd Value="{end}" />'
                f'<Loop><LoopStart Value="0" /><LoopEnd Value="{end - start}" />'
                f'<StartRelative Value="0" /><LoopOn Value="true" />'
                f'<OutMarker Value="{end - start}" /></Loop><Name Value="{self.name}" />'
                f'<Color Value="4" /><Disabled Value="false" />'
                f'<Notes><KeyTracks>{keys}</KeyTracks></Notes></MidiClip>')


@dataclasses.dataclass
class Track:
    name: str
    identity: int
    volume: float = 1.0
    pan: float = 0.0
    muted: bool = False
    colour: int = 10
    clips: list = dataclasses.field(default_factory=list)

    def xml(self, pointee):
        clips = "".join(clip.xml(i) for i, clip in enumerate(self.clips))

        def parameter(tag, value, offset):
            return (f'<{tag}><LomId Value="0" /><Manual Value="{value}" />'
                    f'<AutomationTarget Id="{pointee + offset}"><LockEnvelope Value="0" />'
                    f'</AutomationTarget></{tag}>')

        mixer = ('<Mixer>' + parameter("Speaker", "false" if self.muted else "true", 1) +
                 parameter("Pan", f"{self.pan:g}", 2) + parameter("Volume", f"{self.volume:g}", 3) +
                 '</Mixer>')
        return (f'<MidiTrack Id="{self.identity}"><LomId Value="0" />'
                f'<Name><EffectiveName Value="{self.name}" /><UserName Value="{self.name}" />'
                f'<Annotation Value="" /></Name><Color Value="{self.colour}" />'
                f'<AutomationEnvelopes><Envelopes /></AutomationEnvelopes>'
                f'<TrackGroupId Value="-1" /><DeviceChain>{mixer}'
                f'<MainSequencer><ClipSlotList /><ClipTimeable><ArrangerAutomation><Events>{clips}'
                f'</Events></ArrangerAutomation></ClipTimeable></MainSequencer>'
                f'<DeviceChain><Devices /></DeviceChain></DeviceChain></MidiTrack>')


@dataclasses.dataclass
class LiveSet:
    tempo: float = 120.0
    tracks: list = dataclasses.field(default_factory=list)
    locators: list = dataclasses.field(default_factory=list)  # (bar, name)

    def but(self, change):
        """A copy with `change` made to it."""
        other = copy.deepcopy(self)
        change(other)
        return other

    def track(self, name):
        return next(track for track in self.tracks if track.name == name)

    def add(self, name, *clips, **settings):
        identity = max([7] + [track.identity for track in self.tracks]) + 1
        self.tracks.append(Track(name, identity, clips=list(clips), **settings))
        return self

    def xml(self):
        tracks = "".join(track.xml(1000 + 10 * i) for i, track in enumerate(self.tracks))
        locators = "".join(
            f'<Locator Id="{i}"><LomId Value="0" /><Time Value="{(bar - 1) * 4}" />'
            f'<Name Value="{name}" /><Annotation Value="" /></Locator>'
            for i, (bar, name) in enumerate(self.locators))
        text = ('<?xml version="1.0" encoding="UTF-8"?>\n'
                '<Ableton MajorVersion="5" MinorVersion="12.0_12049" SchemaChangeCount="12" '
                'Creator="Ableton Live 12.0.5" Revision="">'
                '<LiveSet><NextPointeeId Value="30000" />'
                f'<Tracks>{tracks}</Tracks>'
                '<MainTrack><Name><EffectiveName Value="Main" /></Name>'
                '<AutomationEnvelopes><Envelopes /></AutomationEnvelopes><DeviceChain><Mixer>'
                '<Tempo><LomId Value="0" />'
                f'<Manual Value="{self.tempo:g}" /><AutomationTarget Id="8" /></Tempo>'
                '<TimeSignature><LomId Value="0" /><Manual Value="201" />'
                '<AutomationTarget Id="10" /></TimeSignature>'
                '</Mixer></DeviceChain></MainTrack>'
                f'<Locators><Locators>{locators}</Locators></Locators>'
                '<Scenes /></LiveSet></Ableton>')
        # One element a line, as Live writes it.
        return text.replace("><", ">\n<") + "\n"

    def bytes(self):
        """The file as Live would save it."""
        data = self.xml().encode()
        deflate = zlib.compressobj(6, zlib.DEFLATED, -15, 9)
        return (b"\x1f\x8b\x08\x00\x00\x00\x00\x00\x00\x0b" + deflate.compress(data) +
                deflate.flush() + struct.pack("<II", zlib.crc32(data), len(data) & 0xFFFFFFFF))


def beat(bars=4, keys=(36, 38)):
    """A plain pattern: the first key on every beat, the second on two and four."""
    return tuple((step, keys[0]) for step in range(bars * 4)) + tuple(
        (step, keys[-1]) for step in range(1, bars * 4, 2))


def simple(tempo=120.0, tracks=("Bass", "Lead")):
    """A set with those tracks, each with one clip."""
    music = LiveSet(tempo)
    for name in tracks:
        music.add(name, Clip("Intro", 1, notes=beat()))
    return music
