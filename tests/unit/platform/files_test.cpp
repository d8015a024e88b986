#include "platform/files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include "support/temporary_folder.h"

namespace platform::files {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class Files : public test::InTemporaryFolder {
  protected:
    [[nodiscard]] unsigned modeOf(const std::string& name) const {
        return status(path(name)).value_or(FileStatus{}).mode;
    }
};

// The content that cannot be written beyond `size` bytes of a file.
class SizeLimit {
  public:
    explicit SizeLimit(rlim_t size) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &old_);
        const rlimit limit{size, old_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SizeLimit() {
        setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, handler_);
    }
    SizeLimit(const SizeLimit&) = delete;
    SizeLimit& operator=(const SizeLimit&) = delete;

  private:
    rlimit old_{};
    void (*handler_)(int);
};

TEST_F(Files, AReplacedFileHasTheContentAndTheMode) {
    const std::string content("a\0b\n", 4);
    for (const unsigned mode : {0644U, 0600U, 0666U, 0440U}) {
        EXPECT_TRUE(replace(path("f"), content, {.mode = mode}));
        EXPECT_EQ(read(path("f")), content);
        EXPECT_EQ(modeOf("f"), mode);
    }
    EXPECT_THAT(names(), ElementsAre("f"));
}

TEST_F(Files, AReplacementHasAllPiecesInTheirOrder) {
    const std::vector<std::string> pieces = {"one ", "", "two ", "three"};
    EXPECT_TRUE(replace(path("f"), pieces, {.mode = 0600}));
    EXPECT_EQ(read(path("f")), "one two three");
    EXPECT_TRUE(replace(path("f"), std::span<const std::string>(), {.mode = 0600}));
    EXPECT_EQ(read(path("f")), "");
}

TEST_F(Files, AReplacedFileHasTheGroup) {
    EXPECT_TRUE(replace(path("f"), "x", {.mode = 0640, .group = getegid()}));
    EXPECT_EQ(status(path("f")).value().group, getegid());
    EXPECT_EQ(modeOf("f"), 0640U);
}

// Only root may give a file to a group that it is not in, and in a namespace not even root.
TEST_F(Files, WhereAGroupCannotBeGivenItAndTheRestHaveWhatBothMay) {
    constexpr unsigned kStrangeGroup = static_cast<unsigned>(-2);
    constexpr std::pair<unsigned, unsigned> kGiven[] = {{0664, 0644}, {0644, 0644}, {0640, 0600},
                                                        {0604, 0600}, {0666, 0666}, {0600, 0600}};
    for (const auto& [mode, without] : kGiven) {
        EXPECT_TRUE(replace(path("f"), "x", {.mode = mode, .group = kStrangeGroup}));
        const FileStatus file = status(path("f")).value();
        EXPECT_EQ(file.mode, file.group == kStrangeGroup ? mode : without);
    }
}

TEST_F(Files, AReplacedLinkLeavesWhatItPointsTo) {
    write("target", "precious");
    fs::create_symlink(path("target"), path("f"));
    EXPECT_TRUE(replace(path("f"), "new", {.mode = 0644}));
    EXPECT_EQ(read(path("target")), "precious");
    EXPECT_TRUE(status(path("f")).value().isRegular);
    EXPECT_EQ(read(path("f")), "new");
}

TEST_F(Files, AReplacedPipeHoldsNothingUp) {
    ASSERT_EQ(mkfifo(path("f").c_str(), 0600), 0);
    EXPECT_TRUE(replace(path("f"), "new", {.mode = 0644}));
    EXPECT_EQ(read(path("f")), "new");
}

TEST_F(Files, AFolderIsNotReplaced) {
    fs::create_directory(path("f"));
    EXPECT_FALSE(replace(path("f"), "new", {.mode = 0644}));
    EXPECT_THAT(names(), ElementsAre("f"));
    EXPECT_FALSE(replace(path("missing/f"), "new", {.mode = 0644}));
}

TEST_F(Files, APathWithoutAFolderIsInTheWorkingFolder) {
    const fs::path before = fs::current_path();
    fs::current_path(path(""));
    EXPECT_TRUE(replace("f", "new", {.mode = 0644}));
    fs::current_path(before);
    EXPECT_EQ(read(path("f")), "new");
}

