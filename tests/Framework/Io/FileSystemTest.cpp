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

using namespace Framework;
using namespace Framework::Io;
namespace Fs = Framework::Io::FileSystem;

namespace {

class FileSystemTest : public ::testing::Test
{
protected:
    FileSystemTest() : scratch(L"FileSystem") {}

    String at(const wchar_t* relative) const { return String(scratch.at(relative).c_str()); }

    static const uint32_t anyError = ~0u;

    // The failure of one call: its name, its sentence, all ones as the code, where the
    // platform's error came from, and which error it was unless anyError.
    template <class Body>
    void expectFailure(Body body, const wchar_t* operation, const String& text, bool fromLastError,
                       uint32_t error = anyError)
    {
        auto failure = expectThrown<Io::OsException>(body);
        ASSERT_TRUE(failure);
        EXPECT_EQ(String(operation), failure->operation);
        EXPECT_EQ(text, failure->failureText);
        EXPECT_EQ(~uint64_t(0), failure->code);
        EXPECT_EQ(fromLastError, failure->osError.isLastError);
        if (error != anyError) {
            EXPECT_EQ(error, fromLastError ? failure->osError.lastError : uint32_t(failure->osError.errnoValue));
        }
    }

    ScratchFolder scratch;
};

FILETIME lastWrite(const String& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    EXPECT_TRUE(GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data));
    return data.ftLastWriteTime;
}

}  // namespace

TEST_F(FileSystemTest, QuestionsAboutWhatIsThere)
{
    scratch.writeFile(L"file.txt", "text");
    scratch.makeFolder(L"folder");
    EXPECT_TRUE(Fs::exists(at(L"file.txt")));
    EXPECT_TRUE(Fs::exists(at(L"folder\\")));
    EXPECT_FALSE(Fs::exists(at(L"missing.txt")));
    EXPECT_FALSE(Fs::exists(L""));
    EXPECT_TRUE(Fs::isFolderOnDisk(at(L"folder")));
    EXPECT_FALSE(Fs::isFolderOnDisk(at(L"file.txt")));

    uint32_t lastError = 0;
    EXPECT_FALSE(Fs::accessible(at(L"missing.txt"), 0, &lastError));
    EXPECT_EQ(uint32_t(ERROR_FILE_NOT_FOUND), lastError);
    // A file that someone holds without sharing is there all the same.
    const HANDLE held = CreateFileW(at(L"file.txt").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, held);
    EXPECT_TRUE(Fs::exists(at(L"file.txt")));
    EXPECT_TRUE(Fs::canOpen(at(L"file.txt"))) << "a sharing violation counts as there";
    CloseHandle(held);

    EXPECT_FALSE(Fs::isReadOnly(at(L"file.txt")));
    scratch.setReadOnly(L"file.txt", true);
    EXPECT_TRUE(Fs::isReadOnly(at(L"file.txt")));
    Fs::makeWritable(at(L"file.txt"));
    EXPECT_FALSE(Fs::isReadOnly(at(L"file.txt")));
    expectThrown<PathNotFoundException>([] { Fs::isReadOnly(L""); });
    auto missing = expectThrown<PathNotFoundException>([&] { Fs::makeWritable(at(L"missing.txt")); });
    ASSERT_TRUE(missing);
    EXPECT_EQ(at(L"missing.txt"), missing->path);
}

