#include "Installer.h"

#include "ActionLibrary.h"

#include <fstream>
#include <stdexcept>

namespace {

// Runs the command line, its standard output into a pipe read into `output` when
// that is given, and waits for it; its exit code.
DWORD run(const std::wstring& commandLine, std::string* output)
{
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    HANDLE readEnd = nullptr;
    if (output) {
        if (!CreatePipe(&readEnd, &startup.hStdOutput, &inheritable, 0))
            throw std::runtime_error("CreatePipe failed: " + std::to_string(GetLastError()));
        SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
        startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    }
    std::wstring writable = commandLine;
    PROCESS_INFORMATION process = {};
    const BOOL started = CreateProcessW(nullptr, &writable[0], nullptr, nullptr, output != nullptr, 0, nullptr,
                                        nullptr, &startup, &process);
    const DWORD error = GetLastError();
    if (output) {
        // Only the child holds the write end now, so reading ends when it exits.
        CloseHandle(startup.hStdOutput);
        output->clear();
        char buffer[4096];
        DWORD got = 0;
        while (started && ReadFile(readEnd, buffer, sizeof buffer, &got, nullptr) && got > 0)
            output->append(buffer, got);
        CloseHandle(readEnd);
    }
    if (!started)
        throw std::runtime_error("could not start (error " + std::to_string(error) +
                                 "): " + std::string(commandLine.begin(), commandLine.end()));
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD exitCode = 0;
    GetExitCodeProcess(process.hProcess, &exitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return exitCode;
}

}  // namespace

DWORD runProgram(const std::wstring& commandLine)
{
    return run(commandLine, nullptr);
}

DWORD runProgram(const std::wstring& commandLine, std::string& output)
{
    return run(commandLine, &output);
}

DWORD installQuietly(const std::wstring& package, const std::wstring& properties)
{
    return runProgram(L"msiexec.exe /i \"" + package + L"\" /qn /l*v \"" + package + L".install.log\" " + properties);
}

DWORD uninstallQuietly(const std::wstring& package)
{
    return runProgram(L"msiexec.exe /x \"" + package + L"\" /qn /l*v \"" + package + L".uninstall.log\"");
}

bool installLogged(const std::wstring& package, const std::wstring& line)
{
    const std::string wanted(line.begin(), line.end());  // the log's texts are ASCII here
    std::ifstream log((package + L".install.log").c_str(), std::ios::binary);
    std::string text;
    while (std::getline(log, text)) {
        if (!text.empty() && text.back() == '\r')
            text.pop_back();
        if (text.size() >= wanted.size() && text.compare(text.size() - wanted.size(), wanted.size(), wanted) == 0)
            return true;
    }
    return false;
}

bool registryKeyExists(HKEY root, const std::wstring& key, REGSAM view)
{
    HKEY opened = nullptr;
    if (RegOpenKeyExW(root, key.c_str(), 0, KEY_QUERY_VALUE | view, &opened) != ERROR_SUCCESS)
        return false;
    RegCloseKey(opened);
    return true;
}

void deleteRegistryTree(HKEY root, const std::wstring& key, REGSAM view)
{
    HKEY opened = nullptr;
    if (RegOpenKeyExW(root, key.c_str(), 0, KEY_ALL_ACCESS | view, &opened) != ERROR_SUCCESS)
        return;
    RegDeleteTreeW(opened, nullptr);
    RegCloseKey(opened);
    RegDeleteKeyExW(root, key.c_str(), view, 0);
}
