#include "Protocol/CommandDecoder.h"

#include <simdjson.h>

#include <array>
#include <string_view>
#include <variant>

namespace ostra {

namespace {

using Json = simdjson::dom::element;
using Text = std::optional<QString> IPCCommand::*;
using Texts = std::optional<QStringList> IPCCommand::*;
using Sides = std::optional<QList<IPCMergeKeySide>> IPCCommand::*;

struct Member {
    std::string_view key;
    std::variant<Text, Texts, Sides> field;
};

const std::array kMembers = {
    Member{"repo", &IPCCommand::repo},
    Member{"branch", &IPCCommand::branch},
    Member{"name", &IPCCommand::name},
    Member{"message", &IPCCommand::message},
    Member{"path", &IPCCommand::path},
    Member{"file", &IPCCommand::file},
    Member{"base", &IPCCommand::base},
    Member{"head", &IPCCommand::head},
    Member{"from", &IPCCommand::from},
    Member{"to", &IPCCommand::to},
    Member{"into", &IPCCommand::into},
    Member{"conflict_id", &IPCCommand::conflict_id},
    Member{"choice", &IPCCommand::choice},
    Member{"note", &IPCCommand::note},
    Member{"approved_ids", &IPCCommand::approved_ids},
    Member{"picks", &IPCCommand::picks},
    Member{"fallback_sides", &IPCCommand::fallback_sides},
    Member{"fingerprint", &IPCCommand::fingerprint},
};

bool read(Json json, QString &value)
{
    std::string_view text;
    if (json.get(text) != simdjson::SUCCESS) {
        return false;
    }
    value = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    return true;
}

bool read(Json json, IPCMergeKeySide &value)
{
    simdjson::dom::object object;
    if (json.get(object) != simdjson::SUCCESS || object.size() != 2) {
        return false;
    }
    Json keyId;
    Json side;
    return object["key_id"].get(keyId) == simdjson::SUCCESS &&
           object["side"].get(side) == simdjson::SUCCESS && read(keyId, value.key_id) &&
           read(side, value.side);
}

template <typename T>
bool read(Json json, QList<T> &values)
{
    simdjson::dom::array array;
    if (json.get(array) != simdjson::SUCCESS) {
        return false;
    }
    for (const Json element : array) {
        T value;
        if (!read(element, value)) {
            return false;
        }
        values.append(std::move(value));
    }
    return true;
}

/// What is wrong with the member; nothing if it was read.
std::optional<QString> readMember(std::string_view key, Json json, IPCCommand &command)
{
    const QString shown =
        QString::fromUtf8(key.data(), static_cast<qsizetype>(std::min<size_t>(key.size(), 60)));
    const auto wrongType = QStringLiteral("The member “%1” has the wrong type.").arg(shown);
    const auto twice = QStringLiteral("The member “%1” is given twice.").arg(shown);
    if (key == "cmd") {
        if (!command.cmd.isEmpty()) {
            return twice;
        }
        return read(json, command.cmd) ? std::nullopt : std::optional(wrongType);
    }
    for (const Member &member : kMembers) {
        if (member.key == key) {
            return std::visit(
                [&](auto field) -> std::optional<QString> {
                    if (command.*field) {
                        return twice;
                    }
                    return read(json, (command.*field).emplace()) ? std::nullopt
                                                                  : std::optional(wrongType);
                },
                member.field);
        }
    }
    return QStringLiteral("The member “%1” is not known.").arg(shown);
}

} // namespace

tl::expected<IPCCommand, QString> decodeCommand(QByteArrayView line)
{
    thread_local simdjson::dom::parser parser(kLongestRequest);
    simdjson::dom::object object;
    const auto status = parser.parse(line.data(), static_cast<size_t>(line.size())).get(object);
    if (status == simdjson::UTF8_ERROR) {
        return tl::unexpected(QStringLiteral("The request is not valid UTF-8."));
    }
    if (status != simdjson::SUCCESS) {
        return tl::unexpected(QStringLiteral("The request is not a JSON object."));
    }
    IPCCommand command;
    for (const auto &[key, value] : object) {
        if (auto wrong = readMember(key, value, command)) {
            return tl::unexpected(std::move(*wrong));
        }
    }
    if (command.cmd.isEmpty()) {
        return tl::unexpected(QStringLiteral("The request names no command."));
    }
    return command;
}

} // namespace ostra
