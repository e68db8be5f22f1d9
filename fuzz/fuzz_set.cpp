#include "Sets/Set.h"
#include "Sets/SetDiff.h"
#include "Sets/SetMerge.h"
#include "SetSketch.h"

#include <algorithm>
#include <cstdlib>
#include <span>

using namespace ostra;

namespace {

constexpr std::size_t kEditSize = 4;

/// A set of ours with pieces cut out, doubled and overwritten: still nearly a set, where plain
/// garbage would end at the first bracket.
QByteArray damaged(QByteArray xml, std::span<const uint8_t> script)
{
    while (script.size() >= kEditSize && xml.size() > 300) {
        const qsizetype at = (script[0] * 256 + script[1]) * 7 % (xml.size() - 256);
        const qsizetype length = script[2];
        switch (script[3] % 4) {
        case 0:
            xml.remove(at, length);
            break;
        case 1:
            xml.insert(at, xml.mid(at, length));
            break;
        case 2: { // a line elsewhere
            const auto begin = xml.lastIndexOf('\n', at);
            const auto end = xml.indexOf('\n', at);
            const auto line = xml.mid(begin, end - begin);
            xml.insert(xml.indexOf('\n', (at * 31) % xml.size()), line);
            break;
        }
        default: // another number
            if (const auto digit = std::find_if(xml.begin() + at, xml.end(),
                                                [](char c) { return c >= '0' && c <= '9'; });
                digit != xml.end()) {
                *digit = static_cast<char>('0' + length % 10);
            }
            break;
        }
        script = script.subspan(kEditSize);
    }
    return xml;
}

/// The song with things removed and edited, for the other side of a merge.
QByteArray otherSide()
{
    auto song = SetSketch::song();
    song.tempo = 90;
    song.removeScene(1);
    song.removeTrack(0);
    song.tracks[0].devices.removeFirst();
    song.tracks[0].envelopes.clear();
    song.addTrack(QStringLiteral("Pads"));
    return song.xml();
}

void checkMerge(const MergeInputs &inputs)
{
    const auto plan = planMerge(inputs);
    MergeDecisions decisions;
    decisions.fingerprint = plan.fingerprint;
    for (const auto &change : plan.changes) {
        decisions.approvedIds.append(change.id);
    }
    for (const auto &pick : plan.picks) {
        decisions.picks.append({pick.keyId, QStringLiteral("from")});
    }
    const auto merged = applyMerge(inputs, decisions);
    if (merged && merged->file != inputs.into) { // what is written is sound
        const auto result = readSet(merged->file);
        if (!result || !validateSet(*result).isEmpty()) {
            std::abort();
        }
    }
}

void check(const QByteArray &file)
{
    static const QByteArray kOther = otherSide();
    static const QByteArray kBase = SetSketch::song().xml();
    static const Set kBaseSet = *readSet(kBase);
    const auto set = readSet(file);
    if (!set) {
        if (set.error().message.isEmpty()) {
            std::abort();
        }
        return;
    }
    if (!diffSets(*set, *set).isEmpty()) {
        std::abort();
    }
    (void)saveMessage(diffSets(kBaseSet, *set));
    checkMerge({kBase, kBase, file, QStringLiteral("Song.als")});
    checkMerge({kBase, kOther, file, QStringLiteral("Song.als")});
    checkMerge({kBase, file, kOther, QStringLiteral("Song.als")});
}

} // namespace

/// Any bytes as a file, and a set damaged by them: an error, or a comparison and a sound merge.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    if (bytes.startsWith('<') || bytes.startsWith('\x1f')) {
        check(bytes);
    } else {
        static const QByteArray kSong = SetSketch::song().xml();
        check(damaged(kSong, {data, std::min<std::size_t>(size, 64)}));
    }
    return 0;
}
