// The per-thread cells: one pointer per thread, and the thread's name.
#include "Framework/Diagnostics/ThreadLocalPointer.h"
#include "Framework/Diagnostics/ThreadName.h"
#include "Framework/Exceptions.h"

#include "support/ExpectThrown.h"

#include <gtest/gtest.h>

#include <thread>

using namespace Framework;

TEST(ThreadLocalPointerTest, EachThreadHasItsOwnPointerAndItsName)
{
    int mine = 0, theirs = 0;
    ThreadLocalPointer cell(&mine);
    std::thread other([&] {
        EXPECT_EQ(nullptr, cell.peek()) << "a new thread starts with null";
        expectThrown<ErrorException>([&] { cell.get(); });
        cell.set(&theirs);
        EXPECT_EQ(&theirs, cell.get());
        EXPECT_EQ(String(L"Thread000"), currentThreadName());
    });
    other.join();
    EXPECT_EQ(&mine, cell.get());

    String name(L"installer");
    threadNameCell.set(&name);
    EXPECT_EQ(name, currentThreadName());
    threadNameCell.set(nullptr);
    EXPECT_EQ(String(L"Thread000"), currentThreadName());
}
