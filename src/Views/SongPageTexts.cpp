#include "Views/SongPageTexts.h"

#include "Views/ProjectTexts.h"

#include <QStringList>

#include <algorithm>

namespace ostra::SongPageTexts {

using namespace Qt::StringLiterals;

QString metaLine(const FileState &song, std::optional<double> now)
{
    QStringList parts;
    if (song.lastVersion) {
        parts += song.lastVersion->name;
    }
    if (const auto saved = ProjectTexts::savedText(song.lastSaved, now)) {
        parts += *saved;
    }
    return ProjectTexts::joined(parts);
}

QString diffContext(const std::optional<SongVersionRef> &lastVersion)
{
    return lastVersion ? u"since "_s + lastVersion->name : u"latest save"_s;
}

DiffRange diffRange(const std::optional<SongVersionRef> &lastVersion,
                    const std::optional<SongGraph> &graph)
{
    QString head = u"HEAD"_s;
    if (graph) {
        const auto tip = std::ranges::find_if(graph->nodes, [&](const SongGraphNode &node) {
            return node.isTip && node.variation == graph->current;
        });
        if (tip != graph->nodes.end()) {
            head = tip->id;
        }
    }
    return {lastVersion ? lastVersion->name : head + u"~1"_s, head};
}

QString deleteVersionQuestion(const QString &name)
{
    return u"Delete %1? Its saves stay in history."_s.arg(name);
}

QString deleteVariationQuestion(const QString &name)
{
    return u"Delete %1? Unmerged work is lost."_s.arg(name);
}

QString deleteSongQuestion(const QString &displayName)
{
    return u"Moves %1 to the Trash and removes its history from OSTRA."_s.arg(displayName);
}

} // namespace ostra::SongPageTexts
