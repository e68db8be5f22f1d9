#include "Sets/TrackTexts.h"

#include "Sets/DeviceChanges.h"
#include "Sets/MusicalText.h"
#include "Sets/SetDocument.h"

#include <algorithm>

namespace ostra {

using pugi::xml_node;

namespace {

QString kindName(TrackKind kind)
{
    switch (kind) {
    case TrackKind::Midi:
        return QStringLiteral("MIDI track");
    case TrackKind::Audio:
        return QStringLiteral("audio track");
    case TrackKind::Group:
        return QStringLiteral("group");
    case TrackKind::Return:
        return QStringLiteral("return track");
    default:
        return QStringLiteral("track");
    }
}

} // namespace

QString trackTitle(const Track &track)
{
    return kindName(track.kind) + u' ' + quoted(track.name);
}

QString sceneTitle(const Scene &scene, int place)
{
    return scene.name.isEmpty() || scene.name == QString::number(place + 1)
               ? QStringLiteral("scene %1").arg(place + 1)
               : QStringLiteral("scene ") + quoted(scene.name);
}

QHash<QByteArray, QString> parameterNames(const Track &track)
{
    QHash<QByteArray, QString> names;
    const auto collect = [&](auto &&self, xml_node element, const QString &device) -> void {
        for (const auto child : element.children()) {
            const auto target = automationTargetOf(child);
            if (!target.isEmpty()) {
                const bool isSend = QByteArrayView(child.name()) == "Send";
                const auto name =
                    isSend ? QStringLiteral("Send %1").arg(
                                 QChar(u'A' + (child.parent().attribute("Id").as_int() % 26)))
                           : parameterName(child);
                names.insert(target, device.isEmpty() ? name : device + u' ' + name);
            }
            const bool isDevice = QByteArrayView(element.name()) == "Devices";
            self(self, child, isDevice ? deviceName(child) : device);
        }
    };
    collect(collect, track.chain, {});
    return names;
}

bool isUntouched(const SetDocument &base, const Track &before, const SetDocument &head,
                 const Track &after)
{
    const auto keyOf = [](const Track *track) {
        return track->key;
    };
    return std::ranges::equal(base.model().returns(), head.model().returns(), {}, keyOf, keyOf) &&
           base.text(before.node) == head.text(after.node);
}

} // namespace ostra
