// Path against the texts users hand over, part-by-part changes, and the long form
// against the real disk. Paths under C:\NoSuchKorvalinFolder name nothing on disk, so
// their kind comes from the text alone.
#include "Framework/Io/Path.h"

#include "Framework/Io/Exceptions.h"
#include "Framework/Io/FileOutputStream.h"
#include "support/ExpectThrown.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <typeinfo>

using namespace Framework;
using namespace Framework::Io;

namespace {

std::string describe(const Path& path)
{
    return narrowForTest(path.root()) + " | " + narrowForTest(path.folder()) + " | " + narrowForTest(path.name()) +
           " | " + narrowForTest(path.extension()) + " | kind " + std::to_string(int(path.kind()));
}

const std::string errorClass = typeid(Framework::ErrorException).name();
const std::string invalidClass = typeid(PathInvalidException).name();

}  // namespace

TEST(PathTest, TextsSplitIntoCanonicalPartsOrAreRefused)
{
    const std::pair<const wchar_t*, std::string> rows[] = {
        // root | folder | name | extension | kind
        {L"C:/NoSuchKorvalinFolder/sub/../file.txt", "C: | \\NoSuchKorvalinFolder\\ | file | .txt | kind 2"},
        {L"C:\\", "C: | \\ |  |  | kind 1"},
        {L"C:", "C: |  |  |  | kind 0"},
        {L"C:rel\\a.b.c", "C: | rel\\ | a.b | .c | kind 2"},
        {L"\\rooted\\\\doubled//mixed\\name", " | \\rooted\\doubled\\mixed\\ | name |  | kind 2"},
        {L"\\\\srv\\share\\a\\b.txt", "\\\\srv\\share | \\a\\ | b | .txt | kind 2"},
        {L"//srv/share/dir/", "\\\\srv\\share | \\dir\\ |  |  | kind 1"},
        {L"\\\\?\\C:\\x\\y.txt", "C: | \\x\\ | y | .txt | kind 2"},
        {L"\\\\?\\UNC\\srv\\share\\a\\b.txt", "\\\\srv\\share | \\a\\ | b | .txt | kind 2"},
        {L"\\\\?\\unc\\srv\\share\\a\\", "\\\\srv\\share | \\a\\ |  |  | kind 1"},
        {L"\\\\.\\COM1", "\\\\.\\COM1 |  |  |  | kind 3"},
        {L"dir.d\\file", " | dir.d\\ | file |  | kind 2"},
        {L".profile", " |  |  | .profile | kind 2"},
        {L"name.", " |  | name | . | kind 2"},
        {L"a\\..\\..\\b\\", " | ..\\b\\ |  |  | kind 1"},
        {L".\\a\\.\\b\\", " | a\\b\\ |  |  | kind 1"},
        {L"x\\..\\", " | .\\ |  |  | kind 1"},
        {L"\"C:\\quoted dir\\f.txt\"  ", "C: | \\quoted dir\\ | f | .txt | kind 2"},
        {L"", " |  |  |  | kind 0"},
        // A share needs the separator behind its name, the long form a drive or UNC, and
        // a rooted folder can't climb above its root.
        {L"\\\\srv\\share", errorClass},
        {L"\\\\\\share\\a", errorClass},
        {L"\\\\.\\", errorClass},
        {L"\\\\?\\x\\y", errorClass},
        {L"\\\\?\\Unc\\srv\\share\\a", errorClass},
        {L"\\\\?\\UNC\\srv", errorClass},
        {L"C:\\a\\..\\..\\b\\", invalidClass},
    };
    for (const auto& row : rows) {
        const String text(row.first);
        EXPECT_EQ(row.second, resultOrThrown([&] { return describe(Path(text)); })) << narrowForTest(text);
    }
    EXPECT_EQ(invalidClass, thrownClass([] { Path(L"").isFile(); })) << "the empty path has no kind";
}

TEST(PathTest, TheLongFormIsForDrivePathsFrom256CharactersAndEveryShare)
{
    const String at255 = String(L"C:\\") + String(std::wstring(252, L'a').c_str());
    const String relative = String(std::wstring(300, L'r').c_str()) + L"\\f";
    const std::pair<String, String> rows[] = {
        {at255, at255},
        {at255 + L'b', String(L"\\\\?\\") + at255 + L'b'},
        {L"\\\\srv\\share\\a\\b.txt", L"\\\\?\\unc\\srv\\share\\a\\b.txt"},
        {L"//srv/share/a", L"\\\\?\\unc\\srv\\share\\a"},
        {L"\\\\.\\COM1", L"\\\\.\\COM1"},
        {L"\\\\?\\C:\\x", L"\\\\?\\C:\\x"},
        {relative, relative},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.second, toLongForm(row.first)) << narrowForTest(row.first);
}

