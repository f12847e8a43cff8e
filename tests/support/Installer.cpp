#include "Installer.h"

#include "ActionLibrary.h"

#include <fstream>
#include <stdexcept>
#include <vector>

std::wstring testPackage(const wchar_t* fileName)
{
    return testSetting("KORVALIN_PACKAGES") + L"\\" + fileName;
}

namespace {

// Runs the command line, its standard output into a pipe read into `output` when
// that is given, and waits for it; its exit code.
DWORD run(const std::wstring& commandLine, std::string* output)
{
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    if (output) {
        SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
        if (!CreatePipe(&readEnd, &writeEnd, &inheritable, 0))
            throw std::runtime_error("CreatePipe failed: " + std::to_string(GetLastError()));
        SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = writeEnd;
        startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
        startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    }
    std::vector<wchar_t> writable(commandLine.begin(), commandLine.end());
    writable.push_back(0);
    PROCESS_INFORMATION process = {};
    const BOOL started = CreateProcessW(nullptr, writable.data(), nullptr, nullptr, output != nullptr, 0, nullptr,
                                        nullptr, &startup, &process);
    const DWORD error = GetLastError();
    // Only the child holds the write end now, so reading ends when it exits.
    if (writeEnd)
        CloseHandle(writeEnd);
    char buffer[4096];
    DWORD got = 0;
    if (output)
        output->clear();
    while (started && output && ReadFile(readEnd, buffer, sizeof buffer, &got, nullptr) && got > 0)
        output->append(buffer, got);
    if (readEnd)
        CloseHandle(readEnd);
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

// The value as RegGetValueW reads it, with the key opened in the view.
LONG readValue(HKEY root, const std::wstring& key, const std::wstring& name, DWORD type, void* data, DWORD size,
               REGSAM view)
{
    HKEY opened = nullptr;
    LONG result = RegOpenKeyExW(root, key.c_str(), 0, KEY_QUERY_VALUE | view, &opened);
    if (result != ERROR_SUCCESS)
        return result;
    result = RegGetValueW(opened, nullptr, name.c_str(), type, nullptr, data, &size);
    RegCloseKey(opened);
    return result;
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

std::vector<std::string> installLogLines(const std::wstring& package, const std::string& action)
{
    std::ifstream log((package + L".install.log").c_str(), std::ios::binary);
    const std::string heading = "WixKorvalin " + action + ": ";
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(log, line)) {
        const size_t at = line.find(heading);
        if (at == std::string::npos)
            continue;
        if (line.back() == '\r')
            line.pop_back();
        lines.push_back(line.substr(at));
    }
    return lines;
}

bool readRegistryString(HKEY root, const std::wstring& key, const std::wstring& name, std::wstring& value,
                        REGSAM view)
{
    wchar_t text[1024];
    if (readValue(root, key, name, RRF_RT_REG_SZ, text, sizeof text, view) != ERROR_SUCCESS)
        return false;
    value = text;
    return true;
}

bool readRegistryDword(HKEY root, const std::wstring& key, const std::wstring& name, DWORD& value, REGSAM view)
{
    return readValue(root, key, name, RRF_RT_REG_DWORD, &value, sizeof value, view) == ERROR_SUCCESS;
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
