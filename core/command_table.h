// The six commands of the ribbon.
#pragma once

namespace rendara {

class RendaraPlugin;

// Registers the commands with the CAD system, and keeps their identifiers in the object. Without an object no icons
// are set. Failures of the CAD system's operations are of no consequence.
void registerCommands(RendaraPlugin* pluginOrNull);

}  // namespace rendara
