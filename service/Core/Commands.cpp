#include "Core/Commands.h"

#include "Core/LoginAgent.h"
#include "Core/Projects.h"
#include "Core/SetCommands.h"
#include "Protocol/CommandServer.h"

#include <functional>

namespace ostra {

namespace {

QString text(const std::optional<QString> &member)
{
    return member.value_or(QString());
}

IPCResponse ok()
{
    return Reply::Ok{};
}

void answer(const Responder &respond, const Outcome<void> &outcome)
{
    outcome ? respond(Reply::Ok{}) : respond.error(outcome.error().message);
}

using Members = QList<std::optional<QString> IPCCommand::*>;

/// A command that changes a project. `needed` are the members it cannot do without.
void addWrite(CommandServer &server, Projects &projects, const QString &name, Members needed,
              std::function<Outcome<IPCResponse>(Project &, const IPCCommand &)> work)
{
    server.handle(name, [&projects, needed = std::move(needed), work = std::move(work)](
                            const IPCCommand &command, const Responder &respond) {
        for (const auto member : needed) {
            if (!(command.*member)) {
                respond.error(QStringLiteral("“%1” lacks a member.").arg(command.cmd));
                return;
            }
        }
        projects.write(command, respond,
                       [work, command](Project &project) { return work(project, command); });
    });
}

void addServiceCommands(CommandServer &server, Projects &projects, const LoginAgent &agent)
{
    server.handle(QStringLiteral("status"), [&](const IPCCommand &, Responder respond) {
        projects.status(std::move(respond));
    });
    server.handle(QStringLiteral("rescan"),
                  [&](const IPCCommand &, const Responder &respond) { projects.rescan(respond); });
    server.handle(QStringLiteral("init"), [&](const IPCCommand &command, const Responder &respond) {
        projects.init(text(command.path), respond);
    });
    server.handle(QStringLiteral("watch_path_list"),
                  [&](const IPCCommand &, const Responder &respond) {
                      respond(Reply::WatchPaths{projects.watchPaths()});
                  });
    server.handle(QStringLiteral("watch_path_add"),
                  [&](const IPCCommand &command, const Responder &respond) {
                      projects.addWatchPath(text(command.path), respond);
                  });
    server.handle(QStringLiteral("watch_path_remove"),
                  [&](const IPCCommand &command, const Responder &respond) {
                      projects.removeWatchPath(text(command.path), respond);
                  });
    server.handle(QStringLiteral("launchd_status"),
                  [&](const IPCCommand &, const Responder &respond) {
                      respond(Reply::LaunchdInfo{agent.isInstalled()});
                  });
    server.handle(
        QStringLiteral("launchd_install"),
        [&](const IPCCommand &, const Responder &respond) { answer(respond, agent.install()); });
    server.handle(
        QStringLiteral("launchd_uninstall"),
        [&](const IPCCommand &, const Responder &respond) { answer(respond, agent.uninstall()); });
}

void addReads(CommandServer &server, Projects &projects)
{
    server.handle(
        QStringLiteral("variation_list"), [&](const IPCCommand &command, const Responder &respond) {
            projects.read(command, respond, [](HistoryReader &, const SongSnapshot &song) {
                Reply::Branches reply;
                for (const VariationTip &variation : song.variations) {
                    reply.branches.append(
                        {variation.name, variation.name == song.current, variation.commit.hex()});
                }
                return Outcome<IPCResponse>(std::move(reply));
            });
        });
    server.handle(QStringLiteral("song_version_list"), [&](const IPCCommand &command,
                                                           const Responder &respond) {
        projects.read(command, respond, [](HistoryReader &reader, const SongSnapshot &song) {
            return reader.versions(song).map(
                [](const QList<TagInfo> &tags) { return IPCResponse(Reply::Tags{tags}); });
        });
    });
    server.handle(
        QStringLiteral("song_graph"), [&](const IPCCommand &command, const Responder &respond) {
            projects.read(command, respond, [](HistoryReader &reader, const SongSnapshot &song) {
                return reader.graph(song).map(
                    [](SongGraph graph) { return IPCResponse(std::move(graph)); });
            });
        });
    server.handle(QStringLiteral("version_list"),
                  [&](const IPCCommand &command, const Responder &respond) {
                      if (const auto snapshot = projects.snapshot(command, respond)) {
                          respond(Reply::Versions{snapshot->albums});
                      }
                  });
}

void addSongCommands(CommandServer &server, Projects &projects)
{
    const Members named{&IPCCommand::file, &IPCCommand::name};
    addWrite(server, projects, QStringLiteral("song_version_create"), named,
             [](Project &project, const IPCCommand &command) {
                 return project.createVersion(*command.file, *command.name).map(ok);
             });
    addWrite(server, projects, QStringLiteral("song_version_restore"), named,
             [](Project &project, const IPCCommand &command) {
                 return project.restoreVersion(*command.file, *command.name).map([&] {
                     return IPCResponse(Reply::SongVersionRestored{*command.file, *command.name});
                 });
             });
    addWrite(server, projects, QStringLiteral("song_version_delete"), named,
             [](Project &project, const IPCCommand &command) {
                 return project.deleteVersion(*command.file, *command.name).map(ok);
             });
    addWrite(server, projects, QStringLiteral("song_rename"), {&IPCCommand::file, &IPCCommand::to},
             [](Project &project, const IPCCommand &command) {
                 return project.renameSong(*command.file, *command.to).map([&](const QString &to) {
                     return IPCResponse(Reply::SongRenamed{*command.file, to});
                 });
             });
    addWrite(server, projects, QStringLiteral("song_delete"), {&IPCCommand::file},
             [](Project &project, const IPCCommand &command) {
                 return project.deleteSong(*command.file).map([&] {
                     return IPCResponse(Reply::SongDeleted{*command.file});
                 });
             });
}

void addVariationCommands(CommandServer &server, Projects &projects)
{
    addWrite(server, projects, QStringLiteral("branch_track"),
             {&IPCCommand::file, &IPCCommand::name},
             [](Project &project, const IPCCommand &command) {
                 return project.createVariation(*command.file, *command.name).map(ok);
             });
    addWrite(server, projects, QStringLiteral("checkout_track"),
             {&IPCCommand::file, &IPCCommand::branch},
             [](Project &project, const IPCCommand &command) {
                 return project.switchVariation(*command.file, *command.branch).map(ok);
             });
    addWrite(
        server, projects, QStringLiteral("variation_rename"),
        {&IPCCommand::file, &IPCCommand::from, &IPCCommand::to},
        [](Project &project, const IPCCommand &command) {
            return project.renameVariation(*command.file, *command.from, *command.to)
                .map([&](const QString &to) {
                    return IPCResponse(Reply::VariationRenamed{*command.file, *command.from, to});
                });
        });
    addWrite(server, projects, QStringLiteral("variation_delete"),
             {&IPCCommand::file, &IPCCommand::name},
             [](Project &project, const IPCCommand &command) {
                 return project.deleteVariation(*command.file, *command.name).map([&] {
                     return IPCResponse(Reply::VariationDeleted{*command.file, *command.name});
                 });
             });
}

void addProjectCommands(CommandServer &server, Projects &projects)
{
    server.handle(QStringLiteral("project_rename"),
                  [&](const IPCCommand &command, const Responder &respond) {
                      projects.renameProject(command, respond);
                  });
    addWrite(server, projects, QStringLiteral("version_create"), {&IPCCommand::name},
             [](Project &project, const IPCCommand &command) {
                 return project.createAlbum(*command.name, command.note).map(ok);
             });
    addWrite(server, projects, QStringLiteral("version_restore"), {&IPCCommand::name},
             [](Project &project, const IPCCommand &command) {
                 return project.restoreAlbum(*command.name).map(ok);
             });
}

} // namespace

void addCommands(CommandServer &server, Projects &projects, const LoginAgent &agent)
{
    addServiceCommands(server, projects, agent);
    addReads(server, projects);
    addSongCommands(server, projects);
    addVariationCommands(server, projects);
    addProjectCommands(server, projects);
    addSetCommands(server, projects);
}

} // namespace ostra
