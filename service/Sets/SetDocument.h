#pragma once

#include "Sets/Container.h"
#include "Sets/SetError.h"
#include "Sets/SetModel.h"

#include <QByteArray>
#include <QByteArrayView>

#include <memory>
#include <pugixml.hpp>

namespace ostra {

/// The bytes [begin, end) of a text.
struct Span {
    qsizetype begin = 0;
    qsizetype end = 0;
    bool operator==(const Span &) const = default;
};

/// The text of a set and its parsed tree. The tree is parsed inside a copy of the text, so every
/// name and value in it still stands at its offset and an edit can be cut out of the original
/// bytes; nothing is ever serialised again. Immutable once made.
class SetDocument {
public:
    static SetResult<std::shared_ptr<const SetDocument>> parse(QByteArray xml, Container container);

    SetDocument(const SetDocument &) = delete;
    SetDocument &operator=(const SetDocument &) = delete;

    const QByteArray &xml() const { return m_xml; }
    const Container &container() const { return m_container; }
    const SetModel &model() const { return m_model; }
    pugi::xml_node root() const { return m_tree.document_element(); }
    QByteArrayView minorVersion() const { return root().attribute("MinorVersion").value(); }
    /// Whether the text holds what Live never writes: comments, CDATA, a document type, text
    /// between elements. Such a document may be compared but not edited.
    bool isForeign() const { return m_foreign; }

    /// From the "<" of an element to behind its last ">".
    Span span(pugi::xml_node element) const;
    QByteArrayView text(pugi::xml_node element) const;
    /// Where an attribute's value stands. Only for values without escapes, such as numbers.
    Span valueSpan(pugi::xml_attribute attribute) const;
    QByteArrayView slice(Span span) const
    {
        return QByteArrayView(m_xml).sliced(span.begin, span.end - span.begin);
    }
    QByteArrayView newline() const;

private:
    SetDocument() = default;
    qsizetype offset(const char *inTree) const { return inTree - m_parsed.constData(); }
    qsizetype end(pugi::xml_node element) const;

    QByteArray m_xml;
    QByteArray m_parsed; ///< the copy that the tree points into
    Container m_container;
    pugi::xml_document m_tree;
    SetModel m_model;
    bool m_foreign = false;
};

} // namespace ostra
