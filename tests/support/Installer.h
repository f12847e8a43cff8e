// Running programs and packages the way a person does: msiexec in its own process,
// waited for, and what it left in the registry afterwards. Wine's engine reports a
// crashed or missing action as a success, so tests look at effects, not only at
// exit codes.
#pragma once
#include <windows.h>

#include <string>

// Runs a command line in a process of its own, waits for it, returns its exit code.
DWORD runProgram(const std::wstring& commandLine);
// The same, with the program's standard output read from a pipe into `output`, as
// the bytes it wrote.
DWORD runProgram(const std::wstring& commandLine, std::string& output);
// Quiet install and uninstall with a verbose log beside the package. properties go on
// the command line ("NAME=value ..."); the engine takes their names in upper case.
DWORD installQuietly(const std::wstring& package, const std::wstring& properties = L"");
DWORD uninstallQuietly(const std::wstring& package);
// Whether the verbose log of the package's last installQuietly has a line that ends
// in `line` (the engine may put its own heading before it).
bool installLogged(const std::wstring& package, const std::wstring& line);

// view is 0, KEY_WOW64_32KEY or KEY_WOW64_64KEY.
bool registryKeyExists(HKEY root, const std::wstring& key, REGSAM view = 0);
void deleteRegistryTree(HKEY root, const std::wstring& key, REGSAM view = 0);
