#include "fw/fw_path_exists.h"


#include <windows.h>
#include <gtest/gtest.h>

#include <cstdio>

TEST(fw_path_existsTest, FilesAndFoldersOnTheRealDisk)
{
    std::fclose(std::fopen("fw_path_exists file.txt", "wb"));
    CreateDirectoryA("fw_path_exists folder", nullptr);
    char here[MAX_PATH];
    GetCurrentDirectoryA(MAX_PATH, here);
    const struct {
        std::string path;
        bool file;
        bool folder;
    } rows[] = {
        {"", true, true},
        {"fw_path_exists file.txt", true, false},
        {"fw_path_exists folder/", false, true},
        {here + std::string("//fw_path_exists folder"), false, true},
        {here + 2 + std::string("\\fw_path_exists file.txt"), true, false},  // rooted: on the current drive
        {"no such thing", false, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.file, fw_path_exists(fw_string(row.path.c_str()), true, false)) << row.path;
        EXPECT_EQ(row.folder, fw_path_exists(fw_string(row.path.c_str()), false, false)) << row.path;
    }
    RemoveDirectoryA("fw_path_exists folder");
    std::remove("fw_path_exists file.txt");
    EXPECT_STREQ("\\/server/share", fw_normal_path(fw_string("\\\\server\\share")).c_str());
}
