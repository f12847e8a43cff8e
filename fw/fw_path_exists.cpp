#include "fw/fw_path_exists.h"

#include <direct.h>
#include <io.h>
#include <sys/stat.h>

#include <cstdio>

namespace {

bool isSeparator(char c)
{
    return c == '/' || c == '\\';
}

}  // namespace

fw_string fw_normal_path(const fw_string& path)
{
    const char* text = path.c_str();
    fw_string result;
    if (isSeparator(text[0]))
        result.append(isSeparator(text[1]) ? "\\/" : "/");
    bool first = true;
    fw_string rest = path;
    while (!rest.empty()) {
        const fw_string piece = rest.split_first_of("/\\");
        if (piece.empty())
            continue;
        if (!first)
            result.append('/');
        result.append(piece.c_str());
        first = false;
    }
    return result;
}

bool fw_path_exists(const fw_string& path, bool wantFile, bool pathIsNormal)
{
    if (path.empty())
        return true;
    fw_string name = pathIsNormal ? path : fw_normal_path(path);
    const uint32_t length = name.length();
    if (length > 1 && isSeparator(name.c_str()[length - 1]))
        name = name.substr(0, length - 1);
    if (name.c_str()[0] == '/') {
        fw_string drive;
        drive.append(char('a' + _getdrive() - 1));
        drive.append(':');
        name.insert(drive.c_str(), 0);
    }
    if (_access(name.c_str(), 0) != 0)
        return false;
    struct _stat status;
    if (_stat(name.c_str(), &status) == 0)
        return ((status.st_mode & _S_IFDIR) == 0) == wantFile;
    FILE* file = std::fopen(name.c_str(), "r");
    const bool isFile = file != nullptr;
    if (file)
        std::fclose(file);
    return isFile == wantFile;
}
