// The file-system calls and the disk operations of Path against the real disk, in a
// scratch folder per test: each one's success, and each failure with its exact text.
#include "Framework/Io/FileSystem.h"

#include "Framework/Io/Exceptions.h"
#include "Framework/Io/Path.h"
#include "support/ExpectThrown.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <functional>
#include <typeinfo>

using namespace Framework;
using namespace Framework::Io;
namespace Fs = Framework::Io::FileSystem;

namespace {

class FileSystemTest : public ::testing::Test
{
protected:
    FileSystemTest() : scratch(L"FileSystem") {}

    String at(const wchar_t* relative) const { return String(scratch.at(relative).c_str()); }

    ScratchFolder scratch;
};

const std::string precondition = typeid(Framework::ErrorException).name();

}  // namespace

TEST_F(FileSystemTest, EachFailedCallNamesItselfAndWhatFailed)
{
    scratch.makeFolder(L"full");
    scratch.writeFile(L"full\\inside.txt", "x");
    scratch.writeFile(L"locked.txt", "x");
    SetFileAttributesW(at(L"locked.txt").c_str(), FILE_ATTRIBUTE_READONLY);
    const uint32_t anyError = ~0u;
    // The failed call's name is kept for no reader, so only what a message shows is checked.
    const struct
    {
        std::function<void()> call;
        String text;
        bool fromLastError;
        uint32_t error;  // GetLastError's or errno's, unless anyError
    } rows[] = {
        {[&] { Fs::createFile(at(L"missing\\new.txt")); }, L"Failed to create file '" + at(L"missing\\new.txt") + L"'",
         true, ERROR_PATH_NOT_FOUND},
        {[&] { Fs::createFolder(at(L"full\\inside.txt")); },
         L"Failed to create folder '" + at(L"full\\inside.txt") + L"'", false, EEXIST},
        {[&] { Fs::removeFolder(at(L"full")); }, L"Failed to remove folder '" + at(L"full") + L"'", false, ENOTEMPTY},
        {[&] { Fs::removeFile(at(L"gone.txt")); }, L"Failed to remove file '" + at(L"gone.txt") + L"'", true,
         ERROR_FILE_NOT_FOUND},
        {[&] { Path(at(L"locked.txt"), false).remove(false); }, L"Failed to remove file '" + at(L"locked.txt") + L"'",
         true, anyError},
        {[&] { Fs::statMode(at(L"gone.txt")); }, L"Failed to get file attributes '" + at(L"gone.txt") + L"'", false,
         ENOENT},
        {[&] { Fs::setFileMode(at(L"gone.txt"), _S_IREAD); },
         L"Failed to set file attributes '" + at(L"gone.txt") + L"'", false, ENOENT},
        {[&] { Fs::touch(at(L"gone.txt")); }, L"Time error", false, ENOENT},
        {[&] { Path(at(L"locked.txt")).rename(Path(at(L"nowhere\\x.txt"), false)); }, L"Rename error", false, ENOENT},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(narrowForTest(row.text));
        const auto failure = expectThrown<Io::OsException>(row.call);
        ASSERT_TRUE(failure);
        EXPECT_EQ(row.text, failure->failureText);
        EXPECT_EQ(~uint64_t(0), failure->code);
        EXPECT_EQ(row.fromLastError, failure->osError.isLastError);
        if (row.error != anyError) {
            const uint32_t error = row.fromLastError ? failure->osError.lastError : failure->osError.errnoValue;
            EXPECT_EQ(row.error, error);
        }
    }
    EXPECT_TRUE(GetFileAttributesW(at(L"locked.txt").c_str()) & FILE_ATTRIBUTE_READONLY) << "untouched without force";
    // The plain precondition failure, before any platform call.
    EXPECT_EQ(precondition, thrownClass([] { Fs::removeFile(L""); }));
    EXPECT_EQ(precondition, thrownClass([] { Fs::removeFolder(L""); }));
}

