#include "support/ScratchKey.h"

#include "support/Installer.h"

#include <gtest/gtest.h>

ScratchKey::ScratchKey(HKEY hive, const std::wstring& path, REGSAM registryView)
    : root(hive), keyPath(path), view(registryView), key(nullptr)
{
    deleteRegistryTree(root, path, view);
    const LONG result =
        RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS | view, nullptr, &key, nullptr);
    EXPECT_EQ(ERROR_SUCCESS, result) << "cannot make the scratch key";
}

ScratchKey::~ScratchKey()
{
    if (key)
        RegCloseKey(key);
    deleteRegistryTree(root, keyPath, view);
}

void ScratchKey::setRaw(const std::wstring& name, DWORD type, const void* data, DWORD size)
{
    EXPECT_EQ(ERROR_SUCCESS, RegSetValueExW(key, name.c_str(), 0, type, static_cast<const BYTE*>(data), size));
}

void ScratchKey::setDword(const std::wstring& name, DWORD value)
{
    setRaw(name, REG_DWORD, &value, sizeof value);
}

void ScratchKey::setText(const std::wstring& name, const std::wstring& text, DWORD type)
{
    setRaw(name, type, text.c_str(), DWORD((text.size() + 1) * sizeof(wchar_t)));
}

void ScratchKey::addSubKey(const std::wstring& subKey)
{
    HKEY created = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(key, subKey.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS | view, nullptr,
                                             &created, nullptr));
    RegCloseKey(created);
}

bool ScratchKey::read(const std::wstring& name, DWORD& type, std::vector<BYTE>& data) const
{
    DWORD size = 0;
    if (RegQueryValueExW(key, name.c_str(), nullptr, &type, nullptr, &size) != ERROR_SUCCESS)
        return false;
    data.assign(size, 0);
    return RegQueryValueExW(key, name.c_str(), nullptr, &type, data.data(), &size) == ERROR_SUCCESS;
}

bool ScratchKey::readDword(const std::wstring& name, DWORD& value) const
{
    DWORD type = 0;
    std::vector<BYTE> data;
    if (!read(name, type, data) || type != REG_DWORD || data.size() != sizeof value)
        return false;
    memcpy(&value, data.data(), sizeof value);
    return true;
}