TEST_F(FileSystemTest, CreatingAndRemovingWithTheirFailures)
{
    Fs::createFolder(at(L"made"));
    Fs::createFile(at(L"made\\new.txt"));
    EXPECT_TRUE(scratch.exists(L"made\\new.txt"));
    EXPECT_EQ("", scratch.readFile(L"made\\new.txt"));

    const String inMissing = at(L"missing\\new.txt");
    expectFailure([&] { Fs::createFile(inMissing); }, L"_wcreat", String(L"Failed to create file '") + inMissing + L"'",
                  true, ERROR_PATH_NOT_FOUND);
    expectFailure([&] { Fs::createFolder(at(L"made\\new.txt")); }, L"_wmkdir",
                  String(L"Failed to create folder '") + at(L"made\\new.txt") + L"'", false, EEXIST);
    expectFailure([&] { Fs::removeFolder(at(L"made")); }, L"_wrmdir",
                  String(L"Failed to remove folder '") + at(L"made") + L"'", false, ENOTEMPTY);
    // A file where a folder is wanted.
    expectFailure([&] { Fs::removeFolder(at(L"made\\new.txt")); }, L"_wrmdir",
                  String(L"Failed to remove folder '") + at(L"made\\new.txt") + L"'", false);
    expectFailure([&] { Fs::removeFile(at(L"made\\gone.txt")); }, L"_wremove",
                  String(L"Failed to remove file '") + at(L"made\\gone.txt") + L"'", true, ERROR_FILE_NOT_FOUND);
    expectThrown<Framework::ErrorException>([] { Fs::removeFile(L""); });
    expectThrown<Framework::ErrorException>([] { Fs::removeFolder(L""); });
    EXPECT_FALSE(Fs::removeFileQuietly(at(L"made\\gone.txt")));
    EXPECT_FALSE(Fs::removeFileQuietly(L""));

    EXPECT_TRUE(Fs::removeFileQuietly(at(L"made\\new.txt")));
    Fs::removeFolder(at(L"made\\"));
    EXPECT_FALSE(scratch.exists(L"made"));
}

TEST_F(FileSystemTest, ModesTimesAndWhereTheProcessIs)
{
    scratch.makeFolder(L"dir");
    scratch.writeFile(L"file.txt", "text");
    EXPECT_TRUE(Fs::fileMode(at(L"dir\\")) & _S_IFDIR) << "the trailing separator is cut";
    EXPECT_TRUE(Fs::fileMode(at(L"file.txt")) & _S_IFREG);
    EXPECT_TRUE(Fs::fileMode(L"C:\\") & _S_IFDIR) << "a root keeps its separator";

    const String missing = at(L"missing.txt");
    expectFailure([&] { Fs::statMode(missing); }, L"_wstati64",
                  String(L"Failed to get file attributes '") + missing + L"'", false);
    expectFailure([&] { Fs::setFileMode(missing, _S_IREAD); }, L"_wchmod",
                  String(L"Failed to set file attributes '") + missing + L"'", false);
    expectFailure([&] { Fs::touch(missing); }, L"_wutime", String(L"Time error"), false);

    const String folder = Fs::currentFolder();
    EXPECT_TRUE(folder.endsWith(L'\\') && Fs::isFolderOnDisk(folder)) << narrowForTest(folder);
    EXPECT_TRUE(Fs::moduleFileName().endsWith(L"framework_tests.exe")) << narrowForTest(Fs::moduleFileName());
}

