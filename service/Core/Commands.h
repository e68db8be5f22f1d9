#pragma once

namespace ostra {

class CommandServer;
class LoginAgent;
class Projects;

/// Teaches the server the commands of the catalogue. `agent` and `projects` outlive the server.
/// Further commands are added the same way: CommandServer::handle() with Projects::read() for what
/// only looks and Projects::write() for what changes a project.
void addCommands(CommandServer &server, Projects &projects, const LoginAgent &agent);

} // namespace ostra