TEST_F(FileSystemTest, QuestionsAboutWhatIsThere)
{
    scratch.writeFile(L"file.txt", "text");
    scratch.makeFolder(L"folder");
    EXPECT_TRUE(Fs::fileMode(at(L"folder\\")) & _S_IFDIR) << "the trailing separator is cut";
    EXPECT_TRUE(Fs::fileMode(L"C:\\") & _S_IFDIR) << "a root keeps its separator";
    uint32_t lastError = 0;
    EXPECT_FALSE(Fs::accessible(at(L"missing.txt"), 0, &lastError));
    EXPECT_EQ(uint32_t(ERROR_FILE_NOT_FOUND), lastError);

    // A file that someone holds without sharing is there all the same.
    const HANDLE held = CreateFileW(at(L"file.txt").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, held);
    EXPECT_TRUE(Fs::exists(at(L"file.txt")));
    EXPECT_TRUE(Fs::canOpen(at(L"file.txt")));
    CloseHandle(held);

    const auto makeWritable = [&] { Fs::makeWritable(at(L"missing.txt")); };
    EXPECT_EQ(at(L"missing.txt"), thrownField<PathNotFoundException>(makeWritable, &PathNotFoundException::path));
}

TEST_F(FileSystemTest, PathMakesWhatIsMissingAndRemovesWithAndWithoutForce)
{
    const Path deep(at(L"a\\b\\c\\file.txt"), false);
    deep.ensureExists();
    EXPECT_EQ("", scratch.readFile(L"a\\b\\c\\file.txt"));
    // An existing folder is left alone (a touch would fail on it), its contents kept.
    Path(at(L"a\\b\\"), true).ensureExists();
    EXPECT_TRUE(scratch.exists(L"a\\b\\c\\file.txt"));
    // An existing file is only touched (the product never asks for one).
    scratch.writeFile(L"old.txt", "content");
    Path(at(L"old.txt"), false).ensureExists();
    EXPECT_EQ("content", scratch.readFile(L"old.txt"));

    const Path locked(at(L"old.txt"), false);
    SetFileAttributesW(at(L"old.txt").c_str(), FILE_ATTRIBUTE_READONLY);
    locked.remove(true);
    EXPECT_FALSE(scratch.exists(L"old.txt"));
    locked.remove(true);  // a missing path is no error with force
    EXPECT_EQ(at(L"old.txt"),
              thrownField<PathNotFoundException>([&] { locked.remove(false); }, &PathNotFoundException::path));
    Path(at(L"a\\b\\c\\file.txt")).remove(false);
    Path(at(L"a\\b\\c")).remove(false);
    EXPECT_FALSE(scratch.exists(L"a\\b\\c"));

    // A device is never made or removed, an empty path never looked for.
    EXPECT_EQ(precondition, thrownClass([] { Path(L"\\\\.\\COM1").create(); }));
    EXPECT_EQ(precondition, thrownClass([] { Path(L"\\\\.\\COM1").remove(true); }));
    EXPECT_EQ(precondition, thrownClass([] { Path().ensureExists(); }));
}

TEST_F(FileSystemTest, PathRenamesOnlyOntoNothingAndOfItsOwnKind)
{
    scratch.writeFile(L"one.txt", "first");
    scratch.writeFile(L"two.txt", "second");
    scratch.makeFolder(L"dir");
    Path one(at(L"one.txt"));
    const auto renameOntoTwo = [&] { one.rename(Path(at(L"two.txt"))); };
    EXPECT_EQ(at(L"two.txt"), thrownField<PathExistsException>(renameOntoTwo, &PathExistsException::path));
    EXPECT_EQ(precondition, thrownClass([&] { one.rename(Path(at(L"newdir\\"))); }));
    EXPECT_EQ(typeid(PathNotFoundException).name(), thrownClass([&] { Path(at(L"three.txt"), false).rename(one); }));
    EXPECT_EQ(at(L"one.txt"), one.fullText()) << "a failed rename leaves the object as it was";

    const Path target(at(L"dir\\renamed.txt"), false);
    one.rename(target);
    EXPECT_TRUE(one == target) << "the source object reports the target";
    EXPECT_EQ("first", scratch.readFile(L"dir\\renamed.txt"));
    EXPECT_FALSE(scratch.exists(L"one.txt"));
    Path folder(at(L"dir"));
    folder.rename(Path(at(L"moved"), true));
    EXPECT_EQ(at(L"moved\\"), folder.fullText());
    EXPECT_EQ("first", scratch.readFile(L"moved\\renamed.txt"));
}
