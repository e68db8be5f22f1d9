#pragma once

#include "KeyedListModel.h"

#include <QtQml/qqmlregistration.h>

namespace ostra {

/// One row of the project list. `id` is the project's identity, or the folder of a discovered one.
struct ProjectRow {
    enum class Kind { sectionLabel, emptyState, project, divider, discovered };

    Kind kind = Kind::project;
    QString id;
    QString title;  ///< a section's title, a discovered project's name
    QString detail; ///< a discovered project's line

    bool operator==(const ProjectRow &) const = default;
};

struct ProjectRowTraits {
    enum Role { KindRole = Qt::UserRole, IdRole, TitleRole, DetailRole };

    static QHash<int, QByteArray> roleNames();
    static QPair<int, QString> key(const ProjectRow &row);
    static QVariant data(const ProjectRow &row, int role);
    static QList<int> changedRoles(const ProjectRow &before, const ProjectRow &after);
};

/// The whole project list as one flat sequence, so that a thousand projects are as cheap as ten:
/// the tracked section with its cards or the empty state, then the discovered section.
class ProjectListModel : public KeyedListModel<ProjectRow, ProjectRowTraits> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by MenuBarViewModel")

public:
    using KeyedListModel::KeyedListModel;

    enum Kind {
        SectionLabel = int(ProjectRow::Kind::sectionLabel),
        EmptyState = int(ProjectRow::Kind::emptyState),
        Project = int(ProjectRow::Kind::project),
        Divider = int(ProjectRow::Kind::divider),
        Discovered = int(ProjectRow::Kind::discovered),
    };
    Q_ENUM(Kind)
};

} // namespace ostra
