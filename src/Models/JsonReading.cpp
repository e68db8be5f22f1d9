#include "Models/JsonReading.h"

#include <QRegularExpression>

#include <cmath>
#include <string>

namespace ostra::json {

namespace {

using simdjson::dom::element;
using simdjson::dom::element_type;

// A parser that has grown beyond this is not kept: it holds many times the text's size.
constexpr std::size_t kLargestKeptCapacity = 1 << 20;

constexpr double kIntegerLimit = 0x1p63;

thread_local std::unique_ptr<simdjson::dom::parser> t_spareParser; // NOLINT

std::unique_ptr<simdjson::dom::parser> takeParser()
{
    return t_spareParser ? std::move(t_spareParser) : std::make_unique<simdjson::dom::parser>();
}

bool isNumberCharacter(char c)
{
    return (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.' || c == 'e' || c == 'E';
}

bool isNumberBeyondIntegers(const QString &token)
{
    static const QRegularExpression kNumber(
        QStringLiteral(R"(\A-?(?:0|[1-9]\d*+)(?:\.\d++)?(?:[eE][+-]?\d++)?\z)"));
    return std::abs(token.toDouble()) >= kIntegerLimit && kNumber.match(token).hasMatch();
}

/// The text with every number that no 64-bit type holds replaced by a smaller one that is still
/// out of range for an integer. Such a number under a key that nobody reads must not cost the
/// whole text, but the parser refuses it wherever it stands.
std::string withNumbersInRange(QByteArrayView text)
{
    std::string result;
    result.reserve(static_cast<std::size_t>(text.size()));
    bool inString = false;
    for (qsizetype i = 0; i < text.size();) {
        const char c = text[i];
        if (inString || !isNumberCharacter(c) || c == 'e' || c == 'E') {
            if (c == '\\' && inString && i + 1 < text.size()) {
                result += c;
                ++i;
            } else if (c == '"') {
                inString = !inString;
            }
            result += text[i];
            ++i;
            continue;
        }
        const qsizetype start = i;
        while (i < text.size() && isNumberCharacter(text[i])) {
            ++i;
        }
        const QByteArrayView token = text.sliced(start, i - start);
        result += isNumberBeyondIntegers(QString::fromLatin1(token))
                      ? "9e99"
                      : std::string_view(token.data(), static_cast<std::size_t>(token.size()));
    }
    return result;
}

DecodingError textError(simdjson::error_code code)
{
    switch (code) {
    case simdjson::CAPACITY:
        return {{}, QStringLiteral("too long")};
    case simdjson::MEMALLOC:
        return {{}, QStringLiteral("not enough memory")};
    case simdjson::DEPTH_ERROR:
        return {{}, QStringLiteral("nested too deeply")};
    case simdjson::UTF8_ERROR:
        return {{}, QStringLiteral("not valid UTF-8")};
    case simdjson::INCORRECT_TYPE:
        return {{}, QStringLiteral("not a JSON object")};
    default:
        return {{}, QStringLiteral("not valid JSON")};
    }
}

Decoded<simdjson::dom::object> parse(simdjson::dom::parser &parser, QByteArrayView text)
{
    simdjson::dom::element root;
    auto error = parser.parse(text.data(), static_cast<std::size_t>(text.size())).get(root);
    if (error == simdjson::NUMBER_ERROR) {
        error = parser.parse(withNumbersInRange(text)).get(root);
    }
    simdjson::dom::object object;
    if (error == simdjson::SUCCESS) {
        error = root.get(object);
    }
    if (error != simdjson::SUCCESS) {
        return tl::unexpected(textError(error));
    }
    return object;
}

QString typeName(element_type type)
{
    switch (type) {
    case element_type::ARRAY:
        return QStringLiteral("array");
    case element_type::OBJECT:
        return QStringLiteral("object");
    case element_type::INT64:
    case element_type::UINT64:
        return QStringLiteral("integer");
    case element_type::DOUBLE:
        return QStringLiteral("decimal number");
    case element_type::STRING:
        return QStringLiteral("string");
    case element_type::BOOL:
        return QStringLiteral("boolean");
    case element_type::NULL_VALUE:
        break;
    }
    return QStringLiteral("null");
}

bool isBeyondIntegers(element element)
{
    return element.type() == element_type::UINT64 ||
           (element.type() == element_type::DOUBLE && std::abs(double(element)) >= kIntegerLimit);
}

} // namespace

Document::Document(QByteArrayView text) : m_parser(takeParser()), m_root(parse(*m_parser, text)) {}

Document::~Document()
{
    if (m_parser->capacity() <= kLargestKeptCapacity) {
        t_spareParser = std::move(m_parser);
    }
}

bool Reader::read(element element, QString &value)
{
    std::string_view text;
    if (element.get(text) != simdjson::SUCCESS) {
        return failExpecting("string", element);
    }
    value = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    return true;
}

bool Reader::read(element element, bool &value)
{
    return element.get(value) == simdjson::SUCCESS || failExpecting("boolean", element);
}

bool Reader::read(element element, qint64 &value)
{
    if (element.type() == element_type::INT64) {
        value = int64_t(element);
        return true;
    }
    if (isBeyondIntegers(element)) {
        return fail(QStringLiteral("integer out of range"));
    }
    return failExpecting("integer", element);
}

bool Reader::fail(QString reason)
{
    m_error = {{}, std::move(reason)};
    return false;
}

bool Reader::failExpecting(const char *expected, element found)
{
    return fail(QStringLiteral("expected %1, found %2")
                    .arg(QLatin1String(expected), typeName(found.type())));
}

bool Reader::failInside(std::string_view key)
{
    if (!m_error.path.isEmpty() && !m_error.path.startsWith(u'[')) {
        m_error.path.prepend(u'.');
    }
    m_error.path.prepend(QLatin1String(key.data(), static_cast<qsizetype>(key.size())));
    return false;
}

bool Reader::failInside(qsizetype index)
{
    if (!m_error.path.isEmpty() && !m_error.path.startsWith(u'[')) {
        m_error.path.prepend(u'.');
    }
    m_error.path.prepend(QStringLiteral("[%1]").arg(index));
    return false;
}

} // namespace ostra::json
