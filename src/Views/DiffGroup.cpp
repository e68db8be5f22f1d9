#include "Views/DiffGroup.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace ostra {

QList<DiffGroup> diffGroups(const QList<DeltaSummary> &changes)
{
    QList<DiffGroup> groups;
    QHash<QString, qsizetype> indexById;
    for (const DeltaSummary &change : changes) {
        const QString id = change.category.value_or(u"Other changes"_s);
        auto position = indexById.find(id);
        if (position == indexById.end()) {
            position = indexById.insert(id, groups.size());
            groups.append({id, {}});
        }
        groups[*position].items.append(change);
    }
    return groups;
}

} // namespace ostra
