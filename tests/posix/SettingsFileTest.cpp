// The settings file as people and other processes see it. What it does as a registry is in the contract
// suite.
#include "os/SettingsFile.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <string>

#include "os/Files.h"
#include "os/RegistryStore.h"
#include "tests/unit/Reported.h"

namespace {

const std::string kTopKey = "software\\Wrenlow\\";

class SettingsFile : public testing::Test {
 protected:
    SettingsFile() {
        char pattern[] = "/tmp/wrenlow-settings-XXXXXX";
        folder_ = mkdtemp(pattern);
        path_ = folder_ + "/settings";
        os::SetSettingsFile(path_, kTopKey);
    }
    ~SettingsFile() override {
        os::SetSettingsFile("", "");
        for (const char* name : {"/settings", "/settings.new", "/real"}) unlink((folder_ + name).c_str());
        rmdir(folder_.c_str());
    }

    void PutFile(const std::string& text) { std::ofstream(path_) << text; }
    std::string FileText() { return os::ReadWholeFile(os::Path::FromSystem(path_), 1 << 16).value_or(""); }
    static std::string Read(const std::string& name, const std::string& key = kTopKey) {
        const auto value = os::ReadRegistryValue(os::RegistryHive::CurrentUser, key, name, 4096);
        return value ? value->data : "(nothing)";
    }
    static bool Write(const std::string& name, const std::string& text, const std::string& key = kTopKey) {
        return os::WriteRegistryValue(os::RegistryHive::CurrentUser, key, name, 1, text);
    }
    static bool Remove(const std::string& name) {
        return os::RemoveRegistryValue(os::RegistryHive::CurrentUser, kTopKey, name);
    }

    std::string folder_;
    std::string path_;
};

TEST_F(SettingsFile, ReadsWhatPeopleWrite) {
    PutFile(
        "\xEF\xBB\xBFlogims=1\r\n"  // a byte order mark, as some editors put it
        "# my settings\r\n"
        "  logwhere = C:\\AimLogs\\  \r\n"
        "\n"
        "greeting=\"caf\xC3\xA9 \\\"x\\\" \\x0D\\x0A\\xE9 \"\n"
        "foreign=\xD0\x96 \xFF\n"
        "logims=0\n"
        "\\software\\other\\port : 4 = 48 2B 00 00\n"
        "late=yes");
    EXPECT_EQ(Read("LogIMs"), "1");
    EXPECT_EQ(Read("logwhere"), "C:\\AimLogs\\");
    EXPECT_EQ(Read("greeting"), "caf\xC3\xA9 \"x\" \r\n\xE9 ");
    EXPECT_EQ(Read("foreign"), "\xD0\x96 \xFF");
    EXPECT_EQ(Read("late"), "yes");
    EXPECT_EQ(Read("Port", "Software\\Other"), std::string("\x48\x2B\0\0", 4));
}

TEST_F(SettingsFile, WritesWhatPeopleCanRead) {
    Write("logwhere", "C:\\AimLogs\\");
    Write("blank", " ");
    Write("accent", "caf\xC3\xA9");
    Write("other", "x", "Software\\Other\\");
    os::WriteRegistryValue(os::RegistryHive::CurrentUser, "Software\\Other", "Blob", 3, {"\0\xFF", 2});
    Write("logims", "1");
    EXPECT_EQ(FileText(),
              "logwhere=C:\\AimLogs\\\n"
              "blank=\" \"\n"
              "accent=caf\xC3\xA9\n"
              "\\software\\other\\other=x\n"
              "\\software\\other\\Blob:3=00 FF\n"
              "logims=1\n");
}

TEST_F(SettingsFile, ChangesOnlyTheLineOfTheValue) {
    PutFile("# remark\nno setting\nlogims=0\n\n[other]\n\xFF\xFE\n");
    Write("logims", "1");
    Write("new", "x");
    EXPECT_EQ(FileText(), "# remark\nno setting\nlogims=1\n\n[other]\n\xFF\xFE\nnew=x\n");
    EXPECT_TRUE(Remove("logims"));
    EXPECT_EQ(FileText(), "# remark\nno setting\n\n[other]\n\xFF\xFE\nnew=x\n");
}

TEST_F(SettingsFile, LinesOfNoGoodFormSetNothing) {
    const std::string lines[] = {
        "name",
        "=x",
        "name:4294967296=00",
        "name:-1=00",
        "name:=x",
        "name:3=A",
        "name:3=XY",
        "name:nonsense=1",
        "name:99999999999=00",
        "name=\"open",
        "name=\"a\"b",
        "name=\"\\q\"",
        "name=\"\\x1\"",
        "name=\"\\",
        "name=a\x01z",
        std::string("name=a\0z", 8),
        "\"name=x",
        "[name=x",
        "#name=x",
    };
    for (const auto& line : lines) {
        PutFile(line + "\nafter=kept\n");
        EXPECT_EQ(Read("name"), "(nothing)") << line;
        EXPECT_EQ(Read("after"), "kept") << line;
        ASSERT_TRUE(Write("name", "good")) << line;
        EXPECT_EQ(Read("name"), "good") << line;
    }
}

// What is no settings file is neither read nor written over, and waits for nobody. What was read last counts.
TEST_F(SettingsFile, AFileThatCannotBeReadIsToldOnceAndChangesNothing) {
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"File too large", [this] { PutFile("logims=0\n" + std::string(1024 * 1024, '#') + "\n"); }},
        {"Not a regular file", [this] { ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0); }},
        {"Is a directory", [this] { ASSERT_EQ(mkdir(path_.c_str(), 0700), 0); }},
        {"Too many levels of symbolic links", [this] { ASSERT_EQ(symlink("settings", path_.c_str()), 0); }},
    };
    for (const auto& [reason, spoil] : cases) {
        const Reported reported;
        PutFile("logims=1\n");
        EXPECT_EQ(Read("logims"), "1");
        unlink(path_.c_str());
        spoil();
        EXPECT_EQ(Read("logims") + Read("logims"), "11");
        EXPECT_FALSE(Write("logims", "0"));
        ASSERT_EQ(Reported::reports.size(), 1u) << reason;
        EXPECT_EQ(Reported::reports[0].where, "modRegistry:QueryValue");
        EXPECT_EQ(Reported::reports[0].description,
                  "The settings file " + path_ + " cannot be read: " + reason);
        if (unlink(path_.c_str()) != 0) rmdir(path_.c_str());
    }
    const Reported reported;
    PutFile("logims=1\n");
    EXPECT_EQ(Read("logims"), "1");
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none{0, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    const auto withoutDescriptors = Read("logims");
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_EQ(withoutDescriptors, "1");
    ASSERT_EQ(Reported::reports.size(), 1u);
    EXPECT_TRUE(Reported::reports[0].description.ends_with("Too many open files"));
}

