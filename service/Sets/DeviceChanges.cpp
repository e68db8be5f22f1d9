#include "Sets/DeviceChanges.h"

#include "Sets/Alignment.h"
#include "Sets/MusicalText.h"
#include "Sets/SameMusic.h"
#include "Sets/Scalars.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace ostra {

using pugi::xml_node;

namespace {

// From here on, turned knobs are told together: nobody reads a list of forty.
constexpr int kMostKnobs = 3;

struct Knob {
    QString name;
    QString before;
    QString after;
};

/// What differs in one device, without the devices that it holds.
struct Findings {
    std::vector<Knob> knobs;
    std::vector<QString> automated;
    QList<DeltaSummary> lines;
    bool state = false;
    bool other = false;
};

bool isOpaque(QByteArrayView name)
{
    return name == "Buffer" || name == "ProcessorState" || name == "ControllerState" ||
           name == "Blob" || name == "Data";
}

QByteArray listKey(xml_node element)
{
    return QByteArray(element.name()) + '#' + element.attribute("Id").value();
}

/// The children of two lists, matched by type and number.
struct Matched {
    std::vector<std::pair<xml_node, xml_node>> both;
    std::vector<xml_node> removed;
    std::vector<xml_node> added;
};

Matched matchByKey(xml_node before, xml_node after)
{
    Matched matched;
    QHash<QByteArray, xml_node> known;
    for (const auto child : after.children()) {
        known.insert(listKey(child), child);
    }
    for (const auto child : before.children()) {
        if (const auto other = known.take(listKey(child))) {
            matched.both.emplace_back(child, other);
        } else {
            matched.removed.push_back(child);
        }
    }
    for (const auto child : after.children()) {
        if (known.contains(listKey(child)) && known.value(listKey(child)) == child) {
            matched.added.push_back(child);
        }
    }
    return matched;
}

class DeviceComparison {
public:
    DeviceComparison(QString prefix, UnnamedParts unnamed)
        : m_prefix(std::move(prefix)), m_unnamed(unnamed)
    {
    }

    QList<DeltaSummary> run(xml_node before, xml_node after)
    {
        compareChildren(before, after);
        return lines();
    }

private:
    void compareChildren(xml_node before, xml_node after);
    void compare(xml_node before, xml_node after);
    void compareParameter(xml_node before, xml_node after);
    void compareDevices(xml_node before, xml_node after);
    void compareBranches(xml_node before, xml_node after);
    QList<DeltaSummary> lines();

    DeltaSummary fileLine(xml_node before, xml_node after) const;
    QString nested(const QString &name) const;

