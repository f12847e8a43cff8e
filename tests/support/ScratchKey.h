// A registry key that one test owns: emptied when it is made, removed with all it
// holds when it goes. Values are written and read with the raw registry calls, so a
// test can prepare any stored form and look at exactly what code under test wrote.
#pragma once
#include <windows.h>

#include <string>
#include <vector>

class ScratchKey
{
public:
    // view is 0, KEY_WOW64_32KEY or KEY_WOW64_64KEY.
    ScratchKey(HKEY root, const std::wstring& path, REGSAM view = 0);
    ~ScratchKey();
    ScratchKey(const ScratchKey&) = delete;
    ScratchKey& operator=(const ScratchKey&) = delete;

    HKEY handle() const { return key; }
    const std::wstring& path() const { return keyPath; }

    void setRaw(const std::wstring& name, DWORD type, const void* data, DWORD size);
    void setDword(const std::wstring& name, DWORD value);
    // REG_SZ or REG_EXPAND_SZ, with its terminator.
    void setText(const std::wstring& name, const std::wstring& text, DWORD type = REG_SZ);
    // Creates a sub-key (and the keys on the way).
    void addSubKey(const std::wstring& subKey);

    // False when the value is missing.
    bool read(const std::wstring& name, DWORD& type, std::vector<BYTE>& data) const;
    // The value as a REG_DWORD, or false when it is missing or of another type.
    bool readDword(const std::wstring& name, DWORD& value) const;

private:
    HKEY root;
    std::wstring keyPath;
    REGSAM view;
    HKEY key;
};