TEST_F(SettingsFile, KeepsALinkAndThePermissions) {
    const auto real = folder_ + "/real";
    PutFile("a=1\n");
    ASSERT_EQ(rename(path_.c_str(), real.c_str()), 0);
    ASSERT_EQ(chmod(real.c_str(), 0640), 0);
    ASSERT_EQ(symlink("real", path_.c_str()), 0);
    ASSERT_TRUE(Write("a", "2"));
    struct stat status {};
    ASSERT_EQ(lstat(path_.c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    ASSERT_EQ(stat(real.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0640u);
    EXPECT_EQ(Read("a"), "2");
}

TEST_F(SettingsFile, AChangeByAnotherProcessCountsAtOnceAndNoneIsLost) {
    constexpr int kEach = 25;
    const auto child = fork();
    if (child == 0) {
        for (int i = 0; i < kEach; ++i) Write("child" + std::to_string(i), "x");
        _exit(0);
    }
    for (int i = 0; i < kEach; ++i) EXPECT_TRUE(Write("parent" + std::to_string(i), "x"));
    int status = 0;
    waitpid(child, &status, 0);
    for (int i = 0; i < kEach; ++i) {
        EXPECT_EQ(Read("child" + std::to_string(i)), "x");
        EXPECT_EQ(Read("parent" + std::to_string(i)), "x");
    }
}

TEST_F(SettingsFile, AnOverrideCountsForThisRunAndADefaultWhileNothingIsSet) {
    os::SetSettingDefault("logwhere", "logs");
    EXPECT_EQ(Read("logwhere"), "logs");
    Write("logwhere", "elsewhere");
    EXPECT_EQ(Read("logwhere"), "elsewhere");

    os::OverrideSetting("logwhere", "here");
    EXPECT_EQ(Read("LogWhere"), "here");
    EXPECT_EQ(FileText(), "logwhere=elsewhere\n");
    Write("logwhere", "changed");
    EXPECT_EQ(Read("logwhere"), "changed");
    EXPECT_TRUE(Remove("logwhere"));
    EXPECT_EQ(Read("logwhere"), "logs");
}

}  // namespace