    QString m_prefix;
    UnnamedParts m_unnamed;
    Findings m_found;
};

QString branchName(xml_node branch)
{
    const auto name = branch.child("Name");
    const auto own = textOf(name.child("UserName"));
    return own.isEmpty() ? textOf(name.child("EffectiveName")) : own;
}

DeltaSummary DeviceComparison::fileLine(xml_node before, xml_node after) const
{
    const auto from = quoted(QString::fromUtf8(fileNameOf(before)));
    const auto to = quoted(QString::fromUtf8(fileNameOf(after)));
    const bool isPatch = QByteArrayView(after.parent().name()) == "MxPatchRef";
    return change(isPatch ? Category::kDevices : Category::kSamples,
                  m_prefix + (isPatch ? QStringLiteral(", file ") : QStringLiteral(", sample ")) +
                      (from == to ? to + QStringLiteral(" was edited") : arrow(from, to)));
}

/// A chain mostly bears the name of its only device: said once.
QString DeviceComparison::nested(const QString &name) const
{
    const auto step = QStringLiteral(" › ") + name;
    return name.isEmpty() || m_prefix.endsWith(step) ||
                   m_prefix.endsWith(QStringLiteral(": ") + name)
               ? m_prefix
               : m_prefix + step;
}

void DeviceComparison::compareChildren(xml_node before, xml_node after)
{
    auto left = firstMusicalChild(before);
    auto right = firstMusicalChild(after);
    while (left && right && QByteArrayView(left.name()) == QByteArrayView(right.name())) {
        if (!isSameMusic(left, right)) {
            compare(left, right);
        }
        left = nextMusicalSibling(left);
        right = nextMusicalSibling(right);
    }
    m_found.other = m_found.other || left || right;
}

void DeviceComparison::compare(xml_node before, xml_node after)
{
    const QByteArrayView name(after.name());
    if (isParameter(after)) {
        compareParameter(before, after);
    } else if (name == "Devices") {
        compareDevices(before, after);
    } else if (name == "Branches" || name == "ReturnBranches") {
        compareBranches(before, after);
    } else if (name == "FileRef") {
        m_found.lines.append(fileLine(before, after));
    } else if (isOpaque(name)) {
        m_found.state = true;
    } else if (!firstMusicalChild(before) && !firstMusicalChild(after) &&
               after.attribute("Value")) {
        m_found.knobs.push_back({parameterName(after), textOf(before), textOf(after)});
    } else {
        compareChildren(before, after);
    }
}

void DeviceComparison::compareParameter(xml_node before, xml_node after)
{
    if (isSameValue(parameterValue(before).value(), parameterValue(after).value())) {
        if (isSameMusic(before.child("ArrangerAutomation"), after.child("ArrangerAutomation"))) {
            m_found.other = true;
        } else {
            m_found.automated.push_back(parameterName(after));
        }
        return;
    }
    const auto texts = parameterTexts(before, after);
    if (QByteArrayView(after.name()) == "On" && after.parent().child("LastPresetRef")) {
        m_found.lines.append(
            change(Category::kDevices, m_prefix + QStringLiteral(" turned ") + texts.after));
        return;
    }
    m_found.knobs.push_back({parameterName(after), texts.before, texts.after});
}

void DeviceComparison::compareDevices(xml_node before, xml_node after)
{
    const auto matched = matchByKey(before, after);
    for (const auto device : matched.removed) {
        m_found.lines.append(removal(Category::kDevices,
                                     m_prefix + QStringLiteral(", removed ") + deviceName(device)));
    }
    for (const auto device : matched.added) {
        m_found.lines.append(addition(Category::kDevices,
                                      m_prefix + QStringLiteral(", added ") + deviceName(device)));
    }
    for (const auto &[left, right] : matched.both) {
        if (!isSameMusic(left, right)) {
            m_found.lines +=
                DeviceComparison(nested(deviceName(right)), m_unnamed).run(left, right);
        }
    }
}

void DeviceComparison::compareBranches(xml_node before, xml_node after)
{
    const auto matched = matchByKey(before, after);
    for (const auto branch : matched.removed) {
        m_found.lines.append(
            removal(Category::kDevices,
                    m_prefix + QStringLiteral(", removed chain ") + quoted(branchName(branch))));
    }
    for (const auto branch : matched.added) {
        m_found.lines.append(
            addition(Category::kDevices,
                     m_prefix + QStringLiteral(", added chain ") + quoted(branchName(branch))));
    }
    for (const auto &[left, right] : matched.both) {
        if (!isSameMusic(left, right)) {
            m_found.lines +=
                DeviceComparison(nested(branchName(right)), m_unnamed).run(left, right);
        }
    }
}

QList<DeltaSummary> DeviceComparison::lines()
{
    auto lines = std::move(m_found.lines);
    const auto say = [&](const QString &text) {
        lines.append(change(Category::kDevices, m_prefix + QStringLiteral(", ") + text));
    };
    if (m_found.knobs.size() > kMostKnobs) {
        QStringList names;
        for (const auto &knob : m_found.knobs) {
            if (!names.contains(knob.name)) {
                names.append(knob.name);
            }
        }
        if (names.size() > kMostKnobs + 1) {
            names = names.first(kMostKnobs) + QStringList{QStringLiteral("…")};
        }
        say(QStringLiteral("%1 parameters changed: %2")
                .arg(m_found.knobs.size())
                .arg(names.join(QStringLiteral(", "))));
    } else {
        for (const auto &knob : m_found.knobs) {
            say(knob.name + u' ' + arrow(knob.before, knob.after));
        }
    }
    for (const auto &name : m_found.automated) {
        lines.append(change(Category::kAutomation,
                            m_prefix + QStringLiteral(", automation of %1 changed").arg(name)));
    }
    if (m_found.state && lines.isEmpty()) {
        say(QStringLiteral("plug-in state changed"));
    }
    if (m_found.other && m_unnamed == UnnamedParts::Told && lines.isEmpty()) {
        lines.append(change(Category::kDevices, m_prefix + QStringLiteral(" changed")));
    }
    return lines;
}

} // namespace

