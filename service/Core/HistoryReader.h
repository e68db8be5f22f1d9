#pragma once

#include "Core/Snapshot.h"

#include <QHash>
#include <QVarLengthArray>

#include <vector>

namespace ostra {

/// Answers questions about one project's history while its worker records or rewrites. Belongs to
/// one strand; reads through a handle of its own and remembers the commits it has seen.
class HistoryReader {
public:
    explicit HistoryReader(QString gitFolder) : m_folder(std::move(gitFolder)) {}

    /// Nodes oldest first, parents before children; one lane per variation.
    Outcome<SongGraph> graph(const SongSnapshot &song);
    /// The versions on the current variation's own line, newest first.
    Outcome<QList<TagInfo>> versions(const SongSnapshot &song);

    /// What a client may call a state of a song: a version's name, a commit id (short ones from 7
    /// digits on), "HEAD", each also with "~1" or more for saves before it. A state before the
    /// first save is absent.
    Outcome<std::optional<ObjectId>> resolve(const SongSnapshot &song, const QString &revision);
    /// The last common state of two variations; absent when they have none.
    Outcome<std::optional<ObjectId>> mergeBase(const ObjectId &a, const ObjectId &b);
    /// The handle itself, for content.
    Outcome<const History *> history();

    /// Lets go of the files. What was read stays, within bounds: saves never change.
    void rest();

private:
    /// A save, with its parents as places in m_nodes.
    struct Node {
        ObjectId id;
        QVarLengthArray<int, 1> parents;
        qint64 time = 0;
        QString message;
    };

    Outcome<int> node(const ObjectId &id);
    /// Every save that the tips lead to, parents before children.
    Outcome<QList<int>> reachable(const QList<ObjectId> &tips);
    QList<int> drawingOrder(const QList<int> &saves) const;
    const Node &at(int place) const { return m_nodes[static_cast<size_t>(place)]; }
    std::optional<int> before(int save) const;

    QString m_folder;
    std::optional<History> m_history;
    std::vector<Node> m_nodes; ///< every save comes after its parents
    QHash<ObjectId, int> m_places;
};

} // namespace ostra
