// Stand-ins for the host's two automation objects, "VELMORAXI.LexiconServer"
// (texts by section, id, kind and language) and "VELMORAXI.OptionsManager"
// (the user's language). A host process registers them for itself; the texts
// come from an INI file:
//   [<SECTION>_<language>]   e.g. [ZEMBLAX_1033]
//   <kind>.<id>=text         e.g. 2.15045=Exposure
//   <kind>.key.<text>=text   lookups by key
#pragma once
#include <windows.h>
#include <ole2.h>
#include <string>

namespace hoststub {

struct AutomationOptions {
    int userLanguage = 1031;
    std::string lexiconFile;      // the INI file of texts; empty: every lookup fails
    bool registerLexicon = true;  // false: the module finds no text server
    bool registerOptions = true;  // false: the module finds no options manager
};

// Registers the objects for this process: class objects, and the ProgIDs
// where no registration exists yet (a host's own stays untouched). Revoking
// removes only what was registered here. COM must be initialised on the
// calling thread.
bool RegisterAutomation(const AutomationOptions& options);
void RevokeAutomation();

// Counters for tests: how often the module created the objects and opened
// sections, and the database path it last set.
struct AutomationStats {
    int serversCreated = 0;
    int optionsCreated = 0;
    int sectionsOpened = 0;
    int sectionsClosed = 0;
    int lookups = 0;
    std::string lastDatabasePath;
};
AutomationStats& Stats();

}  // namespace hoststub
