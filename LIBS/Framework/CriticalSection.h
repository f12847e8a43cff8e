// A Win32 critical section as an object, and the guard that holds it for a scope.
// Recursive for the thread that holds it. Not copyable: the section lives where the
// object lives, and a static one is ready once static initialisers have run.
#pragma once
#include <windows.h>

namespace Framework {

class CriticalSection
{
public:
    CriticalSection() { InitializeCriticalSection(&section); }
    ~CriticalSection() { DeleteCriticalSection(&section); }
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void enter() { EnterCriticalSection(&section); }
    void leave() { LeaveCriticalSection(&section); }

    // Holds the section from construction to destruction, or to an early release().
    class Hold
    {
    public:
        explicit Hold(CriticalSection& section) : lock(&section) { section.enter(); }
        ~Hold() { release(); }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;
        void release()
        {
            if (lock)
                lock->leave();
            lock = nullptr;
        }

    private:
        CriticalSection* lock;
    };

private:
    CRITICAL_SECTION section;
};

}  // namespace Framework
