// A log configuration for one scope: KORVALIN_LOG_CONFIG names a file in a scratch
// folder that sends every record, in the default line format, to "fatal.txt" beside
// it. Programs started meanwhile (death-test children, msiexec and its custom-action
// host) inherit the variable, so their fatal ends can be read back.
//
// A death test's child runs the test body again from the start: finding the variable
// already set, it keeps the parent's configuration instead of making its own.
#pragma once
#include "support/ScratchFolder.h"

#include <cstdlib>
#include <memory>
#include <string>

class ScratchLog
{
public:
    ScratchLog()
    {
        if (_wgetenv(L"KORVALIN_LOG_CONFIG"))
            return;
        scratch.reset(new ScratchFolder(L"log"));
        const std::string folder(scratch->path().begin(), scratch->path().end());
        scratch->writeFile(L"KorvalinLogConfig.ini",
                           "[writers]\nactive=file\n[writers.file]\nformatter=Line\nfileName=fatal.txt\ndir=" + folder);
        _wputenv((L"KORVALIN_LOG_CONFIG=" + scratch->at(L"KorvalinLogConfig.ini")).c_str());
    }
    ~ScratchLog()
    {
        if (scratch)
            _wputenv(L"KORVALIN_LOG_CONFIG=");
    }

    // What was logged; "" when nothing was.
    std::string text() const
    {
        return scratch && scratch->exists(L"fatal.txt") ? scratch->readFile(L"fatal.txt") : std::string();
    }

private:
    std::unique_ptr<ScratchFolder> scratch;
};
