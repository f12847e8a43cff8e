#include "Framework/Io/Path.h"

#include "Framework/Io/Exceptions.h"
#include "Framework/Io/FileSystem.h"

#include <io.h>

#include <cwchar>

namespace Framework { namespace Io {

namespace {

// What a text that was not said to be a folder denotes; asks the disk. A path to
// nothing that exists is a File unless its text ends with a separator.
PathKind detectKind(const String& text)
{
    if (text.empty())
        throw new Framework::ErrorException(SITE);
    if (endsWithSeparator(text) || FileSystem::isFolderOnDisk(text))
        return PathKind::Folder;
    return isBareDeviceText(text) ? PathKind::Device : PathKind::File;
}

// The platform takes a folder's name without the separator behind it; a root keeps it.
String withoutTrailingSeparators(const String& text)
{
    if (isRootOnlyText(text))
        return text;
    String cut = text;
    while (endsWithSeparator(cut))
        cut.removeLast();
    return cut;
}

}  // namespace

Path::Path() : pathKind(PathKind::Unknown) {}

Path::Path(const String& text) : pathKind(PathKind::Unknown)
{
    const String clean = cleanPathText(text);
    parts = parseCanonical(clean);
    if (endsWithSeparator(clean)) {
        pathKind = PathKind::Folder;
        const bool folderEnds = parts.folder.empty() || parts.folder.endsWith(L'\\');
        if (!folderEnds || !parts.name.empty() || !parts.extension.empty())
            throw new Framework::ErrorException(SITE);
    } else if (parts.folder.empty() && parts.name.empty() && parts.extension.empty()) {
        pathKind = isDevice() ? PathKind::Device : PathKind::Unknown;
    } else {
        pathKind = detectKind(parts.root + parts.folder + parts.name + parts.extension);
        if (pathKind == PathKind::Folder)
            foldNameIntoFolder();
    }
    recompute(clean);
}

Path::Path(const String& text, bool isFolder) : pathKind(PathKind::Unknown)
{
    const String clean = cleanPathText(text);
    parts = parseCanonical(clean);
    if (clean.empty()) {
        pathKind = PathKind::Unknown;
    } else if (isFolder) {
        pathKind = PathKind::Folder;
        foldNameIntoFolder();
    } else {
        pathKind = isDevice() ? PathKind::Device : PathKind::File;
    }
    recompute(clean);
}

void Path::recompute(const String& likely)
{
    const String* const pieces[] = {&parts.root, &parts.folder, &parts.name, &parts.extension};
    uint32_t total = 0;
    for (const String* piece : pieces)
        total += piece->length();
    // A text that was canonical already is the full text: share its block.
    if (total == likely.length()) {
        const wchar_t* at = likely.c_str();
        bool same = true;
        for (const String* piece : pieces) {
            same = same && std::wmemcmp(at, piece->c_str(), piece->length()) == 0;
            at += piece->length();
        }
        if (same) {
            full = likely;
            return;
        }
    }
    String joined;
    joined.reserve(total);
    for (const String* piece : pieces)
        joined.append(*piece);
    full = joined;
}

// A name "sub" under "\dir\" becomes the folder "\dir\sub\". The result is made
// canonical again, so that a name of "." or ".." folds away.
void Path::foldNameIntoFolder()
{
    if (parts.name.empty() && parts.extension.empty())
        return;
    parts.folder = canonicalFolder(parts.folder + parts.name + parts.extension + L'\\');
    parts.name = String();
    parts.extension = String();
}

String Path::rootAndFolder() const { return parts.root + parts.folder; }

String Path::nameAndExtension() const { return parts.name + parts.extension; }

bool Path::isFile() const
{
    if (pathKind == PathKind::Unknown)
        throw new PathInvalidException(SITE, full);
    return pathKind == PathKind::File;
}

bool Path::isFolder() const
{
    if (pathKind == PathKind::Unknown)
        throw new PathInvalidException(SITE, full);
    return pathKind == PathKind::Folder;
}

bool Path::isDevice() const
{
    return isDeviceText(parts.root) && parts.folder.empty() && parts.name.empty() && parts.extension.empty();
}

bool Path::isAbsolute() const
{
    if (parts.folder.empty())
        return false;
    const wchar_t first = parts.folder.c_str()[0];
    return !parts.root.empty() || first == L'\\' || first == L'/';
}

bool Path::isRootFolder() const
{
    return isAbsolute() && !isFile() && parts.folder.length() == 1 && parts.folder.c_str()[0] == L'\\';
}

Path Path::parent() const
{
    if (isEmpty() || isRootFolder())
        return Path();
    const String here = rootAndFolder();
    if (isFile())
        return Path(here, true);
    const String above = parentFolderText(here);
    if (above.length() >= here.length())
        throw new Framework::ErrorException(SITE);
    return Path(above, true);
}

PathKind Path::kindAfterFolderChange() const
{
    const bool named = !parts.name.empty() || !parts.extension.empty();
    if (!parts.folder.empty())
        return named ? pathKind : PathKind::Folder;
    if (named)
        return PathKind::File;
    return isDevice() ? PathKind::Device : pathKind;
}

void Path::setRoot(const String& text)
{
    parts.root = canonicalRootText(text);
    if (isDevice())
        pathKind = PathKind::Device;
    recompute();
}

void Path::setFolder(const String& text)
{
    parts.folder = canonicalFolderText(text);
    pathKind = kindAfterFolderChange();
    recompute();
}

void Path::setName(const String& text)
{
    parts.name = checkName(text);
    if (!parts.name.empty())
        pathKind = PathKind::File;
    else if (!parts.folder.empty() && parts.extension.empty())
        pathKind = PathKind::Folder;
    else if (isDevice())
        pathKind = PathKind::Device;
    recompute();
}

void Path::setExtension(const String& text)
{
    parts.extension = canonicalExtension(text);
    if (!parts.extension.empty())
        pathKind = PathKind::File;
    else if (!parts.folder.empty() && parts.name.empty())
        pathKind = PathKind::Folder;
    else if (isDevice())
        pathKind = PathKind::Device;
    recompute();
}

void Path::setFolderPath(const String& text)
{
    String clean = cleanPathText(text);
    if (!clean.empty() && !endsWithSeparator(clean))
        clean += L'\\';
    const PathParts given = parseCanonical(clean);
    if (!given.name.empty() || !given.extension.empty() || (given.root.empty() && given.folder.empty()))
        throw new Framework::ErrorException(SITE);
    // Both checks before either part changes.
    const String root = canonicalRootText(given.root);
    const String folder = canonicalFolderText(given.folder);
    parts.root = root;
    if (isDevice())
        pathKind = PathKind::Device;
    parts.folder = folder;
    pathKind = kindAfterFolderChange();
    recompute();
}

void Path::setFileName(const String& text)
{
    const PathParts given = parseCanonical(cleanPathText(text));
    if (!given.root.empty() || !given.folder.empty() || (given.name.empty() && given.extension.empty()))
        throw new Framework::ErrorException(SITE);
    // Both checks before either part changes.
    const String name = checkName(given.name);
    const String extension = canonicalExtension(given.extension);
    parts.name = name;
    parts.extension = extension;
    pathKind = PathKind::File;
    recompute();
}

void Path::append(const Path& other)
{
    if (other.isEmpty())
        return;
    if (isEmpty()) {
        *this = other;
        return;
    }
    parts.folder = canonicalFolder(parts.folder + other.parts.folder);
    if (parts.name.empty() && parts.extension.empty()) {
        parts.name = other.parts.name;
        parts.extension = other.parts.extension;
    }
    pathKind = other.pathKind;
    recompute();
}

bool Path::operator==(const Path& other) const
{
    return pathKind == other.pathKind && full == other.full && parts.root == other.parts.root &&
           parts.folder == other.parts.folder && parts.name == other.parts.name &&
           parts.extension == other.parts.extension;
}

bool Path::exists() const { return FileSystem::exists(full); }

void Path::create() const
{
    if (pathKind == PathKind::Device)
        throw new Framework::ErrorException(SITE);
    const Path above = parent();
    if (!above.isEmpty() && !above.exists())
        above.ensureExists();
    if (pathKind == PathKind::Folder)
        FileSystem::createFolder(full);
    else
        FileSystem::createFile(full);
}

void Path::ensureExists() const
{
    if (pathKind == PathKind::Unknown)
        throw new Framework::ErrorException(SITE);
    if (!exists())
        create();
    else if (pathKind != PathKind::Folder)
        FileSystem::touch(full);
}

void Path::remove(bool force) const
{
    if (pathKind == PathKind::Device)
        throw new Framework::ErrorException(SITE);
    if (!exists()) {
        if (force)
            return;
        throw new PathNotFoundException(SITE, full);
    }
    if (force && FileSystem::isReadOnly(full))
        clearReadOnly();
    if (pathKind == PathKind::Folder)
        FileSystem::removeFolder(full);
    else
        FileSystem::removeFile(full);
}

void Path::clearReadOnly() const { FileSystem::makeWritable(full); }

void Path::rename(const Path& target)
{
    if (!exists())
        throw new PathNotFoundException(SITE, full);
    if (target.exists())
        throw new PathExistsException(SITE, target.full);
    const bool files = pathKind == PathKind::File && target.pathKind == PathKind::File;
    const bool folders = pathKind == PathKind::Folder && target.pathKind == PathKind::Folder;
    if (!files && !folders)
        throw new Framework::ErrorException(SITE);
    if (_wrename(toLongForm(withoutTrailingSeparators(full)).c_str(),
                 toLongForm(withoutTrailingSeparators(target.full)).c_str()) == -1) {
        const OsError error(false);
        throw new OsException(SITE, error, ~uint64_t(0), String(L"_wrename"), String(L"Rename error"));
    }
    *this = target;
}

}}  // namespace Framework::Io
