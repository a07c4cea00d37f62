// Watches the global memory blocks a test hands to the module: the module's
// imports of GlobalLock, GlobalUnlock, GlobalSize and GlobalFree are pointed
// here. A guarded block is a real handle whose contents, as the module sees
// them through GlobalLock, lie right before an inaccessible page. Frees of
// watched handles are counted and the handle is kept alive until the test
// releases it, so that a second free is seen and not passed on.
#pragma once
#include <windows.h>
#include <string>

namespace global_watch {

// Patches the module's imports; false when an import was not found.
bool Install(HMODULE module);

// A block whose GlobalSize is exactly bytes.size(), read by the module from
// guard-page memory.
HGLOBAL MakeGuarded(const std::string& bytes);
// A real movable block of exactly these bytes; an empty one has no memory,
// as GlobalAlloc gives it for size 0.
HGLOBAL MakeExact(const std::string& bytes);

// How often the module freed the handle; -1 when it is not watched.
int Frees(HGLOBAL h);
// Locks of a handle after the module had freed it.
int UseAfterFree();
// Forgets the handle and frees what it holds.
void Release(HGLOBAL h);

}  // namespace global_watch
