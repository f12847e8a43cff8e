// Puts a stand-in in place of one function that a module imports from a system DLL,
// for the patch's lifetime. Only that module's import table changes: its code calls
// the stand-in, while every other module, the system's own DLLs included, keeps the
// real function. The module is the program itself unless one is named, such as an
// action DLL loaded for the test. For the failures the platform won't produce on
// demand, such as a failed allocation or a registry key refused for writing.
//
//   ImportPatch patch("kernel32.dll", "LocalAlloc", reinterpret_cast<void*>(failingAlloc));
//   ... code under test ...        // the stand-in answers; patch.original() is the real one
#pragma once
#include <windows.h>

class ImportPatch
{
public:
    // Throws std::runtime_error when the module doesn't import that function.
    ImportPatch(const char* dll, const char* function, void* standIn, HMODULE module = nullptr);
    ~ImportPatch();
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    void* original() const { return saved; }

private:
    void** slot;
    void* saved;
};
