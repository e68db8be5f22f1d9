#include "Sets/References.h"

#include "Sets/SetModel.h"

#include <algorithm>
#include <iterator>

namespace ostra {

using pugi::xml_node;

namespace {

constexpr QByteArrayView kTrackPart("/Track.");

/// Where the number stands in "AudioOut/Track.14/TrackIn".
std::optional<std::pair<qsizetype, qsizetype>> trackNumber(QByteArrayView target)
{
    const auto part = target.indexOf(kTrackPart);
    if (part < 0) {
        return std::nullopt;
    }
    const auto begin = part + kTrackPart.size();
    auto end = begin;
    while (end < target.size() && target[end] >= '0' && target[end] <= '9') {
        ++end;
    }
    return begin == end ? std::nullopt : std::optional(std::pair(begin, end));
}

} // namespace

std::optional<Reference> referenceIn(xml_node element)
{
    const QByteArrayView name(element.name());
    const auto value = valueOf(element);
    if (name == "Target") {
        const auto number = trackNumber(value);
        return number
                   ? std::optional(Reference{
                         ReferenceKind::Track,
                         value.sliced(number->first, number->second - number->first).toByteArray()})
                   : std::nullopt;
    }
    const auto kind = name == "PointeeId"      ? std::optional(ReferenceKind::Pointee)
                      : name == "TrackGroupId" ? std::optional(ReferenceKind::Group)
                      : name == "GrooveId"     ? std::optional(ReferenceKind::Groove)
                                               : std::nullopt;
    if (!kind || value.isEmpty() || value == "-1") {
        return std::nullopt;
    }
    return Reference{*kind, value.toByteArray()};
}

QByteArray redirected(xml_node element, const Reference &reference, const QByteArray &id)
{
    if (reference.kind != ReferenceKind::Track) {
        return id;
    }
    const auto value = valueOf(element);
    const auto number = trackNumber(value);
    return number ? value.first(number->first).toByteArray() + id +
                        value.sliced(number->second).toByteArray()
                  : value.toByteArray();
}

std::size_t countChildren(xml_node list)
{
    return static_cast<std::size_t>(std::distance(list.children().begin(), list.children().end()));
}

} // namespace ostra