QString parameterName(xml_node parameter)
{
    const QByteArrayView tag(parameter.name());
    const auto holder = parameter.parent();
    if (tag == "ParameterValue" || tag == "Timeable") {
        for (const char *name : {"ParameterName", "Name"}) {
            if (auto text = textOf(holder.child(name)); !text.isEmpty()) {
                return text;
            }
        }
        return parameterName(holder);
    }
    if (tag.startsWith("MacroControls.")) {
        const auto number = tag.sliced(tag.indexOf('.') + 1).toByteArray();
        const auto own =
            textOf(holder.child(QByteArray("MacroDisplayNames." + number).constData()));
        return own.isEmpty() ? QStringLiteral("Macro %1").arg(number.toInt() + 1) : own;
    }
    if (tag.startsWith("Parameter") || tag == "Value" || tag == "Manual") {
        return words(holder.name());
    }
    return words(tag);
}

QList<DeltaSummary> describeDevice(const QString &track, xml_node before, xml_node after,
                                   UnnamedParts unnamed)
{
    return DeviceComparison(track + QStringLiteral(": ") + deviceName(after), unnamed)
        .run(before, after);
}

QList<DeltaSummary> describeDevices(const QString &track, std::span<const Device> before,
                                    std::span<const Device> after, Versions versions,
                                    UnnamedParts unnamed)
{
    const auto keysOf = [](std::span<const Device> devices) {
        std::vector<QByteArray> keys;
        for (const auto &device : devices) {
            keys.push_back(device.key);
        }
        return keys;
    };
    const auto left = keysOf(before);
    const auto right = keysOf(after);
    const auto isIn = [](const std::vector<QByteArray> &keys, const QByteArray &key) {
        return std::ranges::find(keys, key) != keys.end();
    };
    const auto prefix = track + QStringLiteral(": ");
    QList<DeltaSummary> lines;
    QList<DeltaSummary> moved;
    // Between two devices that stayed, one that went and one that came changed places.
    const auto tell = [&](std::span<const Device> old, std::span<const Device> now) {
        std::vector<xml_node> removed;
        std::vector<xml_node> added;
        for (const auto &device : old) {
            if (!isIn(right, device.key)) {
                removed.push_back(device.node);
            }
        }
        for (const auto &device : now) {
            if (!isIn(left, device.key)) {
                added.push_back(device.node);
            } else {
                moved.append(change(Category::kDevices,
                                    prefix + deviceName(device.node) + QStringLiteral(" moved")));
            }
        }
        if (removed.size() == 1 && added.size() == 1) {
            lines.append(change(Category::kDevices,
                                prefix + QStringLiteral("%1 replaced by %2")
                                             .arg(deviceName(removed[0]), deviceName(added[0]))));
            return;
        }
        for (const auto device : removed) {
            lines.append(removal(Category::kDevices,
                                 prefix + QStringLiteral("removed ") + deviceName(device)));
        }
        for (const auto device : added) {
            lines.append(addition(Category::kDevices,
                                  prefix + QStringLiteral("added ") + deviceName(device)));
        }
    };
    std::size_t from = 0;
    std::size_t to = 0;
    for (const auto &[oldPlace, newPlace] : alignKeys(left, right)) {
        const auto nextFrom = static_cast<std::size_t>(oldPlace);
        const auto nextTo = static_cast<std::size_t>(newPlace);
        tell(before.subspan(from, nextFrom - from), after.subspan(to, nextTo - to));
        from = nextFrom + 1;
        to = nextTo + 1;
    }
    tell(before.subspan(from), after.subspan(to));
    lines += moved;
    if (versions == Versions::Different) {
        return lines; // an upgrade of Live rewrites every device
    }
    for (const auto &device : after) {
        const auto old = std::ranges::find(before, device.key, &Device::key);
        if (old != before.end() && !isSameMusic(old->node, device.node)) {
            lines += describeDevice(track, old->node, device.node, unnamed);
        }
    }
    return lines;
}

} // namespace ostra
