#include "support/MessageBoxWatcher.h"

#include <stdexcept>
#include <utility>

namespace {

struct Search
{
    const std::wstring* title;
    HWND found;
};

BOOL CALLBACK matchBox(HWND window, LPARAM parameter)
{
    Search& search = *reinterpret_cast<Search*>(parameter);
    wchar_t className[16] = L"";
    GetClassNameW(window, className, 16);
    if (std::wstring(className) != L"#32770" || !IsWindowVisible(window))
        return TRUE;
    wchar_t title[512] = L"";
    GetWindowTextW(window, title, 512);
    if (*search.title != title)
        return TRUE;
    search.found = window;
    return FALSE;
}

std::wstring windowText(HWND window)
{
    wchar_t text[4096] = L"";
    if (window)
        GetWindowTextW(window, text, 4096);
    return text;
}

bool shown(HWND box, int id)
{
    const HWND item = GetDlgItem(box, id);
    return item && IsWindowVisible(item);
}

}  // namespace

MessageBoxWatcher::MessageBoxWatcher(std::wstring boxTitle, DWORD timeout)
    : title(std::move(boxTitle)), timeoutMs(timeout), stopEvent(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    thread = CreateThread(nullptr, 0, run, this, 0, nullptr);
    if (!thread)
        throw std::runtime_error("cannot start the message box watcher");
}

MessageBoxWatcher::~MessageBoxWatcher()
{
    stop();
    CloseHandle(thread);
    CloseHandle(stopEvent);
}

DWORD WINAPI MessageBoxWatcher::run(void* self)
{
    static_cast<MessageBoxWatcher*>(self)->watch();
    return 0;
}

void MessageBoxWatcher::watch()
{
    const DWORD start = GetTickCount();
    while (GetTickCount() - start < timeoutMs) {
        Search search = {&title, nullptr};
        EnumWindows(matchBox, reinterpret_cast<LPARAM>(&search));
        if (search.found) {
            const HWND found = search.found;
            // Give the box a moment to finish its layout before it is read.
            Sleep(300);
            box.seen = true;
            box.title = windowText(found);
            box.text = windowText(GetDlgItem(found, 0xFFFF));
            box.okOnly = shown(found, IDOK) && !shown(found, IDCANCEL) && !shown(found, IDYES) &&
                         !shown(found, IDNO) && !shown(found, IDABORT) && !shown(found, IDRETRY) &&
                         !shown(found, IDIGNORE);
            PostMessageW(found, WM_COMMAND, IDOK, 0);
            return;
        }
        if (WaitForSingleObject(stopEvent, 100) == WAIT_OBJECT_0)
            return;
    }
}

SeenBox MessageBoxWatcher::stop()
{
    SetEvent(stopEvent);
    WaitForSingleObject(thread, INFINITE);
    return box;
}
