#pragma once

#include "Views/RowColumn.h"

#include <QtQml/qqmlregistration.h>

namespace ostra {

/// A column of rows that open and close, a field or a question in their place: all begin with the
/// same height, and the view tells when one takes another. Only the rows around the visible part
/// exist in the view (see RowColumn). Main thread only.
class RowList : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the models of the pages")
    /// Each with its place as the role "rowTop", in points from the top of the list.
    Q_PROPERTY(QAbstractItemModel *rows READ rows CONSTANT)
    Q_PROPERTY(int height READ height NOTIFY heightChanged)

public:
    using QObject::QObject;

    virtual QAbstractItemModel *rows() = 0;
    virtual int height() const = 0;
    /// In points from the top of the list.
    Q_INVOKABLE virtual void setVisible(qreal top, qreal bottom) = 0;
    Q_INVOKABLE virtual void setRowHeight(const QString &key, qreal height) = 0;

signals:
    void heightChanged();
    /// New rows came before what is on screen, or went: it now stands at `visibleTop`.
    void shifted(qreal visibleTop);
};

/// The rows of one type, which has the members `top` and `height` besides its own.
template <typename Row, typename Traits>
class RowListOf final : public RowList {
public:
    using Column = RowColumn<Row, Traits>;

    /// `few` rows always exist, and those `margin` points beyond the visible part.
    explicit RowListOf(int rowHeight, qsizetype few = Column::kFew, int margin = Column::kMargin)
        : m_rowHeight(rowHeight), m_column(few, margin)
    {
    }

    QAbstractItemModel *rows() override { return m_column.model(); }
    const QList<Row> &allRows() const { return m_column.rows(); }
    int height() const override { return m_column.height(); }

    /// Rows that repeat an earlier key are dropped.
    void setRows(const QList<Row> &rows)
    {
        QHash<QString, int> heights;
        QList<Row> unique;
        heights.reserve(rows.size());
        unique.reserve(rows.size());
        for (const Row &row : rows) {
            const QString key = Traits::key(row);
            if (!heights.contains(key)) {
                heights.insert(key, m_heights.value(key, m_rowHeight));
                unique.append(row);
            }
        }
        m_heights = std::move(heights);
        const Row *seen = firstSeen();
        const QString key = seen != nullptr ? Traits::key(*seen) : QString();
        const int before = seen != nullptr ? seen->top : 0;
        const qreal visibleTop = m_column.visibleTop();
        layOut(std::move(unique));
        const auto now = std::ranges::find(allRows(), key, &Traits::key);
        if (now != allRows().end() && now->top != before) {
            emit shifted(visibleTop + now->top - before);
        }
    }

    void setVisible(qreal top, qreal bottom) override
    {
        m_isChanging = true;
        m_column.setVisible(top, bottom);
        m_isChanging = false;
        layOutWhatIsDue();
    }

    void setRowHeight(const QString &key, qreal height) override
    {
        const auto known = m_heights.find(key);
        if (known == m_heights.end() || *known == qRound(height)) {
            return;
        }
        *known = qRound(height);
        // A row that is being made must not change the list that makes it.
        m_isLayoutDue = true;
        if (!m_isChanging) {
            layOutWhatIsDue();
        }
    }

private:
    /// The first row on screen that stays.
    const Row *firstSeen() const
    {
        const auto isSeen = [this](const Row &row) {
            return row.top + row.height > m_column.visibleTop() &&
                   m_heights.contains(Traits::key(row));
        };
        const auto seen = std::ranges::find_if(allRows(), isSeen);
        return seen == allRows().end() ? nullptr : &*seen;
    }
    void layOutWhatIsDue()
    {
        // Rows that are made by that may have heights of their own again.
        while (m_isLayoutDue) {
            layOut(m_column.rows());
        }
    }
    void layOut(QList<Row> rows)
    {
        const int before = height();
        for (Row &row : rows) {
            row.height = m_heights.value(Traits::key(row));
        }
        m_isLayoutDue = false;
        m_isChanging = true;
        m_column.setRows(std::move(rows));
        m_isChanging = false;
        if (height() != before) {
            emit heightChanged();
        }
        layOutWhatIsDue();
    }

    int m_rowHeight;
    Column m_column;
    QHash<QString, int> m_heights; ///< of every row
    bool m_isChanging = false;
    bool m_isLayoutDue = false;
};

} // namespace ostra
