#pragma once

#include "Sets/SetDocument.h"

#include <QByteArray>

#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace ostra {

/// Collects edits of a document and writes its text with them. What no edit touches comes out as
/// the very bytes that stood there. Edits inside a replaced element are lost with it.
class SetWriter {
public:
    /// A child of an edited list: one that stood there, or a new text.
    struct Item {
        pugi::xml_node node;
        QByteArray text;
        double order = 0; ///< for lists that are sorted by time; no meaning here
    };
    using Items = std::vector<Item>;

    explicit SetWriter(const SetDocument &document) : m_document(document) {}

    bool isClean() const { return m_touched.empty(); }
    void replace(pugi::xml_node element, QByteArray text);
    void setAttribute(pugi::xml_node element, const char *attribute, const QByteArray &value);
    void setValue(pugi::xml_node element, const QByteArray &value)
    {
        setAttribute(element, "Value", value);
    }
    /// The children to write, at first those of the document.
    Items &list(pugi::xml_node container);
    void remove(pugi::xml_node element);
    bool isRemoved(pugi::xml_node element) const;

    QByteArray text(pugi::xml_node element) const;
    QByteArray text() const;

private:
    struct Edit {
        std::optional<QByteArray> replacement;
        std::optional<Items> items;
        std::vector<std::pair<Span, QByteArray>> attributes;
    };
    Edit &edit(pugi::xml_node element);
    void write(pugi::xml_node element, QByteArray &out) const;
    void writeList(pugi::xml_node element, const Edit &edit, const Items &items,
                   QByteArray &out) const;
    void copy(Span span, const Edit *edit, QByteArray &out) const;

    const SetDocument &m_document;
    std::unordered_map<const void *, Edit> m_edits;
    std::unordered_set<const void *> m_touched; ///< edited elements and all around them
};

} // namespace ostra
