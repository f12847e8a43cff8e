// A log configuration for one scope: KORVALIN_LOG_CONFIG names a file in a scratch
// folder that sends every record, in the default line format, to "fatal.txt" beside
// it. Programs started meanwhile (death-test children, msiexec and its custom-action
// host) inherit the variable, so their fatal ends can be read back.
#pragma once
#include "support/ScratchFolder.h"

#include <cstdlib>
#include <string>

class ScratchLog
{
public:
    ScratchLog() : scratch(L"log")
    {
        const std::wstring folder = scratch.path();
        scratch.writeFile(L"KorvalinLogConfig.ini",
                          "[writers]\nactive=file\n[writers.file]\nformatter=Line\nfileName=fatal.txt\ndir=" +
                              std::string(folder.begin(), folder.end()) + "\n");
        _wputenv((L"KORVALIN_LOG_CONFIG=" + scratch.at(L"KorvalinLogConfig.ini")).c_str());
    }
    ~ScratchLog() { _wputenv(L"KORVALIN_LOG_CONFIG="); }
    ScratchLog(const ScratchLog&) = delete;
    ScratchLog& operator=(const ScratchLog&) = delete;

    // What was logged; "" when nothing was.
    std::string text() const { return scratch.exists(L"fatal.txt") ? scratch.readFile(L"fatal.txt") : std::string(); }

private:
    ScratchFolder scratch;
};
