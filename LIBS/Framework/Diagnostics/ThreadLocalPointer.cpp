#include "Framework/Diagnostics/ThreadLocalPointer.h"

#include "Framework/OsException.h"

#include <windows.h>

namespace Framework {

ThreadLocalPointer::ThreadLocalPointer(void* initial) : index(TlsAlloc())
{
    if (index == TLS_OUT_OF_INDEXES)
        throw new OsException(SITE, OsError(true), 0, String(), String());
    set(initial);
}

ThreadLocalPointer::~ThreadLocalPointer() { TlsFree(index); }

void ThreadLocalPointer::set(void* value)
{
    if (!TlsSetValue(index, value))
        throw new OsException(SITE, OsError(true), 0, String(), String());
}

void* ThreadLocalPointer::get() const
{
    void* value = TlsGetValue(index);
    if (!value)
        throw new ErrorException(SITE);
    return value;
}

void* ThreadLocalPointer::peek() const { return TlsGetValue(index); }

}  // namespace Framework
