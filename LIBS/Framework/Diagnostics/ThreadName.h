// The name that stands for a thread in log records. Nothing in the library names a
// thread yet, so every thread reports "Thread000"; a thread's identity in the logs
// comes from its id.
#pragma once
#include "Framework/Diagnostics/ThreadLocalPointer.h"
#include "Framework/String.h"

namespace Framework {

// Points to the calling thread's name, a String owned by whoever stored it.
extern ThreadLocalPointer threadNameCell;

// A copy of the thread's name, or "Thread000" when it has none.
String currentThreadName();

}  // namespace Framework
