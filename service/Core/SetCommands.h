#pragma once

namespace ostra {

class CommandServer;
class Projects;

/// The commands that look into sets: what changed between two states, and merging variations.
void addSetCommands(CommandServer &server, Projects &projects);

} // namespace ostra
