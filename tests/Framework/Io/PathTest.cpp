// Path against the texts users hand over, the canonical forms, part-by-part changes,
// and the long form against the real disk. Paths under C:\NoSuchKorvalinFolder name
// nothing on disk, so their kind comes from the text alone.
#include "Framework/Io/Path.h"

#include "Framework/Io/Exceptions.h"
#include "Framework/Io/FileInputStream.h"
#include "Framework/Io/FileOutputStream.h"
#include "support/ExpectThrown.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <random>

using namespace Framework;
using namespace Framework::Io;

namespace {

struct PathRow
{
    const wchar_t* text;
    const wchar_t* root;
    const wchar_t* folder;
    const wchar_t* name;
    const wchar_t* extension;
    PathKind kind;
};

const PathRow pathRows[] = {
    {L"C:/NoSuchKorvalinFolder/sub/../file.txt", L"C:", L"\\NoSuchKorvalinFolder\\", L"file", L".txt", PathKind::File},
    {L"C:\\", L"C:", L"\\", L"", L"", PathKind::Folder},
    {L"C:", L"C:", L"", L"", L"", PathKind::Unknown},
    {L"C:rel\\a.b.c", L"C:", L"rel\\", L"a.b", L".c", PathKind::File},
    {L"\\rooted\\\\doubled//mixed\\name", L"", L"\\rooted\\doubled\\mixed\\", L"name", L"", PathKind::File},
    {L"\\\\srv\\share\\a\\b.txt", L"\\\\srv\\share", L"\\a\\", L"b", L".txt", PathKind::File},
    {L"\\\\srv\\share\\", L"\\\\srv\\share", L"\\", L"", L"", PathKind::Folder},
    {L"//srv/share/dir/", L"\\\\srv\\share", L"\\dir\\", L"", L"", PathKind::Folder},
    {L"\\\\?\\C:\\x\\y.txt", L"C:", L"\\x\\", L"y", L".txt", PathKind::File},
    {L"\\\\?\\UNC\\srv\\share\\a\\b.txt", L"\\\\srv\\share", L"\\a\\", L"b", L".txt", PathKind::File},
    {L"\\\\?\\unc\\srv\\share\\a\\", L"\\\\srv\\share", L"\\a\\", L"", L"", PathKind::Folder},
    {L"\\\\.\\COM1", L"\\\\.\\COM1", L"", L"", L"", PathKind::Device},
    {L"dir.d\\file", L"", L"dir.d\\", L"file", L"", PathKind::File},
    {L"archive.tar.gz", L"", L"", L"archive.tar", L".gz", PathKind::File},
    {L".profile", L"", L"", L"", L".profile", PathKind::File},
    {L"name.", L"", L"", L"name", L".", PathKind::File},
    {L"a\\..\\..\\b\\", L"", L"..\\b\\", L"", L"", PathKind::Folder},
    {L".\\a\\", L"", L".\\a\\", L"", L"", PathKind::Folder},
    {L".\\a\\.\\b\\", L"", L"a\\b\\", L"", L"", PathKind::Folder},
    {L"x\\..\\", L"", L".\\", L"", L"", PathKind::Folder},
    {L"..\\..\\up.txt", L"", L"..\\..\\", L"up", L".txt", PathKind::File},
    {L"\"C:\\quoted dir\\f.txt\"  ", L"C:", L"\\quoted dir\\", L"f", L".txt", PathKind::File},
    {L"C:\\NoSuchKorvalinFolder\\sub\\\\", L"C:", L"\\NoSuchKorvalinFolder\\sub\\", L"", L"", PathKind::Folder},
    {L"", L"", L"", L"", L"", PathKind::Unknown},
};

// The path that the same constructor makes again from a path's own full text.
Path reparsed(const Path& path) { return Path(path.fullText(), path.kind() == PathKind::Folder); }

std::string describe(const Path& path)
{
    return narrowForTest(path.root()) + " | " + narrowForTest(path.folder()) + " | " + narrowForTest(path.name()) +
           " | " + narrowForTest(path.extension()) + " | kind " + std::to_string(int(path.kind()));
}

}  // namespace