TEST_F(Files, AFolderThatCannotBeBroughtToTheDiskIsToldOf) {
    constexpr uid_t kNobody = 65534;
    const uid_t owner = geteuid() == 0 ? kNobody : geteuid();
    fs::create_directory(path("folder"));
    ASSERT_EQ(chown(path("folder").c_str(), owner, static_cast<gid_t>(-1)), 0);
    fs::permissions(path("folder"), fs::perms{0300});  // may be written to, but not opened
    fs::permissions(path(""), fs::perms{0755});
    EXPECT_EXIT(
        {
            const bool isOther = seteuid(owner) == 0;
            _exit(isOther && !replace(path("folder/f"), "new", {.mode = 0644}) ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    fs::permissions(path("folder"), fs::perms{0700});
    EXPECT_EQ(read(path("folder/f")), "new");
}

TEST_F(Files, AFullDiskLeavesTheOldFileAndNoOther) {
    write("f", "old");
    {
        const SizeLimit limit(5);
        EXPECT_FALSE(replace(path("f"), "longer than that", {.mode = 0644}));
    }
    EXPECT_EQ(read(path("f")), "old");
    EXPECT_THAT(names(), ElementsAre("f"));
}

TEST_F(Files, ACreatedFileHasTheContentAndTheMode) {
    EXPECT_TRUE(create(path("f"), "new", {.mode = 0600}));
    EXPECT_EQ(read(path("f")), "new");
    EXPECT_EQ(modeOf("f"), 0600U);
    EXPECT_THAT(names(), ElementsAre("f"));
}

TEST_F(Files, WhatHasTheNameAlreadyIsNotReplacedByACreatedOne) {
    write("f", "old");
    fs::create_directory(path("folder"));
    fs::create_symlink(path("nowhere"), path("link"));
    for (const char* name : {"f", "folder", "link"}) {
        errno = 0;
        EXPECT_FALSE(create(path(name), "new", {.mode = 0600})) << name;
        EXPECT_EQ(errno, EEXIST) << name;
    }
    EXPECT_EQ(read(path("f")), "old");
    EXPECT_THAT(names(), ElementsAre("f", "folder", "link"));
}

TEST_F(Files, AFullDiskLeavesNothingOfACreatedFile) {
    {
        const SizeLimit limit(5);
        EXPECT_FALSE(create(path("f"), "longer than that", {.mode = 0600}));
        EXPECT_EQ(errno, EFBIG);
    }
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(Files, AFileIsReadWhole) {
    const std::string content(200000, 'x');
    write("f", content);
    EXPECT_EQ(read(path("f")), content);
    EXPECT_EQ(readRegular(path("f")), content);
    write("empty", "");
    EXPECT_EQ(read(path("empty")), "");
}

TEST_F(Files, WhatCannotBeReadGivesNothing) {
    fs::create_directory(path("folder"));
    fs::create_symlink(path("loop"), path("loop"));
    for (const char* name : {"folder", "missing", "folder/missing", "loop"}) {
        EXPECT_EQ(read(path(name)), std::nullopt) << name;
        EXPECT_EQ(readRegular(path(name)), std::nullopt) << name;
    }
    EXPECT_EQ(read(""), std::nullopt);
    EXPECT_EQ(read("/proc/self/mem"), std::nullopt);  // opens, and then fails
}

TEST_F(Files, ASignalDoesNotEndARead) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    static std::atomic<bool> isInterrupted;
    isInterrupted = false;
    struct sigaction counting {};
    counting.sa_handler = [](int) { isInterrupted = true; };  // and no SA_RESTART
    struct sigaction before {};
    sigaction(SIGUSR1, &counting, &before);
    std::thread writer([file = path("pipe"), reader = pthread_self(), id = gettid()] {
        const int pipe = ::open(file.c_str(), O_WRONLY);  // waits for the reader's open
        // The reader sleeps in nothing but its read.
        const std::string status = "/proc/self/task/" + std::to_string(id) + "/stat";
        while (read(status).value_or("").find(") S ") == std::string::npos) {
            std::this_thread::yield();
        }
        pthread_kill(reader, SIGUSR1);
        while (!isInterrupted) {
            std::this_thread::yield();
        }
        EXPECT_EQ(::write(pipe, "whole", 5), 5);
        ::close(pipe);
    });
    EXPECT_EQ(read(path("pipe")), "whole");
    writer.join();
    sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(Files, OnlyARegularFileIsReadFromAFolderThatIsOpenToAll) {
    write("target", "secret");
    fs::create_symlink(path("target"), path("link"));
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(read(path("link")), "secret");
    EXPECT_EQ(readRegular(path("link")), std::nullopt);
    EXPECT_EQ(readRegular(path("pipe")), std::nullopt);
    EXPECT_EQ(readRegular("/dev/zero"), std::nullopt);
}

TEST(StandardStreamsDeathTest, ThatAreClosedAreNotTakenByTheNextFile) {
    EXPECT_EXIT(
        {
            close(STDIN_FILENO);
            close(STDOUT_FILENO);
            occupyStandardStreams();
            const bool fails = ::write(STDOUT_FILENO, "x", 1) < 0;
            _exit(fails && ::open("/dev/null", O_RDONLY) > STDERR_FILENO ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(Files, TheStatusIsThatOfALinkItself) {
    write("f", "x");
    fs::create_symlink(path("f"), path("link"));
    fs::create_directory(path("folder"));
    fs::create_hard_link(path("f"), path("same"));
    const FileStatus file = status(path("f")).value();
    EXPECT_TRUE(file.isRegular);
    EXPECT_FALSE(file.isFolder);
    EXPECT_EQ(file.owner, geteuid());
    EXPECT_TRUE(file.isSameFileAs(status(path("same")).value()));
    EXPECT_FALSE(file.isSameFileAs(status(path("link")).value()));
    EXPECT_FALSE(status(path("link")).value().isRegular);
    EXPECT_TRUE(status(path("folder")).value().isFolder);
    EXPECT_FALSE(status(path("missing")));
}

TEST(SameFile, HasTheDeviceAndTheNumber) {
    const FileStatus file{.device = 1, .number = 5};
    EXPECT_TRUE(file.isSameFileAs({.device = 1, .number = 5}));
    EXPECT_FALSE(file.isSameFileAs({.device = 1, .number = 6}));
    EXPECT_FALSE(file.isSameFileAs({.device = 2, .number = 5}));
}

}  // namespace

}  // namespace platform::files
