#include "Sets/SameMusic.h"

#include "Sets/SetModel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string_view>
#include <unordered_set>

namespace ostra {

using pugi::xml_attribute;
using pugi::xml_node;

namespace {

constexpr double kRounding = 1e-6;

const std::unordered_set<std::string_view> &noiseNames()
{
    static const std::unordered_set<std::string_view> names{
        // counters
        "NextPointeeId", "TakeId", "NextColorIndex", "TakeCounter", "NoteIdGenerator",
        "ProbabilityGroupIdGenerator", "ColorSequenceIndex", "OverwriteProtectionNumber",
        "ModulationSourceCount",
        // playhead and selection
        "CurrentTime", "TimeSelection", "HighlightedTrackIndex", "SavedPlayingSlot",
        "SavedPlayingOffset", "SelectedDevice", "IsSelected", "Selection", "SelectedEnvelope",
        "PreferModulationVisible", "ClipEnvelopeChooserViewState", "EnvelopeChooser",
        // views
        "SequencerNavigator", "ScrollerTimePreserver", "WinPosX", "WinPosY", "ViewData",
        "TrackUnfolded", "IsFolded", "IsExpanded", "BreakoutIsExpanded", "AutomationLanes",
        "ChooserBar", "MinTrackHeight", "Grid", "ExpressionGrid", "DrawMode",
        "ShouldShowPresetName",
        // derived
        "EffectiveName", "MemorizedFirstClipName",
        // bookkeeping
        "LastPresetRef", "LastModDate", "SearchHint", "LomId", "LomIdView", "NeedRefreeze",
        "NeedArrangerRefreeze", "OriginalFileRef", "SampleUsageHint",
        // tools that hold no music
        "NoteAlgorithms"};
    return names;
}

bool hasNoisyName(std::string_view name)
{
    static constexpr std::array<std::string_view, 5> kBeginnings{
        "IsContentSelected", "LastSelected", "NoteEditorFold", "MidiTargetPrefers", "ViewState"};
    static constexpr std::array<std::string_view, 3> kEndings{"SourceContext", "ListWrapper",
                                                              "LomId"};
    return noiseNames().contains(name) ||
           std::ranges::any_of(kBeginnings, [&](auto part) { return name.starts_with(part); }) ||
           std::ranges::any_of(kEndings, [&](auto part) { return name.ends_with(part); }) ||
           name.find("Scroll") != std::string_view::npos ||
           name.find("ViewState") != std::string_view::npos;
}

bool isNumbering(QByteArrayView attribute)
{
    return attribute == "Id" || attribute == "LomId" || attribute == "NoteId" ||
           attribute.startsWith("Selected");
}

xml_attribute musical(xml_attribute attribute)
{
    while (attribute && isNumbering(attribute.name())) {
        attribute = attribute.next_attribute();
    }
    return attribute;
}

bool hasSameAttributes(xml_node a, xml_node b)
{
    auto left = musical(a.first_attribute());
    auto right = musical(b.first_attribute());
    while (left && right) {
        if (std::strcmp(left.name(), right.name()) != 0 ||
            !isSameValue(left.value(), right.value())) {
            return false;
        }
        left = musical(left.next_attribute());
        right = musical(right.next_attribute());
    }
    return !left && !right;
}

bool hasSameText(xml_node a, xml_node b)
{
    const char *const left = a.child_value();
    const char *const right = b.child_value();
    return std::strcmp(left, right) == 0 ||
           QByteArrayView(left).trimmed() == QByteArrayView(right).trimmed();
}

bool contains(std::initializer_list<QByteArrayView> names, QByteArrayView name)
{
    return std::ranges::find(names, name) != names.end();
}

} // namespace

bool isNoise(xml_node element)
{
    return hasNoisyName(element.name());
}

bool isSameValue(QByteArrayView a, QByteArrayView b)
{
    if (a == b) {
        return true;
    }
    constexpr auto isNumeric = [](QByteArrayView text) {
        return !text.isEmpty() &&
               (text[0] == '-' || text[0] == '.' || (text[0] >= '0' && text[0] <= '9'));
    };
    if (!isNumeric(a) || !isNumeric(b)) {
        return false;
    }
    bool isLeft = false;
    bool isRight = false;
    const double left = QByteArray::fromRawData(a.data(), a.size()).toDouble(&isLeft);
    const double right = QByteArray::fromRawData(b.data(), b.size()).toDouble(&isRight);
    return isLeft && isRight &&
           std::abs(left - right) <= kRounding * std::max(std::abs(left), std::abs(right));
}

xml_node firstMusicalChild(xml_node element)
{
    auto child = element.first_child();
    return child && isNoise(child) ? nextMusicalSibling(child) : child;
}

xml_node nextMusicalSibling(xml_node element)
{
    do {
        element = element.next_sibling();
    } while (element && isNoise(element));
    return element;
}

bool isSameMusic(xml_node a, xml_node b)
{
    return isSameMusicBut(a, b, {});
}

bool isSameMusicBut(xml_node a, xml_node b, std::initializer_list<QByteArrayView> skip)
{
    if (!a || !b) {
        return !a && !b;
    }
    if (std::strcmp(a.name(), b.name()) != 0) {
        return false;
    }
    if (std::strcmp(a.name(), "FileRef") == 0) {
        return isSameFile(a, b);
    }
    if (!hasSameAttributes(a, b) || !hasSameText(a, b)) {
        return false;
    }
    const auto past = [&](xml_node child) {
        while (child && contains(skip, child.name())) {
            child = nextMusicalSibling(child);
        }
        return child;
    };
    auto left = past(firstMusicalChild(a));
    auto right = past(firstMusicalChild(b));
    while (left && right) {
        if (!isSameMusic(left, right)) {
            return false;
        }
        left = past(nextMusicalSibling(left));
        right = past(nextMusicalSibling(right));
    }
    return !left && !right;
}

QByteArrayView fileNameOf(xml_node fileRef)
{
    if (const auto name = fileRef.child("Name")) {
        return valueOf(name);
    }
    auto path = valueOf(fileRef.child("Path"));
    if (path.isEmpty()) {
        path = valueOf(fileRef.child("RelativePath"));
    }
    return path.sliced(std::max(path.lastIndexOf('/'), path.lastIndexOf('\\')) + 1);
}

bool isSameFile(xml_node a, xml_node b)
{
    const auto size = [](xml_node file) {
        const auto original = file.child("OriginalFileSize");
        return valueOf(original ? original : descend(file, {"SearchHint", "FileSize"}));
    };
    const auto checksum = [](xml_node file) {
        const auto original = file.child("OriginalCrc");
        return valueOf(original ? original : descend(file, {"SearchHint", "Crc"}));
    };
    return fileNameOf(a) == fileNameOf(b) && size(a) == size(b) && checksum(a) == checksum(b);
}

} // namespace ostra
