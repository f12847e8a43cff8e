// Puts a stand-in in place of one function that this program imports from a system
// DLL, for the patch's lifetime. Only the program's own import table changes: the
// code linked into the program (the layers under test) calls the stand-in, while
// every other module, the system's own DLLs included, keeps the real function. For
// the failures the platform won't produce on demand, such as a failed allocation.
//
//   ImportPatch patch("kernel32.dll", "LocalAlloc", reinterpret_cast<void*>(failingAlloc));
//   ... code under test ...        // the stand-in answers; patch.original() is the real one
#pragma once
#include <windows.h>

class ImportPatch
{
public:
    // Throws std::runtime_error when the program doesn't import that function.
    ImportPatch(const char* dll, const char* function, void* standIn);
    ~ImportPatch();
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    void* original() const { return saved; }

private:
    void** slot;
    void* saved;
};
