#include "Sets/SetDocument.h"

#include "Sets/Set.h"

#include <algorithm>

namespace ostra {

namespace {

// Live nests about 40 levels for racks in racks; everything that walks the tree recurses once per
// level.
constexpr int kMaxDepth = 200;
// What an element and an attribute cost in the tree, and how much of that is granted per byte of
// text. Live's own sets need about one byte per byte.
constexpr qsizetype kNodeCost = 64;
constexpr qsizetype kAttributeCost = 40;
constexpr qsizetype kGrantedCost = 5;
constexpr qsizetype kAlwaysGranted = qsizetype{1024} * 1024;

SetError broken()
{
    return {QStringLiteral("The set is damaged: its XML cannot be read.")};
}

/// What can be known of a text before it is parsed.
struct Markup {
    qsizetype tags = 0;
    qsizetype attributes = 0;
    bool isForeign = false; ///< comments, CDATA, a document type: Live writes none of them

    bool costsTooMuch(qsizetype size) const
    {
        return tags * kNodeCost + attributes * kAttributeCost >
               size * kGrantedCost + kAlwaysGranted;
    }
};

/// Whether `mark` stands behind a "<" anywhere but at the beginning of the text.
bool hasMarkup(QByteArrayView xml, char mark)
{
    for (auto at = xml.indexOf(mark, 2); at >= 0; at = xml.indexOf(mark, at + 1)) {
        if (xml[at - 1] == '<') {
            return true;
        }
    }
    return false;
}

Markup survey(const QByteArray &xml)
{
    Markup markup;
    // In blocks of a fixed size, which compilers turn into a few wide instructions.
    constexpr qsizetype kBlock = 128;
    const char *const text = xml.constData();
    const auto count = [&](qsizetype from, qsizetype length) {
        int tags = 0;
        int attributes = 0;
        for (qsizetype i = 0; i < length; ++i) {
            tags += text[from + i] == '<' ? 1 : 0;
            attributes += text[from + i] == '=' ? 1 : 0;
        }
        markup.tags += tags;
        markup.attributes += attributes;
    };
    qsizetype at = 0;
    for (; at + kBlock <= xml.size(); at += kBlock) {
        count(at, kBlock);
    }
    count(at, xml.size() - at);
    markup.isForeign = hasMarkup(xml, '!') || hasMarkup(xml, '?');
    return markup;
}

/// Stops where the tree is too deep, and notices text between elements.
class TreeCheck : public pugi::xml_tree_walker {
public:
    bool for_each(pugi::xml_node &node) override
    {
        m_isMixed = m_isMixed || node.type() != pugi::node_element;
        return depth() < kMaxDepth;
    }
    bool isMixed() const { return m_isMixed; }

private:
    bool m_isMixed = false;
};

} // namespace

SetResult<std::shared_ptr<const SetDocument>> SetDocument::parse(QByteArray xml,
                                                                 Container container)
{
    if (xml.size() > kMaxInflatedSize) {
        return tl::unexpected(
            SetError{QStringLiteral("The set is too large: it holds more than 512 MB.")});
    }
    const auto markup = survey(xml);
    if (markup.costsTooMuch(xml.size())) {
        return tl::unexpected(broken());
    }
    std::shared_ptr<SetDocument> document(new SetDocument);
    document->m_xml = std::move(xml);
    document->m_parsed = QByteArray(document->m_xml.constData(), document->m_xml.size());
    document->m_container = std::move(container);
    const auto parsed = document->m_tree.load_buffer_inplace(
        document->m_parsed.data(), static_cast<std::size_t>(document->m_parsed.size()),
        pugi::parse_escapes | pugi::parse_embed_pcdata, pugi::encoding_utf8);
    TreeCheck check;
    if (!parsed || !document->m_tree.traverse(check)) {
        return tl::unexpected(broken());
    }
    if (QByteArrayView(document->root().name()) != "Ableton" ||
        !document->root().child("LiveSet")) {
        return tl::unexpected(SetError{QStringLiteral("This is not an Ableton Live set.")});
    }
    document->m_foreign = markup.isForeign || check.isMixed();
    document->m_model = SetModel(document->root());
    return document;
}

qsizetype SetDocument::end(pugi::xml_node element) const
{
    if (const auto next = element.next_sibling()) {
        const bool isText = next.type() != pugi::node_element;
        return m_xml.lastIndexOf('>', isText ? offset(next.value()) - 1 : offset(next.name()) - 2) +
               1;
    }
    const auto parent = element.parent();
    if (parent.type() != pugi::node_element) {
        return m_xml.lastIndexOf('>') + 1;
    }
    const auto closing = m_xml.lastIndexOf("</", end(parent) - 1);
    return closing <= 0 ? 0 : m_xml.lastIndexOf('>', closing - 1) + 1;
}

Span SetDocument::span(pugi::xml_node element) const
{
    const auto begin = offset(element.name()) - 1;
    return {begin, std::max(begin, end(element))};
}

QByteArrayView SetDocument::text(pugi::xml_node element) const
{
    return slice(span(element));
}

Span SetDocument::valueSpan(pugi::xml_attribute attribute) const
{
    const auto begin = offset(attribute.value());
    return {begin, begin + QByteArrayView(attribute.value()).size()};
}

QByteArrayView SetDocument::newline() const
{
    const auto at = m_xml.indexOf('\n');
    return at > 0 && m_xml[at - 1] == '\r' ? "\r\n" : "\n";
}

const QByteArray &Set::xml() const
{
    return m_document->xml();
}

const Container &Set::container() const
{
    return m_document->container();
}

QString Set::creator() const
{
    return QString::fromUtf8(m_document->root().attribute("Creator").value());
}

SetResult<Set> readSet(QByteArrayView file)
{
    return unpackSet(file).and_then([](UnpackedSet unpacked) {
        return readSetXml(std::move(unpacked.xml), std::move(unpacked.container));
    });
}

SetResult<Set> readSetXml(QByteArray xml, Container container)
{
    return SetDocument::parse(std::move(xml), std::move(container))
        .map([](std::shared_ptr<const SetDocument> document) { return Set(std::move(document)); });
}

} // namespace ostra
