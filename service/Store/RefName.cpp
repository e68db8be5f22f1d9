#include "Store/RefName.h"

#include <QCryptographicHash>

namespace ostra {

namespace {

constexpr qsizetype kLongest = 200;
constexpr qsizetype kPrefixOfHashed = 120;

bool standsForItself(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
}

void appendEncoded(QByteArray &out, char c, bool dotIsSafe)
{
    if (standsForItself(c) || (c == '.' && dotIsSafe)) {
        out += c;
    } else if (c >= 'A' && c <= 'Z') {
        out += '=';
        out += static_cast<char>(c - 'A' + 'a');
    } else {
        out += '%';
        out += QByteArray(1, c).toHex();
    }
}

} // namespace

QByteArray encodeRefComponent(const QString &name)
{
    const QByteArray text = name.toUtf8();
    QByteArray out;
    qsizetype safeCut = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        // git refuses "..", a leading or closing dot and ".lock" at the end.
        const bool dotIsSafe = i > 0 && i + 1 < text.size() && text[i - 1] != '.' &&
                               !text.sliced(i).startsWith(".lock");
        appendEncoded(out, text[i], dotIsSafe);
        if (out.size() <= kPrefixOfHashed) {
            safeCut = out.size();
        }
    }
    if (out.isEmpty()) {
        return QByteArrayLiteral("%");
    }
    if (out.size() <= kLongest) {
        return out;
    }
    return out.first(safeCut) + "%%" +
           QCryptographicHash::hash(text, QCryptographicHash::Sha1).toHex();
}

std::optional<QString> decodeRefComponent(const QByteArray &component)
{
    if (component == "%") {
        return QString();
    }
    QByteArray text;
    for (qsizetype i = 0; i < component.size(); ++i) {
        const char c = component[i];
        if (c == '=' && i + 1 < component.size()) {
            text += static_cast<char>(component[++i] - 'a' + 'A');
        } else if (c == '%' && i + 2 < component.size() && component[i + 1] != '%') {
            text += QByteArray::fromHex(component.sliced(i + 1, 2));
            i += 2;
        } else {
            text += c;
        }
    }
    const QString name = QString::fromUtf8(text);
    if (encodeRefComponent(name) != component) {
        return std::nullopt;
    }
    return name;
}

} // namespace ostra
