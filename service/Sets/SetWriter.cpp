#include "Sets/SetWriter.h"

#include <algorithm>

namespace ostra {

using pugi::xml_node;

SetWriter::Edit &SetWriter::edit(xml_node element)
{
    for (auto node = element; node; node = node.parent()) {
        if (!m_touched.insert(node.internal_object()).second) {
            break;
        }
    }
    return m_edits[element.internal_object()];
}

void SetWriter::replace(xml_node element, QByteArray text)
{
    edit(element).replacement = std::move(text);
}

void SetWriter::setAttribute(xml_node element, const char *attribute, const QByteArray &value)
{
    if (const auto found = element.attribute(attribute)) {
        const auto span = m_document.valueSpan(found);
        auto &attributes = edit(element).attributes;
        std::erase_if(attributes, [&](const auto &other) { return other.first == span; });
        attributes.emplace_back(span, value);
        std::ranges::sort(attributes, {}, [](const auto &other) { return other.first.begin; });
    }
}

SetWriter::Items &SetWriter::list(xml_node container)
{
    auto &items = edit(container).items;
    if (!items) {
        items.emplace();
        for (const auto child : container.children()) {
            items->push_back({child, {}, numberOf(child.attribute("Time"))});
        }
    }
    return *items;
}

void SetWriter::remove(xml_node element)
{
    std::erase_if(list(element.parent()), [&](const Item &item) { return item.node == element; });
}

bool SetWriter::isRemoved(xml_node element) const
{
    for (auto node = element; node.parent(); node = node.parent()) {
        const auto own = m_edits.find(node.internal_object());
        if (own != m_edits.end() && own->second.replacement) {
            return true;
        }
        const auto around = m_edits.find(node.parent().internal_object());
        if (around == m_edits.end()) {
            continue;
        }
        const auto &items = around->second.items;
        if (items && std::ranges::find(*items, node, &Item::node) == items->end()) {
            return true;
        }
    }
    return false;
}

void SetWriter::copy(Span span, const Edit *edit, QByteArray &out) const
{
    qsizetype at = span.begin;
    if (edit) {
        for (const auto &[place, value] : edit->attributes) {
            if (place.begin >= at && place.end <= span.end) {
                out.append(m_document.slice({at, place.begin})).append(value);
                at = place.end;
            }
        }
    }
    out.append(m_document.slice({at, span.end}));
}

void SetWriter::writeList(xml_node element, const Edit &edit, const Items &items,
                          QByteArray &out) const
{
    const auto span = m_document.span(element);
    const auto lineBegin = m_document.xml().lastIndexOf('\n', span.begin) + 1;
    const auto indent = m_document.newline().toByteArray() +
                        m_document.slice({lineBegin, span.begin}).toByteArray();
    const auto openEnd = m_document.xml().indexOf('>', span.begin) + 1;
    QByteArray open;
    copy({span.begin, openEnd}, &edit, open);
    open.chop(1);
    if (open.endsWith('/')) {
        open.chop(1);
    }
    open = QByteArrayView(open).trimmed().toByteArray();
    if (items.empty()) {
        out.append(open).append(" />");
        return;
    }
    out.append(open).append('>');
    for (const auto &item : items) {
        out.append(indent).append('\t');
        if (item.node) {
            write(item.node, out);
        } else {
            out.append(item.text);
        }
    }
    out.append(indent).append("</").append(element.name()).append('>');
}

void SetWriter::write(xml_node element, QByteArray &out) const
{
    const auto span = m_document.span(element);
    if (!m_touched.contains(element.internal_object())) {
        out.append(m_document.slice(span));
        return;
    }
    const auto found = m_edits.find(element.internal_object());
    const Edit *const edit = found == m_edits.end() ? nullptr : &found->second;
    if (edit && edit->replacement) {
        out.append(*edit->replacement);
        return;
    }
    if (edit && edit->items) {
        writeList(element, *edit, *edit->items, out);
        return;
    }
    qsizetype at = span.begin;
    for (const auto child : element.children()) {
        const auto inner = m_document.span(child);
        copy({at, inner.begin}, edit, out);
        write(child, out);
        at = inner.end;
    }
    copy({at, span.end}, edit, out);
}

QByteArray SetWriter::text(xml_node element) const
{
    QByteArray out;
    write(element, out);
    return out;
}

QByteArray SetWriter::text() const
{
    QByteArray out;
    const auto &xml = m_document.xml();
    out.reserve(xml.size() + xml.size() / 8);
    const auto span = m_document.span(m_document.root());
    out.append(m_document.slice({0, span.begin}));
    write(m_document.root(), out);
    out.append(m_document.slice({span.end, xml.size()}));
    return out;
}

} // namespace ostra