TEST(PathTest, TextsSplitIntoCanonicalPartsAndJoinAgain)
{
    for (size_t i = 0; i < sizeof pathRows / sizeof pathRows[0]; ++i) {
        const PathRow& row = pathRows[i];
        SCOPED_TRACE("row " + std::to_string(i) + ": " + narrowForTest(row.text));
        const Path path{String(row.text)};
        EXPECT_EQ(String(row.root), path.root());
        EXPECT_EQ(String(row.folder), path.folder());
        EXPECT_EQ(String(row.name), path.name());
        EXPECT_EQ(String(row.extension), path.extension());
        EXPECT_EQ(int(row.kind), int(path.kind()));
        EXPECT_EQ(String(row.root) + row.folder + row.name + row.extension, path.fullText());
        EXPECT_TRUE(Path(path.fullText()) == path) << "parsed again: " << describe(Path(path.fullText()));
    }
}

TEST(PathTest, BadTextsThrowAndSayWhy)
{
    // A share needs the separator behind its name; the long form needs a drive or UNC.
    for (const wchar_t* text : {L"\\\\srv\\share", L"\\\\?\\x\\y", L"\\\\?\\Unc\\srv\\share\\a", L"\\\\\\share\\a",
                                L"\\\\.\\", L"\\\\?\\UNC\\srv"}) {
        SCOPED_TRACE(narrowForTest(text));
        expectThrown<Framework::ErrorException>([&] { Path{String(text)}; });
    }
    {
        auto climbing = expectThrown<PathInvalidException>([] { Path(L"C:\\a\\..\\..\\b\\", true); });
        ASSERT_TRUE(climbing);
        EXPECT_EQ(String(L"\\a\\..\\..\\b\\"), climbing->path);
    }
    expectThrown<PathInvalidException>([] { Path(L"").isFile(); });
}

TEST(PathTest, LongFormIsForDrivePathsFromTwoHundredFiftySixAndEveryShare)
{
    const String at255 = String(L"C:\\") + String(std::wstring(252, L'a').c_str());
    const String at256 = at255 + L'b';
    EXPECT_EQ(at255, toLongForm(at255));
    EXPECT_EQ(String(L"\\\\?\\") + at256, toLongForm(at256));
    // Shares at any length, in lower case whatever the input had.
    EXPECT_EQ(String(L"\\\\?\\unc\\srv\\share\\a\\b.txt"),
              toLongForm(Path(L"\\\\?\\UNC\\srv\\share\\a\\b.txt", false).fullText()));
    EXPECT_EQ(String(L"\\\\?\\unc\\srv\\share\\a"), toLongForm(L"//srv/share/a"));
    // Devices, the long form itself and relative texts go as they are.
    EXPECT_EQ(String(L"\\\\.\\COM1"), toLongForm(L"\\\\.\\COM1"));
    EXPECT_EQ(String(L"\\\\?\\C:\\x"), toLongForm(L"\\\\?\\C:\\x"));
    const String relative = String(std::wstring(300, L'r').c_str()) + L"\\f";
    EXPECT_EQ(relative, toLongForm(relative));
}

TEST(PathTest, PartsChangeOneAtATimeAndTheKindFollows)
{
    Path path(L"C:\\dir\\", true);
    path.setName(L"file");
    EXPECT_EQ(String(L"C:\\dir\\file"), path.fullText());
    EXPECT_EQ(int(PathKind::File), int(path.kind()));
    path.setExtension(L"c");
    EXPECT_EQ(String(), path.extension()) << "one letter without a dot is no extension";
    path.setExtension(L"cc");
    EXPECT_EQ(String(L".cc"), path.extension());
    path.setExtension(L".c");
    path.setName(L"");
    EXPECT_EQ(String(L"C:\\dir\\.c"), path.fullText());
    EXPECT_EQ(int(PathKind::File), int(path.kind()));
    path.setExtension(L"");
    EXPECT_EQ(int(PathKind::Folder), int(path.kind())) << "a folder and nothing behind it";

    path.setFolder(L"/a/b/../c");
    EXPECT_EQ(String(L"C:\\a\\c\\"), path.fullText());
    // A setter that throws leaves the path as it was.
    expectThrown<Framework::ErrorException>([&] { path.setFolder(L"x:y"); });
    expectThrown<PathInvalidException>([&] { path.setFolder(L"\\.."); });
    expectThrown<Framework::ErrorException>([&] { path.setName(L"a:b"); });
    expectThrown<Framework::ErrorException>([&] { path.setRoot(L"CC:"); });
    expectThrown<Framework::ErrorException>([&] { path.setRoot(L"\\\\?\\C:"); });
    EXPECT_EQ(String(L"C:\\a\\c\\"), path.fullText());
    EXPECT_EQ(int(PathKind::Folder), int(path.kind()));

    path.setRoot(L"d");
    EXPECT_EQ(String(L"d:\\a\\c\\"), path.fullText());
    path.setRoot(L"\\\\srv\\share\\");
    EXPECT_EQ(String(L"\\\\srv\\share\\a\\c\\"), path.fullText());
    path.setFolderPath(L"D:/other");
    EXPECT_EQ(String(L"D:\\other\\"), path.fullText());
    expectThrown<Framework::ErrorException>([&] { path.setFolderPath(L""); });
    path.setFileName(L"report.final.pdf");
    EXPECT_EQ(String(L"report.final"), path.name());
    EXPECT_EQ(String(L"D:\\other\\report.final.pdf"), path.fullText());
    EXPECT_EQ(int(PathKind::File), int(path.kind()));
    expectThrown<Framework::ErrorException>([&] { path.setFileName(L"sub\\x.txt"); });
    // The name passes its check, the extension fails its own: neither may stay.
    expectThrown<Framework::ErrorException>([&] { path.setFileName(L"a.b:c"); });
    EXPECT_EQ(String(L"report.final"), path.name());
    EXPECT_EQ(String(L"D:\\other\\report.final.pdf"), path.fullText());
    EXPECT_EQ(path.fullText(), path.rootAndFolder() + path.nameAndExtension());

    Path device;
    device.setRoot(L"\\\\.\\COM2");
    EXPECT_EQ(int(PathKind::Device), int(device.kind()));
    EXPECT_TRUE(device.isDevice());
}

