#include "Framework/Win32/RegistryFormat.h"

#include "Framework/Exceptions.h"

namespace Framework { namespace Win32 { namespace Detail {

bool hasBracket(const String& name)
{
    const wchar_t* text = name.c_str();
    for (uint32_t i = 0; i < name.length(); ++i)
        if (text[i] == L'[' || text[i] == L']')
            return true;
    return false;
}

String indexedName(const String& name, uint32_t index)
{
    if (index == 0)
        return name;
    return name + String::format(L"[%u]", index);
}

uint32_t groupCountIn(const RegistryKey& key, const String& name)
{
    if (hasBracket(name) || !key.hasSubKey(name))
        return 0;
    uint32_t n = 1;
    while (key.hasSubKey(indexedName(name, n)))
        ++n;
    return n;
}

String readText(const RegistryKey& key, const String& name, DWORD size)
{
    // Room for all `size` bytes and a terminator, then cut to (size - 1) / 2.
    String text(uint32_t(size / 2 + 2));
    DWORD read = size;
    key.readRaw(name, &text.refAt(0), &read);
    text.truncate(size == 0 ? 0 : (size - 1) / 2);
    return text;
}

StoredList readList(const RegistryKey& key, const String& name, DWORD size)
{
    const Array<String> pieces = readText(key, name, size).split(L'\0');
    if (pieces.size() < 2)
        throw new ErrorException(SITE);
    return StoredList{parseType(pieces.at(0)), pieces};
}

void writeList(RegistryKey& key, const String& name, const Array<String>& items)
{
    String data;
    for (uint32_t i = 0; i < items.size(); ++i) {
        data.append(items.at(i));
        data.append(L'\0');
    }
    data.append(L'\0');
    data.append(L'\0');
    key.writeRaw(name, REG_MULTI_SZ, data.c_str(), data.length() * sizeof(wchar_t));
}

} } }  // namespace Framework::Win32::Detail
