#include "Music.h"

#include "Sets/References.h"
#include "Sets/SameMusic.h"
#include "Sets/SetDiff.h"
#include "Sets/SetDocument.h"

#include <QDirIterator>
#include <QFile>
#include <QHash>

#include <algorithm>

namespace ostra {

using pugi::xml_node;

namespace {

class Dump {
public:
    explicit Dump(const SetModel &model) : m_model(model)
    {
        for (const auto &track : model.tracks) {
            m_tracks.insert(track.id, track.name.toUtf8());
            if (track.isInList()) {
                nameParameters(track.node, track.name.toUtf8());
            }
        }
        nameParameters(model.liveSet, "set");
        for (const auto &groove : model.grooves) {
            m_grooves.insert(groove.id, groove.name.toUtf8());
        }
    }

    QByteArray run() { return write(m_model.liveSet); }

private:
    void nameParameters(xml_node element, const QByteArray &path)
    {
        if (isPointee(element)) {
            const QByteArray id(element.attribute("Id").value());
            if (!m_parameters.contains(id)) {
                m_parameters.insert(id, path);
            }
        }
        QHash<QByteArray, int> seen;
        for (const auto child : element.children()) {
            const QByteArray name(child.name());
            nameParameters(child, path + '/' + name + QByteArray::number(seen[name]++));
        }
    }

    QByteArray referenceText(const Reference &reference) const
    {
        switch (reference.kind) {
        case ReferenceKind::Pointee:
            return m_parameters.value(reference.id, "?");
        case ReferenceKind::Groove:
            return m_grooves.value(reference.id, "?");
        default:
            return m_tracks.value(reference.id, "?");
        }
    }

    QByteArray write(xml_node element) const
    {
        QByteArray text('<' + QByteArray(element.name()));
        if (const auto reference = referenceIn(element)) {
            return text + ' ' + redirected(element, *reference, referenceText(*reference)) + ">\n";
        }
        for (const auto attribute : element.attributes()) {
            const QByteArray name(attribute.name());
            if (name != "Id" && name != "LomId" && name != "NoteId") {
                text += ' ' + name + '=' + attribute.value();
            }
        }
        text += '>' + QByteArray(element.child_value()).trimmed() + '\n';
        QByteArrayList children;
        for (auto child = firstMusicalChild(element); child; child = nextMusicalSibling(child)) {
            children.append(write(child));
        }
        const QByteArrayView name(element.name());
        if (name == "Envelopes" || name == "Locators" || name == "Grooves") {
            std::ranges::sort(children); // their order says nothing
        }
        return text + children.join();
    }

    const SetModel &m_model;
    QHash<QByteArray, QByteArray> m_tracks;
    QHash<QByteArray, QByteArray> m_parameters;
    QHash<QByteArray, QByteArray> m_grooves;
};

} // namespace

QByteArray musicOf(const Set &set)
{
    return Dump(set.document().model()).run();
}

QByteArray music(const QByteArray &file)
{
    const auto set = readSet(file);
    return set ? musicOf(*set) : QByteArray("unreadable");
}

QStringList differences(const QByteArray &before, const QByteArray &after)
{
    QStringList texts;
    const auto a = readSet(before);
    const auto b = readSet(after);
    if (!a || !b) {
        return {QStringLiteral("unreadable")};
    }
    for (const auto &line : diffSets(*a, *b)) {
        texts.append(line.text);
    }
    return texts;
}

QString realSetsFolder()
{
    const auto named = qEnvironmentVariable("OSTRA_REAL_SETS");
    for (const auto &path : {named, QStringLiteral(OSTRA_SOURCE_DIR "/../shared/als"),
                             QStringLiteral(OSTRA_SOURCE_DIR "/../../shared/als")}) {
        if (!path.isEmpty() && QFileInfo(path).isDir()) {
            return path;
        }
    }
    return {};
}

QStringList realSets()
{
    QStringList files;
    const auto folder = realSetsFolder();
    if (folder.isEmpty()) {
        return files;
    }
    QDirIterator all(folder, {QStringLiteral("*.als")}, QDir::Files, QDirIterator::Subdirectories);
    while (all.hasNext()) {
        files.append(all.next());
    }
    files.sort();
    return files;
}

QList<QPair<QString, QString>> realPairs()
{
    QList<QPair<QString, QString>> pairs;
    const auto files = realSets();
    for (qsizetype i = 1; i < files.size(); ++i) {
        const QFileInfo before(files[i - 1]);
        const QFileInfo after(files[i]);
        if (before.path() == after.path() && after.path().contains(QStringLiteral("/hist/"))) {
            pairs.append({files[i - 1], files[i]});
        }
    }
    return pairs;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace ostra