TEST(PathTest, AppendParentAndWhereAPathStarts)
{
    Path base(L"C:\\base\\", true);
    base.append(Path(L"sub\\..\\other\\f.txt", false));
    EXPECT_EQ(String(L"C:\\base\\other\\f.txt"), base.fullText());
    EXPECT_EQ(int(PathKind::File), int(base.kind()));

    Path named(L"C:\\a\\keep.txt", false);
    named.append(Path(L"D:\\b\\other.txt", false));
    EXPECT_EQ(String(L"C:\\a\\b\\keep.txt"), named.fullText()) << "the name here wins, the root there is ignored";
    Path empty;
    empty.append(named);
    EXPECT_TRUE(empty == named);
    named.append(Path());
    EXPECT_EQ(String(L"C:\\a\\b\\keep.txt"), named.fullText());
    expectThrown<PathInvalidException>([] { Path(L"C:\\a\\", true).append(Path(L"..\\..\\x\\", true)); });

    // Up to the root, then the empty path.
    Path step(L"C:\\a\\b\\c.txt", false);
    for (const wchar_t* expected : {L"C:\\a\\b\\", L"C:\\a\\", L"C:\\"}) {
        EXPECT_FALSE(step.isRootFolder());
        step = step.parent();
        EXPECT_EQ(String(expected), step.fullText());
    }
    EXPECT_TRUE(step.isRootFolder());
    step = step.parent();
    EXPECT_TRUE(step.isEmpty());
    EXPECT_EQ(int(PathKind::Unknown), int(step.kind()));
    EXPECT_TRUE(Path(L"\\\\srv\\share\\", true).isRootFolder());
    EXPECT_EQ(String(L"\\\\srv\\share\\"), Path(L"\\\\srv\\share\\a\\", true).parent().fullText());
    EXPECT_EQ(String(L"a\\"), Path(L"a\\b\\", true).parent().fullText());
    expectThrown<Framework::ErrorException>([] { Path(L"\\\\.\\COM1").parent(); });

    EXPECT_TRUE(Path(L"\\x\\y.txt", false).isAbsolute());
    EXPECT_FALSE(Path(L"C:x.txt", false).isAbsolute()) << "drive-relative";
}

TEST(PathTest, TheDiskDecidesTheKindOfATextWithoutAnEnd)
{
    ScratchFolder scratch(L"PathKinds");
    scratch.makeFolder(L"sub");
    scratch.writeFile(L"sub\\file", "x");
    const String base(scratch.path().c_str());
    EXPECT_EQ(base + L"sub\\", Path(base + L"sub").fullText());
    EXPECT_EQ(int(PathKind::Folder), int(Path(base + L"sub").kind()));
    EXPECT_EQ(base + L"sub\\", Path(base + L"sub\\.").fullText());
    EXPECT_EQ(base, Path(base + L"sub\\..").fullText());
    EXPECT_EQ(int(PathKind::File), int(Path(base + L"sub\\file").kind()));
    EXPECT_EQ(int(PathKind::File), int(Path(base + L"missing").kind()));
    EXPECT_EQ(int(PathKind::Folder), int(Path(base + L"missing\\").kind()));
}

