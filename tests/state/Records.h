#pragma once

#include "support/ScriptedService.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace ostra {

/// A "file_states" element.
inline QJsonObject songRecord(const QString &filename, bool modified = false)
{
    return {{QStringLiteral("filename"), filename},
            {QStringLiteral("branch"), QStringLiteral("main")},
            {QStringLiteral("is_modified"), modified}};
}

/// A "repos" element; the folder's name is the project's unless told otherwise.
inline QJsonObject repoRecord(const QString &path, const QString &name = {},
                              const QJsonArray &songs = {}, bool dirty = false)
{
    return {{QStringLiteral("name"), name.isEmpty() ? path.section(u'/', -1) : name},
            {QStringLiteral("path"), path},
            {QStringLiteral("current_branch"), QStringLiteral("main")},
            {QStringLiteral("head_commit"), QStringLiteral("c0ffee")},
            {QStringLiteral("head_message"), QStringLiteral("save")},
            {QStringLiteral("is_dirty"), dirty},
            {QStringLiteral("file_states"), songs}};
}

inline QByteArray statusLine(const QJsonArray &repos, const QJsonArray &discovered = {})
{
    return QJsonDocument(QJsonObject{{QStringLiteral("type"), QStringLiteral("status")},
                                     {QStringLiteral("repos"), repos},
                                     {QStringLiteral("discovered"), discovered}})
        .toJson(QJsonDocument::Compact);
}

inline Answer statusAnswer(const QJsonArray &repos, const QJsonArray &discovered = {})
{
    return Answer::line(statusLine(repos, discovered));
}

inline QByteArray saveEvent(const QString &repo, const QString &path, int deltaCount)
{
    QJsonObject event{{QStringLiteral("event"), QStringLiteral("save_detected")},
                      {QStringLiteral("repo"), repo},
                      {QStringLiteral("commit"), QStringLiteral("c0ffee")},
                      {QStringLiteral("delta_count"), deltaCount}};
    if (!path.isEmpty()) {
        event.insert(QStringLiteral("path"), path);
    }
    return QJsonDocument(event).toJson(QJsonDocument::Compact);
}

} // namespace ostra