TEST(PathTest, SettersChangeOnePartAndTheKindFollows)
{
    using Setter = void (Path::*)(const String&);
    const struct
    {
        const wchar_t* base;
        Setter set;
        const wchar_t* text;
        std::string outcome;  // the full text, or the class thrown with the path left alone
        PathKind kind;
    } rows[] = {
        {L"C:\\dir\\", &Path::setName, L"file", "C:\\dir\\file", PathKind::File},
        {L"C:\\dir\\x.txt", &Path::setExtension, L"c", "C:\\dir\\x", PathKind::File},  // one letter, no dot
        {L"C:\\dir\\x.c", &Path::setName, L"", "C:\\dir\\.c", PathKind::File},
        {L"C:\\dir\\.c", &Path::setExtension, L"", "C:\\dir\\", PathKind::Folder},
        {L"C:\\dir\\", &Path::setFolder, L"/a/b/../c", "C:\\a\\c\\", PathKind::Folder},
        {L"C:\\dir\\", &Path::setFolder, L"\\..", invalidClass, PathKind::Folder},
        {L"C:\\dir\\", &Path::setName, L"a:b", errorClass, PathKind::Folder},
        {L"C:\\dir\\", &Path::setRoot, L"d", "d:\\dir\\", PathKind::Folder},
        {L"C:\\dir\\", &Path::setRoot, L"\\\\srv\\share\\", "\\\\srv\\share\\dir\\", PathKind::Folder},
        {L"", &Path::setRoot, L"\\\\.\\COM2", "\\\\.\\COM2", PathKind::Device},
        {L"C:\\dir\\x.txt", &Path::setFolderPath, L"D:/other", "D:\\other\\x.txt", PathKind::File},
        {L"C:\\dir\\", &Path::setFileName, L"report.final.pdf", "C:\\dir\\report.final.pdf", PathKind::File},
        {L"C:\\dir\\", &Path::setFileName, L"sub\\x.txt", errorClass, PathKind::Folder},
        // The name passes its check, the extension fails its own: neither may stay.
        {L"C:\\dir\\x.txt", &Path::setFileName, L"a.b:c", errorClass, PathKind::File},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(narrowForTest(row.base) + " with " + narrowForTest(row.text));
        Path path{String(row.base)};
        const Path before = path;
        const std::string outcome = resultOrThrown([&] {
            (path.*row.set)(row.text);
            return narrowForTest(path.fullText());
        });
        EXPECT_EQ(row.outcome, outcome);
        EXPECT_EQ(int(row.kind), int(path.kind()));
        if (outcome == errorClass || outcome == invalidClass) {
            EXPECT_TRUE(path == before) << describe(path);
        }
    }
}

TEST(PathTest, AppendAndParent)
{
    Path base(L"C:\\base\\", true);
    base.append(Path(L"sub\\..\\other\\f.txt", false));
    EXPECT_EQ(String(L"C:\\base\\other\\f.txt"), base.fullText());
    EXPECT_EQ(int(PathKind::File), int(base.kind()));
    Path named(L"C:\\a\\keep.txt", false);
    named.append(Path(L"D:\\b\\other.txt", false));
    EXPECT_EQ(String(L"C:\\a\\b\\keep.txt"), named.fullText()) << "the name here wins, the root there is ignored";
    expectThrown<PathInvalidException>([] { Path(L"C:\\a\\", true).append(Path(L"..\\..\\x\\", true)); });

    // Up to the root, then the empty path.
    Path step(L"C:\\a\\b.txt", false);
    for (const wchar_t* expected : {L"C:\\a\\", L"C:\\", L""}) {
        step = step.parent();
        EXPECT_EQ(String(expected), step.fullText());
    }
    EXPECT_TRUE(Path(L"a\\", true).parent().isEmpty());
    expectThrown<Framework::ErrorException>([] { Path(L"\\\\.\\COM1").parent(); });
    EXPECT_TRUE(Path(L"\\x\\y.txt", false).isAbsolute());
    EXPECT_FALSE(Path(L"C:x.txt", false).isAbsolute()) << "drive-relative";
}

TEST(PathTest, TheLongFormLetsThePlatformReachBeyondMaxPath)
{
    ScratchFolder scratch(L"PathLong");
    String deep(scratch.path().c_str());
    for (int level = 0; level < 6; ++level)
        deep += String(std::wstring(50, wchar_t(L'a' + level)).c_str()) + L'\\';
    const Path file(deep + L"deep.bin", false);
    file.create();
    {
        FileOutputStream out;
        out.open(file.fullText(), false);
        out.write("deep\0bytes", 10);
    }
    const std::wstring relative = file.fullText().c_str() + scratch.path().length();
    EXPECT_EQ(std::string("deep\0bytes", 10), scratch.readFile(relative));
    file.remove(false);
    EXPECT_FALSE(scratch.exists(relative));
}