TEST_F(FileSystemTest, PathCreatesWhatIsMissingAndTouchesWhatIsThere)
{
    const Path deep(at(L"a\\b\\c\\file.txt"), false);
    deep.ensureExists();
    EXPECT_TRUE(scratch.exists(L"a\\b\\c\\file.txt"));
    Path(at(L"a\\b\\d"), true).create();
    EXPECT_TRUE(scratch.attributes(L"a\\b\\d") & FILE_ATTRIBUTE_DIRECTORY);
    // An existing folder is left alone: no touch, no new time.
    const FILETIME folderTime = lastWrite(at(L"a\\b\\d"));
    Sleep(20);
    Path(at(L"a\\b\\d\\"), true).ensureExists();
    const FILETIME folderTimeAfter = lastWrite(at(L"a\\b\\d"));
    EXPECT_EQ(0, CompareFileTime(&folderTime, &folderTimeAfter));

    // An old time on an existing file comes up to now, and the content stays.
    scratch.writeFile(L"old.txt", "content");
    const HANDLE file = CreateFileW(at(L"old.txt").c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    FILETIME longAgo = {0, 0x01A00000};
    SetFileTime(file, nullptr, nullptr, &longAgo);
    CloseHandle(file);
    Path(at(L"old.txt"), false).ensureExists();
    EXPECT_GT(lastWrite(at(L"old.txt")).dwHighDateTime, longAgo.dwHighDateTime);
    EXPECT_EQ("content", scratch.readFile(L"old.txt"));

    // A device is never made, an empty path never looked for: the plain precondition
    // failure, not some failure of the platform on the way.
    const std::string precondition = typeid(Framework::ErrorException).name();
    EXPECT_EQ(precondition, thrownClass([] { Path(L"\\\\.\\COM1").create(); }));
    EXPECT_EQ(precondition, thrownClass([] { Path().ensureExists(); }));
}

TEST_F(FileSystemTest, PathRemovesWithAndWithoutForce)
{
    scratch.writeFile(L"locked.txt", "x");
    scratch.setReadOnly(L"locked.txt", true);
    const Path locked(at(L"locked.txt"), false);
    expectFailure([&] { locked.remove(false); }, L"_wremove", String(L"Failed to remove file '") + at(L"locked.txt") + L"'",
                  true);
    EXPECT_TRUE(scratch.attributes(L"locked.txt") & FILE_ATTRIBUTE_READONLY) << "without force the attribute stays";
    locked.remove(true);
    EXPECT_FALSE(scratch.exists(L"locked.txt"));

    locked.remove(true);  // a missing path is no error with force
    {
        auto missing = expectThrown<PathNotFoundException>([&] { locked.remove(false); });
        ASSERT_TRUE(missing);
        EXPECT_EQ(at(L"locked.txt"), missing->path);
    }

    scratch.makeFolder(L"full");
    scratch.writeFile(L"full\\inside.txt", "x");
    const Path full(at(L"full"));
    expectFailure([&] { full.remove(false); }, L"_wrmdir", String(L"Failed to remove folder '") + at(L"full\\") + L"'",
                  false);
    Path(at(L"full\\inside.txt")).remove(false);
    full.remove(false);
    EXPECT_FALSE(scratch.exists(L"full"));
    EXPECT_EQ(typeid(Framework::ErrorException).name(), thrownClass([] { Path(L"\\\\.\\COM1").remove(true); }));
}

TEST_F(FileSystemTest, PathRenamesOnlyOntoNothingAndOfItsOwnKind)
{
    scratch.writeFile(L"one.txt", "first");
    scratch.writeFile(L"two.txt", "second");
    scratch.makeFolder(L"dir");
    Path one(at(L"one.txt"));

    auto taken = expectThrown<PathExistsException>([&] { one.rename(Path(at(L"two.txt"))); });
    ASSERT_TRUE(taken);
    EXPECT_EQ(at(L"two.txt"), taken->path);
    taken.reset();
    expectThrown<Framework::ErrorException>([&] { one.rename(Path(at(L"newdir\\"))); });
    EXPECT_EQ("first", scratch.readFile(L"one.txt")) << "nothing moved";
    EXPECT_FALSE(scratch.exists(L"newdir"));

    const Path target(at(L"dir\\renamed.txt"), false);
    one.rename(target);
    EXPECT_TRUE(one == target) << "the source object reports the target";
    EXPECT_EQ("first", scratch.readFile(L"dir\\renamed.txt"));
    EXPECT_FALSE(scratch.exists(L"one.txt"));
    expectThrown<PathNotFoundException>([&] { Path(at(L"one.txt"), false).rename(Path(at(L"three.txt"), false)); });
    Path two(at(L"two.txt"));
    expectFailure([&] { two.rename(Path(at(L"nowhere\\two.txt"), false)); }, L"_wrename", String(L"Rename error"),
                  false, ENOENT);
    EXPECT_EQ(at(L"two.txt"), two.fullText()) << "a failed rename leaves the object as it was";

    Path folder(at(L"dir"));
    folder.rename(Path(at(L"moved"), true));
    EXPECT_EQ(at(L"moved\\"), folder.fullText());
    EXPECT_EQ("first", scratch.readFile(L"moved\\renamed.txt"));
}
