#include "support/MessageBoxWatcher.h"

#include <stdexcept>
#include <utility>

namespace {

std::wstring windowText(HWND window)
{
    wchar_t text[4096] = L"";
    GetWindowTextW(window, text, 4096);
    return text;
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
        const HWND found = FindWindowW(L"#32770", title.c_str());
        if (found && IsWindowVisible(found)) {
            // Give the box a moment to finish its layout before it is read.
            Sleep(300);
            box.seen = true;
            box.title = windowText(found);
            box.text = windowText(GetDlgItem(found, 0xFFFF));
            box.okOnly = true;
            for (int button : {IDOK, IDCANCEL, IDYES, IDNO, IDABORT, IDRETRY, IDIGNORE}) {
                const HWND item = GetDlgItem(found, button);
                box.okOnly = box.okOnly && (button == IDOK) == (item && IsWindowVisible(item));
            }
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
