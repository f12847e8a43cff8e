#include "Framework/Diagnostics/ThreadName.h"

namespace Framework {

ThreadLocalPointer threadNameCell(nullptr);

String currentThreadName()
{
    const String* name = static_cast<const String*>(threadNameCell.peek());
    return name ? *name : String(L"Thread000");
}

}  // namespace Framework
