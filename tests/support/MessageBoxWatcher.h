// Watches for a message box as a user would see one, in this process or any other on
// the desktop: a thread looks for a dialog of class "#32770" with the given title,
// reads it, and closes it with OK. Needs a display (the suite runs under Xvfb);
// without one MessageBoxW returns at once and no box is ever seen.
//
//   MessageBoxWatcher watcher(L"Mail");
//   ... the code that may show the box ...
//   const SeenBox box = watcher.stop();   // box.seen, box.text, ...
//
// The icon is not read: Wine under Xvfb loads no system icons (LoadIcon(NULL, IDI_*)
// gives null), so every box shows an empty icon control whatever its style.
//
// A test that expects no box keeps a watcher going anyway: a box that comes is closed
// (the test does not hang on it) and reported.
#pragma once
#include <windows.h>

#include <atomic>
#include <string>
#include <thread>

struct SeenBox
{
    bool seen = false;
    std::wstring title;
    std::wstring text;
    // OK is the one button shown.
    bool okOnly = false;
};

class MessageBoxWatcher
{
public:
    // Watches for up to `timeoutMs` or until stop.
    explicit MessageBoxWatcher(std::wstring title, DWORD timeoutMs = 120000);
    ~MessageBoxWatcher() { stop(); }

    // Waits until the box has been closed or, if none came yet, stops looking; the box
    // seen, if any.
    SeenBox stop();

private:
    std::atomic<bool> stopping{false};
    SeenBox box;
    std::thread watcher;
};
