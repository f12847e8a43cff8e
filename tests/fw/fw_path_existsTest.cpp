#include "fw/fw_path_exists.h"

#include "support/FwText.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

TEST(fw_path_existsTest, FilesAndFoldersOnTheRealDisk)
{
    std::fclose(std::fopen("fw_path_exists file.txt", "wb"));
    CreateDirectoryA("fw_path_exists folder", nullptr);
    char current[MAX_PATH];
    GetCurrentDirectoryA(MAX_PATH, current);
    const std::string here(current);

    struct Case
    {
        std::string path;
        bool file;
        bool folder;
    };
    const Case cases[] = {
        {"", true, true},
        {"fw_path_exists file.txt", true, false},
        {"fw_path_exists folder", false, true},
        {"fw_path_exists folder/", false, true},
        {here + "\\fw_path_exists file.txt", true, false},
        {here + "//fw_path_exists folder", false, true},
        // Rooted: on the current drive.
        {here.substr(2) + "/fw_path_exists file.txt", true, false},
        {"no such thing", false, false},
        {"fw_path_exists file.txt/inside", false, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.file, fw_path_exists(fw_string(c.path.c_str()), true, false)) << c.path;
        EXPECT_EQ(c.folder, fw_path_exists(fw_string(c.path.c_str()), false, false)) << c.path;
    }
    RemoveDirectoryA("fw_path_exists folder");
    std::remove("fw_path_exists file.txt");

    EXPECT_EQ("\\/server/share", text(fw_normal_path(fw_string("\\\\server\\share"))));
}
