#pragma once

#include <QAbstractListModel>
#include <QHash>

#include <vector>

namespace ostra {

/// Describes one row type to KeyedListModel. A specialisation-free contract:
///   static QHash<int, QByteArray> roleNames();
///   static Key key(const Row &);                       // hashable, unique within the list
///   static QVariant data(const Row &, int role);
///   static QList<int> changedRoles(const Row &before, const Row &after);   // empty: nothing to tell
///
/// A list of value rows with an identity. It takes "the new list" and turns it into removes,
/// moves, inserts and precise dataChanged, so that a refresh keeps scroll position, focus, typed
/// text and running animations; it never resets. Rows that repeat an earlier key are dropped.
/// Lives on the main thread.
template <typename Row, typename Traits>
class KeyedListModel;

} // namespace ostra
