// How the value tree is laid out in the registry, shared by the read and write sides.
//
// Values: Uint is a REG_DWORD, Uhyper a REG_QWORD, String a REG_SZ, Binary a
// REG_BINARY; every other type is a REG_MULTI_SZ whose first string is the type's
// name and whose other strings are the elements as text:
//   "Bool", "true"        "IntArray", "1", "-2"        "BinaryArray", "DE AD", "00"
//
// Groups: a sub-group is a sub-key whose name holds neither '[' nor ']'; groups of one
// name are sibling keys "name", "name[1]", "name[2]", ... and the count of a name
// stops at the first missing index.
#pragma once
#include "Framework/ValueType.h"
#include "Framework/Win32/RegistryKey.h"

namespace Framework { namespace Win32 { namespace Detail {

bool hasBracket(const String& name);
// "name" for index 0, "name[index]" otherwise.
String indexedName(const String& name, uint32_t index);
// 0 when the name has a bracket or no key; else the first n from 1 up for which
// "name[n]" is no sub-key.
uint32_t groupCountIn(const RegistryKey& key, const String& name);

// The text of a value of `size` bytes: (size - 1) / 2 characters.
String readText(const RegistryKey& key, const String& name, DWORD size);
// A stored list: its tag and its elements. Fewer than 2 strings throw ErrorException,
// an unknown tag LookupException.
struct StoredList
{
    ValueType tag;
    Array<String> pieces;  // the tag first
};
StoredList readList(const RegistryKey& key, const String& name, DWORD size);
// Each item, a zero behind each, two more zeros at the end; as REG_MULTI_SZ.
void writeList(RegistryKey& key, const String& name, const Array<String>& items);

} } }  // namespace Framework::Win32::Detail
