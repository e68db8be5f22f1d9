#include "TraceLine.h"

#include <nlohmann/json.hpp>

namespace ostra {

namespace {

using Json = nlohmann::ordered_json;

constexpr qsizetype kLongestText = 240;
constexpr qsizetype kKeptOfAName = 3;
/// Above this a line is only counted: reading it would cost more than the request.
constexpr qsizetype kLongestReadLine = 64 * 1024;

bool isVocabulary(const std::string &key)
{
    return key == "cmd" || key == "type" || key == "event" || key == "choice" || key == "side";
}

void shorten(Json &value)
{
    if (value.is_string()) {
        const QString text = QString::fromStdString(value.get<std::string>());
        if (text.size() > kKeptOfAName) {
            value = (text.left(kKeptOfAName) + u'…').toStdString();
        }
        return;
    }
    for (auto it = value.begin(); it != value.end(); ++it) {
        if (value.is_array() || !isVocabulary(it.key())) {
            shorten(*it);
        }
    }
}

} // namespace

QString traceLine(DaemonClient::Direction direction, QByteArrayView line)
{
    const QString arrow =
        direction == DaemonClient::Direction::sent ? QStringLiteral("→ ") : QStringLiteral("← ");
    if (line.size() > kLongestReadLine) {
        return arrow + QStringLiteral("(%1 bytes)").arg(line.size());
    }
    Json json = Json::parse(line.begin(), line.end(), nullptr, false);
    if (json.is_discarded()) {
        return arrow + QStringLiteral("(%1 bytes that are no JSON)").arg(line.size());
    }
    if (json.is_structured()) {
        shorten(json);
    }
    QString text =
        QString::fromStdString(json.dump(-1, ' ', false, Json::error_handler_t::replace));
    if (text.size() > kLongestText) {
        text = text.left(kLongestText) + u'…';
    }
    return arrow + text;
}

} // namespace ostra
