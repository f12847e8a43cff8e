#include "support/MessageBoxWatcher.h"

namespace {

std::wstring windowText(HWND window)
{
    wchar_t text[4096] = L"";
    GetWindowTextW(window, text, 4096);
    return text;
}

}  // namespace

MessageBoxWatcher::MessageBoxWatcher(std::wstring title, DWORD timeoutMs)
    : watcher([this, title, timeoutMs] {
          for (const DWORD start = GetTickCount(); !stopping && GetTickCount() - start < timeoutMs; Sleep(100)) {
              const HWND found = FindWindowW(L"#32770", title.c_str());
              if (!found || !IsWindowVisible(found))
                  continue;
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
      })
{
}

SeenBox MessageBoxWatcher::stop()
{
    stopping = true;
    if (watcher.joinable())
        watcher.join();
    return box;
}
