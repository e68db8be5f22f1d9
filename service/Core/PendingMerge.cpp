#include "Core/PendingMerge.h"

#include "Store/AtomicFile.h"

#include <QFile>

#include <nlohmann/json.hpp>

namespace ostra {

namespace {

using Json = nlohmann::ordered_json;

std::string text(const QString &value)
{
    return value.toStdString();
}

QString readText(const Json &object, const char *key)
{
    return QString::fromStdString(object.at(key).get<std::string>());
}

Json writeSides(const QList<IPCMergeKeySide> &sides)
{
    Json list = Json::array();
    for (const auto &choice : sides) {
        list.push_back({{"key_id", text(choice.key_id)}, {"side", text(choice.side)}});
    }
    return list;
}

QList<IPCMergeKeySide> readSides(const Json &list)
{
    QList<IPCMergeKeySide> sides;
    for (const auto &choice : list) {
        sides.append({readText(choice, "key_id"), readText(choice, "side")});
    }
    return sides;
}

ObjectId readId(const Json &object, const char *key)
{
    return ObjectId::fromHex(readText(object, key)).value_or(ObjectId{});
}

} // namespace

std::optional<PendingMerge> PendingMerge::load(const QString &path)
{
    const auto content = QFile::exists(path) ? readWholeFile(path) : failure({});
    if (!content) {
        return std::nullopt;
    }
    try {
        const auto json = Json::parse(content->constData(), content->constData() + content->size());
        PendingMerge merge;
        merge.file = readText(json, "file");
        merge.from = readText(json, "from");
        merge.into = readText(json, "into");
        merge.fromCommit = readId(json, "from_commit");
        merge.intoCommit = readId(json, "into_commit");
        for (const auto &id : json.at("approved_ids")) {
            merge.decisions.approvedIds.append(QString::fromStdString(id.get<std::string>()));
        }
        merge.decisions.picks = readSides(json.at("picks"));
        merge.decisions.fallbackSides = readSides(json.at("fallback_sides"));
        for (const auto &conflict : json.at("conflicts")) {
            merge.conflicts.append({readText(conflict, "id"), readText(conflict, "track_id")});
        }
        return merge;
    } catch (const Json::exception &) {
        return std::nullopt;
    }
}

Outcome<void> PendingMerge::save(const QString &path) const
{
    Json json{{"file", text(file)},
              {"from", text(from)},
              {"into", text(into)},
              {"from_commit", text(fromCommit.hex())},
              {"into_commit", text(intoCommit.hex())},
              {"approved_ids", Json::array()},
              {"picks", writeSides(decisions.picks)},
              {"fallback_sides", writeSides(decisions.fallbackSides)},
              {"conflicts", Json::array()}};
    for (const auto &id : decisions.approvedIds) {
        json["approved_ids"].push_back(text(id));
    }
    for (const auto &conflict : conflicts) {
        json["conflicts"].push_back(
            {{"id", text(conflict.id)}, {"track_id", text(conflict.trackId)}});
    }
    const auto dump = json.dump(1, '\t', false, Json::error_handler_t::replace) + '\n';
    return replaceFile(path, QByteArrayView(dump.data(), static_cast<qsizetype>(dump.size())));
}

} // namespace ostra
