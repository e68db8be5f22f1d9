#include "Models/Command.h"

#include <QStringEncoder>

#include <nlohmann/json.hpp>

namespace ostra {

namespace {

using Json = nlohmann::ordered_json;

/// UTF-8 in any case: half a surrogate pair, which file names on some systems may hold, becomes a
/// replacement character.
Json toJson(const QString &text)
{
    QStringEncoder encoder(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
    const QByteArray utf8 = encoder.encode(text);
    return std::string(utf8.constData(), static_cast<std::size_t>(utf8.size()));
}

Json toJson(const IPCMergeKeySide &side)
{
    Json json = Json::object();
    json["key_id"] = toJson(side.key_id);
    json["side"] = toJson(side.side);
    return json;
}

template <typename Value>
Json toJson(const QList<Value> &values)
{
    Json json = Json::array();
    for (const Value &value : values) {
        json.push_back(toJson(value));
    }
    return json;
}

template <typename Value>
void write(Json &json, const char *key, const std::optional<Value> &value)
{
    if (value) {
        json[key] = toJson(*value);
    }
}

} // namespace

QByteArray encode(const IPCCommand &command)
{
    Json json = Json::object();
    json["cmd"] = toJson(command.cmd);
    write(json, "repo", command.repo);
    write(json, "branch", command.branch);
    write(json, "name", command.name);
    write(json, "message", command.message);
    write(json, "path", command.path);
    write(json, "file", command.file);
    write(json, "base", command.base);
    write(json, "head", command.head);
    write(json, "from", command.from);
    write(json, "to", command.to);
    write(json, "into", command.into);
    write(json, "conflict_id", command.conflict_id);
    write(json, "choice", command.choice);
    write(json, "note", command.note);
    write(json, "approved_ids", command.approved_ids);
    write(json, "picks", command.picks);
    write(json, "fallback_sides", command.fallback_sides);
    write(json, "fingerprint", command.fingerprint);
    return QByteArray::fromStdString(json.dump());
}

} // namespace ostra
