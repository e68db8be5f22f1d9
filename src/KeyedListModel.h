#pragma once

#include <QAbstractListModel>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <type_traits>
#include <vector>

namespace ostra {

/// A list of value rows with an identity. It takes "the new list" and turns it into removes,
/// moves, inserts and precise dataChanged, so that a refresh keeps scroll position, focus, typed
/// text and running animations; it never resets. As few rows as possible are moved. Rows that
/// repeat an earlier key are dropped.
///
/// Lives on the main thread. A slot that hears of a change must not change the model.
///
/// Traits describes the row type:
///     static QHash<int, QByteArray> roleNames();
///     static Key key(const Row &);                // hashable
///     static QVariant data(const Row &, int role);
///     static QList<int> changedRoles(const Row &before, const Row &after);  // empty: nothing
template <typename Row, typename Traits>
class KeyedListModel : public QAbstractListModel {
public:
    using Key = std::remove_cvref_t<decltype(Traits::key(std::declval<const Row &>()))>;

    explicit KeyedListModel(QObject *parent = nullptr) : QAbstractListModel(parent) {}

    const QList<Row> &rows() const { return m_rows; }

    /// The row of that key, or -1.
    int indexOf(const Key &key) const
    {
        if (m_index.size() == m_rows.size()) {
            return m_index.value(key, -1);
        }
        // Asked from a slot, in the middle of a change.
        const auto found = std::ranges::find(m_rows, key, &Traits::key);
        return found == m_rows.end() ? -1 : static_cast<int>(found - m_rows.begin());
    }

    /// Makes `rows` the content; true when anything was announced. Structure comes first, while the
    /// rows that stay still hold what they held; then their values.
    bool setRows(QList<Row> rows)
    {
        bool changed = false;
        Keys target = uniqueKeys(rows);
        if (!sameOrder(target.order)) {
            changed = true;
            m_index.clear();
            removeAbsent(target);
            moveAndInsert(rows, target.index);
        }
        m_index = std::move(target.index);
        const QList<Row> before = std::exchange(m_rows, std::move(rows));
        for (int row = 0; row < m_rows.size(); ++row) {
            changed |= announce(row, before.at(row));
        }
        return changed;
    }

    /// Replaces one row by another value of the same identity; true when that was announced.
    bool setRow(int row, Row value)
    {
        Q_ASSERT(Traits::key(m_rows.at(row)) == Traits::key(value));
        const Row before = std::exchange(m_rows[row], std::move(value));
        return announce(row, before);
    }

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
    }

    QVariant data(const QModelIndex &index, int role) const override
    {
        return index.isValid() && index.row() < m_rows.size()
                   ? Traits::data(m_rows.at(index.row()), role)
                   : QVariant();
    }

    QHash<int, QByteArray> roleNames() const override { return Traits::roleNames(); }

private:
    struct Keys {
        std::vector<Key> order;
        QHash<Key, int> index;
    };

    /// Drops repeated rows from `rows` on the way.
    static Keys uniqueKeys(QList<Row> &rows)
    {
        Keys keys;
        keys.order.reserve(rows.size());
        keys.index.reserve(rows.size());
        for (qsizetype i = 0; i < rows.size();) {
            Key key = Traits::key(rows.at(i));
            if (keys.index.contains(key)) {
                rows.removeAt(i);
                continue;
            }
            keys.index.insert(key, static_cast<int>(i++));
            keys.order.push_back(std::move(key));
        }
        return keys;
    }

    bool sameOrder(const std::vector<Key> &order) const
    {
        return std::ranges::equal(m_rows, order, {}, &Traits::key);
    }

    void removeAbsent(const Keys &target)
    {
        const auto isAbsent = [&](qsizetype row) {
            return !target.index.contains(Traits::key(m_rows.at(row)));
        };
        for (qsizetype last = m_rows.size() - 1; last >= 0; --last) {
            if (!isAbsent(last)) {
                continue;
            }
            qsizetype first = last;
            while (first > 0 && isAbsent(first - 1)) {
                --first;
            }
            beginRemoveRows({}, static_cast<int>(first), static_cast<int>(last));
            m_rows.remove(first, last - first + 1);
            endRemoveRows();
            last = first;
        }
    }

    /// Works backwards: everything from `next` on already stands in its final order, so that each
    /// earlier row belongs right before it.
    void moveAndInsert(const QList<Row> &rows, const QHash<Key, int> &targetOf)
    {
        std::vector<int> current; // the target of each present row
        for (const Row &row : std::as_const(m_rows)) {
            current.push_back(targetOf.value(Traits::key(row)));
        }
        std::vector<Place> places = placesOf(current, rows.size());
        int next = static_cast<int>(current.size());
        for (int last = static_cast<int>(rows.size()) - 1; last >= 0; --last) {
            if (places[last] != Place::absent) {
                const auto at = std::ranges::find(current, last) - current.begin();
                if (places[last] == Place::moves) {
                    moveBefore(current, static_cast<int>(at), next);
                    next = at < next ? next - 1 : next;
                } else {
                    next = static_cast<int>(at);
                }
                continue;
            }
            int first = last;
            while (first > 0 && places[first - 1] == Place::absent) {
                --first;
            }
            insertBefore(current, next, rows, first, last);
            last = first;
        }
    }

    void moveBefore(std::vector<int> &current, int from, int next)
    {
        const bool moving = beginMoveRows({}, from, from, {}, next);
        Q_ASSERT(moving);
        const int to = from < next ? next - 1 : next;
        m_rows.move(from, to);
        const int target = current[from];
        current.erase(current.begin() + from);
        current.insert(current.begin() + to, target);
        endMoveRows();
    }

    void insertBefore(std::vector<int> &current, int next, const QList<Row> &rows, int first,
                      int last)
    {
        beginInsertRows({}, next, next + last - first);
        for (int target = last; target >= first; --target) {
            m_rows.insert(next, rows.at(target));
            current.insert(current.begin() + next, target);
        }
        endInsertRows();
    }

    enum class Place { absent, stays, moves };

    /// For each target position: whether its row is there and, if so, whether it belongs to one
    /// longest increasing run of targets, whose rows need not move.
    static std::vector<Place> placesOf(const std::vector<int> &current, qsizetype targets)
    {
        std::vector<Place> places(static_cast<size_t>(targets), Place::absent);
        std::vector<size_t> tails; // tails[n]: where the run of n + 1 with the least end stands
        std::vector<size_t> before(current.size());
        for (size_t i = 0; i < current.size(); ++i) {
            places[current[i]] = Place::moves;
            const auto tail = std::ranges::lower_bound(tails, current[i], {},
                                                       [&](size_t at) { return current[at]; });
            before[i] = tail == tails.begin() ? i : *std::prev(tail);
            if (tail == tails.end()) {
                tails.push_back(i);
            } else {
                *tail = i;
            }
        }
        if (!tails.empty()) {
            size_t i = tails.back();
            for (size_t left = tails.size(); left > 0; --left, i = before[i]) {
                places[current[i]] = Place::stays;
            }
        }
        return places;
    }

    bool announce(int row, const Row &before)
    {
        const QList<int> roles = Traits::changedRoles(before, m_rows.at(row));
        if (!roles.isEmpty()) {
            emit dataChanged(index(row), index(row), roles);
        }
        return !roles.isEmpty();
    }

    QList<Row> m_rows;
    QHash<Key, int> m_index;
};

} // namespace ostra
