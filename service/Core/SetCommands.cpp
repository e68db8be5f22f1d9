#include "Core/SetCommands.h"

#include "Core/Projects.h"
#include "Protocol/CommandServer.h"
#include "Sets/SetDiff.h"
#include "Sets/SetMerge.h"

namespace ostra {

namespace {

using Members = QList<std::optional<QString> IPCCommand::*>;

bool lacks(const IPCCommand &command, const Members &needed, const Responder &respond)
{
    for (const auto member : needed) {
        if (!(command.*member)) {
            respond.error(QStringLiteral("“%1” lacks a member.").arg(command.cmd));
            return true;
        }
    }
    return false;
}

/// "~2" alone counts from the present state.
QString fromHead(const QString &revision)
{
    return revision.startsWith(u'~') ? QStringLiteral("HEAD") + revision : revision;
}

Outcome<Projects::Thought> diff(HistoryReader &reader, const SongSnapshot &song,
                                const QString &base, const QString &head)
{
    const auto before = reader.resolve(song, fromHead(base));
    const auto after = reader.resolve(song, fromHead(head));
    if (!before || !after) {
        return tl::unexpected(!before ? before.error() : after.error());
    }
    if (*before == *after) {
        return [] {
            return Reply::DiffResult{};
        };
    }
    if (!*before || !*after) { // there is nothing before the first save
        const auto kind = *after ? QStringLiteral("add") : QStringLiteral("remove");
        return [kind] {
            return Reply::DiffResult{
                {{kind, QStringLiteral("Tracks"), QStringLiteral("First save of the song")}}};
        };
    }
    const auto xmlOf = [&](const ObjectId &commit) {
        return reader.history().and_then(
            [&](const History *history) { return history->xml(commit); });
    };
    const auto left = xmlOf(**before);
    const auto right = left ? xmlOf(**after) : left;
    if (!right) {
        return tl::unexpected(right.error());
    }
    return [left = *left, right = *right]() -> IPCResponse {
        const auto old = readSetXml(left);
        const auto now = old ? readSetXml(right) : old;
        return now ? IPCResponse(Reply::DiffResult{diffSets(*old, *now)})
                   : IPCResponse(Reply::Error{now.error().message});
    };
}

Outcome<Projects::Thought> plan(HistoryReader &reader, const SongSnapshot &song,
                                const QString &from, const QString &into)
{
    const auto theirs = song.tip(from);
    const auto ours = song.tip(into);
    if (!theirs || !ours) {
        return failure(QStringLiteral("This song has no variation “%1”.")
                           .arg((theirs ? into : from).left(80)));
    }
    if (into != song.current) {
        return failure(
            QStringLiteral("Switch to “%1” first: a merge goes into the current variation.")
                .arg(into));
    }
    return mergeInputs(reader, song.file, *ours, *theirs).map([](MergeInputs &&inputs) {
        return Projects::Thought(
            [inputs = std::move(inputs)] { return IPCResponse(planMerge(inputs)); });
    });
}

void addMergeCommands(CommandServer &server, Projects &projects)
{
    server.handle(QStringLiteral("merge_plan"),
                  [&](const IPCCommand &command, const Responder &respond) {
                      if (lacks(command, {&IPCCommand::from, &IPCCommand::into}, respond)) {
                          return;
                      }
                      projects.think(command, respond,
                                     [from = *command.from, into = *command.into](
                                         HistoryReader &reader, const SongSnapshot &song) {
                                         return plan(reader, song, from, into);
                                     });
                  });
    server.handle(QStringLiteral("merge_apply"), [&](const IPCCommand &command,
                                                     const Responder &respond) {
        if (lacks(command, {&IPCCommand::file, &IPCCommand::from, &IPCCommand::into}, respond)) {
            return;
        }
        const MergeDecisions decisions{command.approved_ids.value_or(QStringList()),
                                       command.picks.value_or(QList<IPCMergeKeySide>()),
                                       command.fallback_sides.value_or(QList<IPCMergeKeySide>()),
                                       command.fingerprint};
        projects.write(command, respond, [command, decisions](Project &project) {
            return project.merge(*command.file, *command.from, *command.into, decisions)
                .map([](const MergeResult &result) { return IPCResponse(result); });
        });
    });
    server.handle(QStringLiteral("merge_pending"),
                  [&](const IPCCommand &command, const Responder &respond) {
                      projects.write(command, respond, [](Project &project) {
                          return Outcome<IPCResponse>(project.pendingMerge());
                      });
                  });
    server.handle(QStringLiteral("merge_abort"),
                  [&](const IPCCommand &command, const Responder &respond) {
                      projects.write(command, respond, [](Project &project) {
                          return project.abortMerge().map([] { return IPCResponse(Reply::Ok{}); });
                      });
                  });
    server.handle(
        QStringLiteral("resolve"), [&](const IPCCommand &command, const Responder &respond) {
            if (lacks(command, {&IPCCommand::conflict_id, &IPCCommand::choice}, respond)) {
                return;
            }
            projects.write(command, respond, [command](Project &project) {
                return project.resolveConflict(*command.conflict_id, *command.choice).map([] {
                    return IPCResponse(Reply::Ok{});
                });
            });
        });
}

} // namespace

void addSetCommands(CommandServer &server, Projects &projects)
{
    server.handle(QStringLiteral("diff_track"),
                  [&](const IPCCommand &command, const Responder &respond) {
                      if (lacks(command, {&IPCCommand::base, &IPCCommand::head}, respond)) {
                          return;
                      }
                      projects.think(command, respond,
                                     [base = *command.base, head = *command.head](
                                         HistoryReader &reader, const SongSnapshot &song) {
                                         return diff(reader, song, base, head);
                                     });
                  });
    addMergeCommands(server, projects);
}

} // namespace ostra
