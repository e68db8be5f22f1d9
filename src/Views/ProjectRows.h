#pragma once

#include "Views/RowList.h"

namespace ostra {

/// The kinds of rows, `ProjectRowKind.Project` in QML.
namespace ProjectRowKinds {
Q_NAMESPACE
QML_NAMED_ELEMENT(ProjectRowKind)

enum class Kind { SectionLabel, EmptyState, Project, Divider, Discovered };
Q_ENUM_NS(Kind)
} // namespace ProjectRowKinds

/// One row of the project list. `id` is the project's identity, or the folder of a discovered one.
struct ProjectRow {
    using Kind = ProjectRowKinds::Kind;

    Kind kind = Kind::Project;
    QString id;
    QString title;  ///< a section's title, a discovered project's name
    QString detail; ///< a discovered project's line
    int top = 0;    ///< in points, from the top of the list
    int height = 0; ///< in points

    bool operator==(const ProjectRow &) const = default;
};

struct ProjectRowTraits {
    enum Role { KindRole = Qt::UserRole, IdRole, KeyRole, TitleRole, DetailRole, TopRole };

    static QHash<int, QByteArray> roleNames();
    static QString key(const ProjectRow &row);
    static QVariant data(const ProjectRow &row, int role);
    static QList<int> changedRoles(const ProjectRow &before, const ProjectRow &after);
};

/// The whole project list as one flat sequence, so that a thousand projects are as cheap as ten:
/// the tracked section with its cards or the empty state, then the discovered section.
using ProjectRows = RowListOf<ProjectRow, ProjectRowTraits>;

/// A card that is closed, in points.
inline constexpr int kProjectRowHeight = 50;

} // namespace ostra
