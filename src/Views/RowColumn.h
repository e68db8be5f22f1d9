#pragma once

#include "KeyedListModel.h"

#include <algorithm>

namespace ostra {

/// A column of rows of known heights of which only those around the visible part exist in the
/// view, so that a panel inside a scrolling page costs what one can see of it. Sets `top` of each
/// row. All measures are in points from the top of the column.
template <typename Row, typename Traits>
class RowColumn {
public:
    /// Rows so far beyond the visible part exist too, unless told otherwise: what the next flick or
    /// Tab needs.
    static constexpr int kMargin = 240;
    /// So few rows always exist, unless told otherwise: assistive technology finds them without
    /// scrolling.
    static constexpr qsizetype kFew = 60;

    explicit RowColumn(qsizetype few = kFew, int margin = kMargin) : m_few(few), m_margin(margin) {}

    KeyedListModel<Row, Traits> *model() { return &m_model; }
    const QList<Row> &rows() const { return m_rows; }
    int height() const { return m_rows.isEmpty() ? 0 : m_rows.last().top + m_rows.last().height; }

    void setRows(QList<Row> rows)
    {
        m_rows = std::move(rows);
        int top = 0;
        for (Row &row : m_rows) {
            row.top = top;
            top += row.height;
        }
        show(firstVisible(), lastVisible());
    }

    qreal visibleTop() const { return m_visibleTop; }
    void setVisible(qreal top, qreal bottom)
    {
        m_visibleTop = top;
        m_visibleBottom = bottom;
        const qsizetype first = firstVisible();
        const qsizetype last = lastVisible();
        if (first != m_first || last != m_last) {
            show(first, last);
        }
    }

private:
    qsizetype firstVisible() const
    {
        if (m_rows.size() <= m_few) {
            return 0;
        }
        const auto endsAbove = [&](const Row &row) {
            return row.top + row.height <= m_visibleTop - m_margin;
        };
        return std::distance(m_rows.begin(), std::ranges::partition_point(m_rows, endsAbove));
    }
    qsizetype lastVisible() const
    {
        if (m_rows.size() <= m_few) {
            return m_rows.size();
        }
        const auto startsAbove = [&](const Row &row) {
            return row.top < m_visibleBottom + m_margin;
        };
        return std::distance(m_rows.begin(), std::ranges::partition_point(m_rows, startsAbove));
    }
    void show(qsizetype first, qsizetype last)
    {
        m_first = first;
        m_last = std::max(first, last);
        m_model.setRows(m_rows.sliced(m_first, m_last - m_first));
    }

    qsizetype m_few;
    int m_margin;
    KeyedListModel<Row, Traits> m_model;
    QList<Row> m_rows;
    qreal m_visibleTop = 0;
    qreal m_visibleBottom = 0;
    qsizetype m_first = 0;
    qsizetype m_last = 0;
};

} // namespace ostra
