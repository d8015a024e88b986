#include "backup/own_folder.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "backup/fault.h"
#include "platform/files.h"
#include "support/temporary_folder.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

using testing::ElementsAre;

namespace {

// What it says of the folder; empty when it is content.
std::string complaint(const std::string& folder) {
    try {
        makeOwnFolder(folder);
        return "";
    } catch (const Fault& fault) {
        EXPECT_EQ(fault.status(), ExitStatus::cannotWrite);
        return fault.what();
    }
}

}  // namespace

using BackupOwnFolder = test::InTemporaryFolder;

TEST_F(BackupOwnFolder, IsMadeForItsOwnerAlone) {
    EXPECT_EQ(complaint(path("new")), "");
    EXPECT_EQ(platform::files::status(path("new")).value().mode, 0700U);
    EXPECT_EQ(complaint(path("new")), "");
    EXPECT_EQ(complaint(path("new/")), "");
}

TEST_F(BackupOwnFolder, IsNoLinkToOne) {
    fs::create_directory(path("folder"));
    fs::permissions(path("folder"), fs::perms{0700});
    fs::create_directory_symlink(path("folder"), path("link"));
    fs::create_directory_symlink(path("nowhere"), path("lost"));
    for (const char* name : {"link", "link/", "link//", "lost"}) {
        EXPECT_EQ(complaint(path(name)), path(name) + ": is a link, not the folder itself");
    }
    EXPECT_THAT(names(), ElementsAre("folder", "link", "lost"));
}

TEST_F(BackupOwnFolder, IsNotWrittenToByOthers) {
    for (const unsigned mode : {0720U, 0702U, 01777U}) {
        fs::create_directory(path("folder"));
        fs::permissions(path("folder"), fs::perms{mode});
        EXPECT_EQ(complaint(path("folder")),
                  path("folder") + ": must be a folder that nobody else owns or may write to");
        fs::remove(path("folder"));
    }
}

TEST_F(BackupOwnFolder, IsNamedWithoutWhatATerminalObeys) {
    write("a\x1b[2Jb", "");
    EXPECT_EQ(complaint(path("a\x1b[2Jb")), path("a\\x1b[2Jb") + ": is no folder");
}

}  // namespace tarvo_backup
