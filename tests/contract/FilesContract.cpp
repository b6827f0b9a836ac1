// The contract of os/Files.h, in a folder beside the test program.
#include "os/Files.h"

#include <gtest/gtest.h>

#include <map>

#include "base/RuntimeError.h"
#include "os/RegistryStore.h"
#include "tests/contract/Implementation.h"

namespace {

constexpr std::size_t kAll = 1 << 20;

class FilesContract : public testing::Test {
 protected:
    FilesContract() {
        PrepareContract();
        folder_ = os::ProgramFolder() / (os::ProgramBaseName() + "-files");
        os::MakeFolder(folder_);
        for (const char* name : {"a.txt", "b.txt", "\xE9t\xE9 \x80.txt", "b.txt.new"})
            os::RemoveFile(In(name));
    }

    os::Path In(const std::string& name) const { return folder_ / name; }

    os::Path folder_;
};

TEST_F(FilesContract, FoldersAreMadeOnceAndNeedTheirParent) {
    EXPECT_TRUE(os::FolderExists(folder_));
    EXPECT_TRUE(os::FolderExists(folder_ + "/"));
    EXPECT_FALSE(os::FileExists(folder_));
    EXPECT_NO_THROW(os::MakeFolder(folder_));
    EXPECT_THROW(os::MakeFolder(In("missing/child")), RuntimeError);
    os::AppendToFile(In("a.txt"), "");
    EXPECT_THROW(os::MakeFolder(In("a.txt")), RuntimeError);
}

TEST_F(FilesContract, AppendingCreatesAndKeepsWhatIsThere) {
    os::AppendToFile(In("a.txt"), "");
    EXPECT_TRUE(os::FileExists(In("a.txt")));
    EXPECT_FALSE(os::FolderExists(In("a.txt")));
    EXPECT_EQ(os::ReadWholeFile(In("a.txt"), kAll), "");
    os::AppendToFile(In("a.txt"), "one\r\n");
    os::AppendToFile(In("a.txt"), std::string("two\0\n", 5));
    EXPECT_EQ(os::ReadWholeFile(In("a.txt"), kAll), std::string("one\r\ntwo\0\n", 10));
}

TEST_F(FilesContract, ReadingStopsAtTheLimitAndAnswersNothingForWhatIsNoFile) {
    os::AppendToFile(In("a.txt"), "0123456789");
    EXPECT_EQ(os::ReadWholeFile(In("a.txt"), 4), "0123");
    EXPECT_EQ(os::ReadWholeFile(In("a.txt"), 0), "");
    EXPECT_EQ(os::ReadWholeFile(In("b.txt"), kAll), std::nullopt);
    EXPECT_EQ(os::ReadWholeFile(folder_, kAll), std::nullopt);
}

TEST_F(FilesContract, ReplacingLeavesTheNewContentAndNothingElse) {
    os::ReplaceFileWith(In("b.txt"), "first, longer");
    os::ReplaceFileWith(In("b.txt"), "second");
    EXPECT_EQ(os::ReadWholeFile(In("b.txt"), kAll), "second");
    os::AppendToFile(In("c.txt"), "third");
    os::RenameFile(In("c.txt"), In("b.txt"));
    EXPECT_EQ(os::ReadWholeFile(In("b.txt"), kAll), "third");
    EXPECT_FALSE(os::FileExists(In("c.txt")));
    EXPECT_FALSE(os::FileExists(In("b.txt.new")));
    os::RemoveFile(In("b.txt"));
    EXPECT_FALSE(os::FileExists(In("b.txt")));
    EXPECT_NO_THROW(os::RemoveFile(In("b.txt")));
}

TEST_F(FilesContract, ChangesOfFoldersAndInMissingFoldersFailWithANumberAndALineOfText) {
    for (const auto& place : {In("missing/a.txt"), folder_}) {
        for (const auto change : {os::AppendToFile, os::ReplaceFileWith}) {
            try {
                change(place, "x");
                ADD_FAILURE() << place.Shown() << " was changed";
            } catch (const RuntimeError& error) {
                EXPECT_NE(error.Number(), 0) << place.Shown();
                const std::string text = error.what();  // stands in sentences and lines
                EXPECT_TRUE(!text.empty() && text.find_first_of("\r\n") == text.npos) << text;
            }
            EXPECT_FALSE(os::FileExists(place + ".new"));
        }
    }
    EXPECT_TRUE(os::FolderExists(folder_));
}

TEST_F(FilesContract, BothSeparatorsAndNamesInTheCodePageWork) {
    const auto name = std::string("\xE9t\xE9 \x80.txt");
    const auto twice = os::Path::FromText(folder_.Shown() + "\\" + name);
    os::AppendToFile(twice, "x");
    EXPECT_TRUE(os::FileExists(In(name)));
    EXPECT_EQ(os::ReadWholeFile(twice, kAll), "x");
}

// Characters of four scripts: no code page but UTF-8 has them all.
TEST_F(FilesContract, APathHoldsWhatNoTextCanSay) {
    const auto foreign = os::Path::FromSystem(In("").System() + "\xC5\x81\xD0\x9F\xE4\xB8\xAD\xCE\xB1");
    os::MakeFolder(foreign);
    EXPECT_TRUE(os::FolderExists(foreign));
    const auto file = foreign / "a.txt";
    os::AppendToFile(file, "x");
    EXPECT_EQ(os::ReadWholeFile(file, kAll), "x");
    os::ReplaceFileWith(file, "y");
    EXPECT_EQ(os::ReadWholeFile(file, kAll), "y");
    os::RemoveFile(file);
    EXPECT_FALSE(os::FileExists(file));
    const auto text = file.Text();
    EXPECT_TRUE(!text || os::Path::FromText(*text) == file) << *text;
    EXPECT_NE(file.Shown().find("a.txt"), std::string::npos);
    EXPECT_EQ(os::Path::FromText("caf\xE9").Text(), "caf\xE9");

    const auto hive = os::RegistryHive::CurrentUser;
    EXPECT_TRUE(os::ReadRegistryPath(hive, kContractKey, "path").IsEmpty());
    EXPECT_TRUE(os::WriteRegistryPath(hive, kContractKey, "path", file));
    EXPECT_EQ(os::ReadRegistryPath(hive, kContractKey, "path"), file);
}

TEST_F(FilesContract, ANameThatDiffersInCaseOnlyIsTheOneThatIsThere) {
    os::AppendToFile(In("b.txt"), "x");
    os::AppendToFile(os::InSpellingOfDisk(folder_, "B.TXT"), "y");
    EXPECT_EQ(os::ReadWholeFile(In("b.txt"), kAll), "xy");
    EXPECT_FALSE(os::FileExists(os::InSpellingOfDisk(folder_, "c.txt")));
}

TEST_F(FilesContract, AFolderTellsOfEachEntryWhatItIsAndHowLarge) {
    const auto inside = In("inside");
    for (const auto& folder : {inside, inside / "caf\xE9"}) os::MakeFolder(folder);
    os::ReplaceFileWith(inside / "a.txt", "12345");
    std::map<std::string, std::pair<bool, std::uint64_t>> entries;
    os::FolderReader reader(inside);
    while (const auto entry = reader.Next())
        entries[(inside / os::Path::FromSystem(entry->name)).Shown()] = {entry->isFolder,
                                                                         entry->isFolder ? 0 : entry->size};
    EXPECT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries.at((inside / "a.txt").Shown()), std::pair(false, std::uint64_t{5}));
    EXPECT_TRUE(entries.at((inside / "caf\xE9").Shown()).first);
    EXPECT_FALSE(os::FolderReader(In("missing")).Next());
}

TEST_F(FilesContract, TheProgramKnowsWhereItIs) {
    ASSERT_FALSE(os::ProgramFolder().IsEmpty());
    EXPECT_EQ(std::string("/\\").find(os::ProgramFolder().System().back()), std::string::npos);
    EXPECT_TRUE(os::FolderExists(os::ProgramFolder()));
    EXPECT_EQ(os::ProgramBaseName().find('.'), std::string::npos);
}

}  // namespace
