#include "Design/MenuOptions.h"

#include <QJSValue>
#include <QSequentialIterable>

#include <algorithm>

namespace ostra {

QList<MenuOptions::Option> MenuOptions::read(const QVariant &source)
{
    const QVariant plain = source.metaType() == QMetaType::fromType<QJSValue>()
                               ? source.value<QJSValue>().toVariant()
                               : source;
    QList<Option> options;
    if (plain.canConvert<QVariantList>()) {
        for (const QVariant &entry : plain.value<QSequentialIterable>()) {
            const QVariantMap fields = entry.toMap();
            options += fields.isEmpty() ? Option{entry.toString(), entry.toString()}
                                        : Option{fields.value(QStringLiteral("tag")).toString(),
                                                 fields.value(QStringLiteral("label")).toString()};
        }
    }
    return options;
}

void MenuOptions::setSource(const QVariant &source)
{
    m_source = source;
    QList<Option> options = read(source);
    if (options != m_options) {
        // Drop-downs are short and closed while their options change: a whole new list loses
        // neither place nor focus.
        beginResetModel();
        m_options = std::move(options);
        endResetModel();
        emit selectionChanged();
    }
    emit sourceChanged();
}

void MenuOptions::setSelection(const QString &tag)
{
    if (m_selection == tag) {
        return;
    }
    m_selection = tag;
    if (!m_options.isEmpty()) {
        emit dataChanged(index(0), index(rowCount() - 1), {Selected});
    }
    emit selectionChanged();
}

int MenuOptions::selectedRow() const
{
    const auto found = std::ranges::find(m_options, m_selection, &Option::tag);
    return found == m_options.end() ? -1 : static_cast<int>(found - m_options.begin());
}

QString MenuOptions::selectedLabel() const
{
    const int row = selectedRow();
    return row < 0 ? QString() : m_options.at(row).label;
}

QString MenuOptions::tagAt(int row) const
{
    return row >= 0 && row < m_options.size() ? m_options.at(row).tag : QString();
}

int MenuOptions::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_options.size());
}

QVariant MenuOptions::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const Option &option = m_options.at(index.row());
    switch (role) {
    case Tag:
        return option.tag;
    case Label:
    case Qt::DisplayRole:
        return option.label;
    case Selected:
        return index.row() == selectedRow();
    default:
        return {};
    }
}

QHash<int, QByteArray> MenuOptions::roleNames() const
{
    return {{Tag, "tag"}, {Label, "label"}, {Selected, "selected"}};
}

} // namespace ostra