TEST(PathTest, LongFormLetsThePlatformReachBeyondMaxPath)
{
    ScratchFolder scratch(L"PathLong");
    String deep(scratch.path().c_str());
    for (int level = 0; level < 6; ++level)
        deep += String(std::wstring(50, wchar_t(L'a' + level)).c_str()) + L'\\';
    const Path file(deep + L"deep.bin", false);
    ASSERT_GT(file.fullText().length(), 300u);

    file.create();
    EXPECT_TRUE(scratch.exists(std::wstring(file.fullText().c_str() + scratch.path().length())));
    EXPECT_TRUE(file.exists());
    {
        FileOutputStream out;
        out.open(file.fullText(), false);
        out.write("deep\0bytes", 10);
    }
    FileInputStream in;
    in.open(file.fullText());
    char back[10] = {};
    in.readExact(back, 10);
    EXPECT_EQ(std::string("deep\0bytes", 10), std::string(back, 10));
    in.close();

    file.remove(false);
    EXPECT_FALSE(file.exists());
    for (Path folder = file.parent(); folder.fullText().length() > scratch.path().length(); folder = folder.parent())
        folder.remove(false);
    EXPECT_FALSE(scratch.exists(L"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"));
}

namespace {

// What every parsed path keeps, whatever the text was.
std::string brokenInvariant(const Path& path)
{
    const String parts[] = {path.root(), path.folder(), path.name(), path.extension()};
    for (const String& part : parts) {
        if (part.find(L"/", 1) != String::npos || part.find(L"\"", 1) != String::npos)
            return "a part holds / or a quote";
    }
    if (path.root().endsWith(L'\\'))
        return "the root ends with a separator";
    if (!path.folder().empty() && !path.folder().endsWith(L'\\'))
        return "the folder doesn't end with a separator";
    if (!path.extension().empty() && !path.extension().startsWith(L'.'))
        return "the extension doesn't start with a dot";
    if (path.kind() == PathKind::Folder && !(path.name().empty() && path.extension().empty()))
        return "a folder with a name";
    if (path.fullText() != path.root() + path.folder() + path.name() + path.extension())
        return "the full text isn't the parts joined";
    return std::string();
}

}  // namespace

TEST(PathTest, GeneratedTextsNeverBreakTheParserAndParseTheSameTwice)
{
    const unsigned seed = 6301;
    std::mt19937 random(seed);
    const wchar_t* const pieces[] = {L"C:",      L"z:",  L"\\", L"/",  L"\\\\", L"\\\\?\\", L"\\\\?\\UNC\\",
                                     L"\\\\?\\unc\\", L"\\\\.\\", L".",  L"..", L"a",   L"b.c", L"srv",
                                     L"share",   L" ",   L"\"", L":",  L"?",    L"x.y.z",  L"COM1", L"\u00e9"};
    const size_t pieceCount = sizeof pieces / sizeof pieces[0];
    int parsed = 0;
    for (int i = 0; i < 4000; ++i) {
        String text;
        for (unsigned count = random() % 9; count > 0; --count)
            text += String(pieces[random() % pieceCount]);
        const unsigned how = random() % 8;  // 0: the disk decides, 1 to 7: the caller says
        const std::string context = "seed " + std::to_string(seed) + ", text " + std::to_string(i) + " \"" +
                                    narrowForTest(text) + "\", constructor " + std::to_string(how);
        Path path;
        try {
            path = how == 0 ? Path(text) : Path(text, how % 2 == 1);
        } catch (Framework::ErrorException* raw) {
            std::unique_ptr<Framework::ErrorException> refused(raw);  // bad text may be refused
            continue;
        } catch (fw_exception* raw) {
            std::unique_ptr<fw_exception> thrown(raw);
            ADD_FAILURE() << context << ": threw " << typeid(*raw).name();
            continue;
        }
        ++parsed;
        const std::string broken = brokenInvariant(path);
        EXPECT_EQ("", broken) << context << " -> " << describe(path);
        try {
            const Path again = how == 0 ? Path(path.fullText()) : reparsed(path);
            EXPECT_TRUE(again == path) << context << " -> " << describe(path) << " -> " << describe(again);
        } catch (fw_exception* raw) {
            std::unique_ptr<fw_exception> thrown(raw);
            ADD_FAILURE() << context << " -> " << describe(path) << ": its full text throws " << typeid(*raw).name();
        }
    }
    EXPECT_GT(parsed, 1000) << "seed " << seed << ": too few texts parsed to say much";
}
