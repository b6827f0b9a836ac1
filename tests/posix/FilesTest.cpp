// Who may read what the program writes.
#include "os/Files.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include "os/RegistryStore.h"
#include "os/SettingsFile.h"

namespace {

constexpr char kTopKey[] = "software\\Wrenlow\\";

mode_t ModeOf(const std::string& path) {
    struct stat description {};
    EXPECT_EQ(::stat(path.c_str(), &description), 0) << path;
    return description.st_mode & 0777;
}

TEST(Files, WhatIsMadeIsItsOwnersAloneAndWhatIsThereKeepsItsMode) {
    char pattern[] = "/tmp/wrenlow-files-XXXXXX";
    const std::string root = ::mkdtemp(pattern);
    const auto before = ::umask(0);
    const auto folder = os::Path::FromSystem(root + "/logs");
    os::MakeFolder(folder);
    os::AppendToFile(folder / "log", "line");
    os::ReplaceFileWith(folder / "aliases", "pair");
    os::SetSettingsFile(root + "/new/settings", kTopKey);
    os::WriteRegistryValue(os::RegistryHive::CurrentUser, kTopKey, "n", 1, "1");
    for (const char* made : {"/logs", "/new"}) EXPECT_EQ(ModeOf(root + made), 0700u) << made;
    for (const char* made : {"/logs/log", "/logs/aliases", "/new/settings"})
        EXPECT_EQ(ModeOf(root + made), 0600u) << made;

    ::chmod((root + "/logs/log").c_str(), 0640);
    ::chmod((root + "/logs/aliases").c_str(), 0640);
    os::AppendToFile(folder / "log", "line");
    os::ReplaceFileWith(folder / "aliases", "pair");
    EXPECT_EQ(ModeOf(root + "/logs/log"), 0640u);
    EXPECT_EQ(ModeOf(root + "/logs/aliases"), 0640u);
    os::SetSettingsFile("", "");
    ::umask(before);
    EXPECT_EQ(std::system(("rm -rf " + root).c_str()), 0);
}

}  // namespace
