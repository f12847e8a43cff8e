// A path to a file, a folder or a device, split into root, folder, name and extension
// in canonical form (see PathText.h for the forms), with the joined text ready in
// fullText() and the kind of thing it denotes. A value: copies share the strings'
// blocks, and no lock guards it.
//
//   Path(L"C:/dir/sub/../file.txt")     -> root "C:", folder "\dir\", name "file",
//                                          extension ".txt", kind File (if no such folder)
//   Path(L"\\\\?\\UNC\\srv\\share\\a\\b.txt", false)
//                                       -> root "\\srv\share", folder "\a\", full
//                                          "\\srv\share\a\b.txt": the long forms never stay
//   Path(L"C:\\")                       -> root "C:", folder "\", kind Folder, a root folder
//   Path(L"\\\\.\\COM1")                -> root "\\.\COM1", kind Device
//   Path(L"")                           -> empty, kind Unknown
//
// Path(text) asks the file system whether the text names a folder (its only disk access
// besides the operations at the end), and takes a text that ends with a separator for
// a folder; Path(text, isFolder) takes the caller's word, even then:
// Path(L"C:\\dir\\", false) is a file with an empty name. A folder's last name is
// folded into its folder part, "." and ".." included: Path(L"C:\\a\\..", true) is C:\.
// The empty text gives the empty path, of kind Unknown, whatever the caller says.
// Neither constructor makes a relative text absolute: append it to
// Path(FileSystem::currentFolder(), true) for that.
//
// Failures: bad text throws from the constructor or the setter, and a setter that
// throws leaves the path as it was. ErrorException for a "\\?\" not followed by a
// drive, a share without the "\" behind its share name (\\srv\share alone), a ':'
// given to setFolder, setName or setExtension, a bad root text; PathInvalidException
// for a ".." above a rooted folder and for isFile()/isFolder() on a path of kind
// Unknown.
#pragma once
#include "Framework/Io/PathText.h"

namespace Framework { namespace Io {

enum class PathKind : uint32_t
{
    Unknown = 0,  // nothing assigned, or the empty path
    Folder = 1,
    File = 2,
    Device = 3,
};

class Path
{
public:
    // The empty path.
    Path();
    explicit Path(const String& text);
    Path(const String& text, bool isFolder);

    const String& fullText() const { return full; }
    const String& root() const { return parts.root; }
    const String& folder() const { return parts.folder; }
    const String& name() const { return parts.name; }
    const String& extension() const { return parts.extension; }
    String rootAndFolder() const;
    String nameAndExtension() const;
    PathKind kind() const { return pathKind; }

    bool isEmpty() const { return full.empty(); }
    bool isFile() const;
    bool isFolder() const;
    // A device root and nothing behind it.
    bool isDevice() const;
    // A folder that starts at a root: C:\x\, \x\, \\srv\share\x\; also C:x\, which the
    // platform resolves against the drive's current folder. C:x.txt is not absolute.
    bool isAbsolute() const;
    bool isRootFolder() const;
    // The folder that holds this path; the empty path for a root folder, the empty path
    // and a relative folder of one component ("a\", "..\" too). A device has no parent
    // (ErrorException).
    Path parent() const;

    // Part by part; each recomputes the full text, and the kind follows:
    //   setRoot       a device root with nothing behind it makes a Device
    //   setFolder     a folder and nothing else makes a Folder; an emptied folder
    //                 under a name or extension makes a File
    //   setName, setExtension
    //                 a non-empty part makes a File; emptying the last of name and
    //                 extension under a folder makes a Folder
    // and otherwise the kind stays.
    void setRoot(const String& text);
    void setFolder(const String& text);
    void setName(const String& text);
    // "c" -> no extension, "cc" -> ".cc", ".c" -> ".c".
    void setExtension(const String& text);
    // Root and folder from one text, which must have no name: "D:\other" -> "D:\other\".
    void setFolderPath(const String& text);
    // Name and extension from one text with no root or folder; the kind becomes File.
    void setFileName(const String& text);
    // This path's folder, then other's: C:\a\ + b\c.txt -> C:\a\b\c.txt, kind File. The
    // root of other is ignored; a name this path already has wins over other's; the
    // kind becomes other's. An empty path takes other as it is; an empty other
    // changes nothing.
    void append(const Path& other);

    // Parts and kind alike; exact comparison.
    bool operator==(const Path& other) const;
    bool operator!=(const Path& other) const { return !(*this == other); }

    // On the disk (see FileSystem.h for the calls and their failure texts).
    bool exists() const;
    // Creates the file (empty) or the folder, and the missing folders above it. What
    // was made before a failure stays. A Device throws ErrorException.
    void create() const;
    // Creates what is missing, or brings an existing file's time up to now; an
    // existing folder is left alone. Unknown throws ErrorException.
    void ensureExists() const;
    // force: a missing path is no error, and a read-only file is made writable first.
    // Without force a missing path throws PathNotFoundException. A Device throws
    // ErrorException.
    void remove(bool force) const;
    void clearReadOnly() const;
    // Moves the file or folder in one platform call (no copy, no retry) and becomes a
    // copy of target. This path must exist (PathNotFoundException), target must not
    // (PathExistsException), and both must be files or both folders (ErrorException).
    void rename(const Path& target);

private:
    // The parts joined; likely is a text that may equal them already.
    void recompute(const String& likely = String());
    void foldNameIntoFolder();
    PathKind kindAfterFolderChange() const;

    PathParts parts;
    String full;
    PathKind pathKind;
};

}}  // namespace Framework::Io
