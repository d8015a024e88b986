#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace platform::files {

namespace {

// An open file, closed when it goes.
class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] bool isOpen() const { return number_ >= 0; }
    [[nodiscard]] int number() const { return number_; }
    // Whether nothing that was written has been lost by it.
    bool close() { return number_ < 0 || ::close(std::exchange(number_, -1)) == 0; }

  private:
    int number_;
};

// Repeats a call that a signal has interrupted.
template <class Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

std::optional<std::string> contentOf(const Descriptor& file) {
    std::string content;
    struct stat found {};
    if (::fstat(file.number(), &found) == 0 && S_ISREG(found.st_mode)) {
        content.reserve(static_cast<std::size_t>(found.st_size));
    }
    std::array<char, 1 << 13> block{};
    for (;;) {
        const ssize_t size =
            uninterrupted([&] { return ::read(file.number(), block.data(), block.size()); });
        if (size < 0) {
            return std::nullopt;
        }
        if (size == 0) {
            return content;
        }
        content.append(block.data(), static_cast<std::size_t>(size));
    }
}

bool writeAll(const Descriptor& file, std::string_view rest) {
    while (!rest.empty()) {
        const ssize_t size =
            uninterrupted([&] { return ::write(file.number(), rest.data(), rest.size()); });
        if (size < 0) {
            return false;
        }
        rest.remove_prefix(static_cast<std::size_t>(size));
    }
    return true;
}

// What a mode leaves to the others of a group that is not known: what both the group and the rest
// have.
mode_t withoutGroup(mode_t mode) {
    constexpr mode_t kOwnerBits = 0700;
    constexpr mode_t kOtherBits = 07;
    const mode_t common = (mode >> 3) & mode & kOtherBits;
    return (mode & kOwnerBits) | common << 3 | common;
}

// The group first, so that no other one may read in between.
bool giveAccess(const Descriptor& file, const FileAccess& access) {
    const bool grouped =
        !access.group || ::fchown(file.number(), static_cast<uid_t>(-1), *access.group) == 0;
    return ::fchmod(file.number(), grouped ? access.mode : withoutGroup(access.mode)) == 0;
}

bool syncFolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const Descriptor file(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return file.isOpen() && ::fsync(file.number()) == 0;
}

bool writeWhole(Descriptor& file, std::span<const std::string> pieces, const FileAccess& access) {
    return giveAccess(file, access) &&
           std::all_of(pieces.begin(), pieces.end(),
                       [&](const std::string& piece) { return writeAll(file, piece); }) &&
           ::fsync(file.number()) == 0 && file.close();
}

// Writes a file beside `path`, which giveName(beside, path) then gives that name.
template <class GiveName>
bool writeBeside(const std::string& path, std::span<const std::string> pieces,
                 const FileAccess& access, GiveName giveName) {
    std::string beside = path + ".new-XXXXXX";
    Descriptor file(::mkostemp(beside.data(), O_CLOEXEC));
    if (!file.isOpen()) {
        return false;
    }
    if (!writeWhole(file, pieces, access) || !giveName(beside.c_str(), path.c_str())) {
        const int error = errno;
        ::unlink(beside.c_str());
        errno = error;
        return false;
    }
    return syncFolderOf(path);
}

// Fails with EEXIST where something has the name.
bool renameToNew(const char* from, const char* to) {
    if (::link(from, to) == 0) {
        ::unlink(from);
        return true;
    }
    // Not every file system has hard links. Between this look and the rename another program may
    // take the name.
    if (errno == EEXIST || status(to)) {
        errno = EEXIST;
        return false;
    }
    return std::rename(from, to) == 0;
}

}  // namespace

std::optional<FileStatus> status(const std::string& path) {
    struct stat found {};
    // A file that is not there is not a system error, which printSystemError would tell.
    const int error = errno;
    if (::lstat(path.c_str(), &found) != 0) {
        errno = error;
        return std::nullopt;
    }
    return FileStatus{.isRegular = S_ISREG(found.st_mode),
                      .isFolder = S_ISDIR(found.st_mode),
                      .owner = found.st_uid,
                      .group = found.st_gid,
                      .mode = found.st_mode & 07777U,
                      .device = found.st_dev,
                      .number = found.st_ino};
}

std::optional<std::string> read(const std::string& path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return file.isOpen() ? contentOf(file) : std::nullopt;
}

std::optional<std::string> readRegular(const std::string& path) {
    // A pipe that nobody writes to must not hold the program up before it is known to be one.
    const Descriptor file(
        ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    struct stat found {};
    if (!file.isOpen() || ::fstat(file.number(), &found) != 0 || !S_ISREG(found.st_mode)) {
        return std::nullopt;
    }
    return contentOf(file);
}

bool write(const std::string& path, const std::string& content) {
    constexpr mode_t kAnybody = 0666;  // whom the process's mask leaves
    Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kAnybody));
    return file.isOpen() && writeAll(file, content) && file.close();
}

bool replace(const std::string& path, std::span<const std::string> pieces,
             const FileAccess& access) {
    return writeBeside(path, pieces, access, [](const char* beside, const char* name) {
        return std::rename(beside, name) == 0;
    });
}

bool create(const std::string& path, const std::string& content, const FileAccess& access) {
    return writeBeside(path, {&content, 1}, access, renameToNew);
}

void occupyStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0) {
            ::open("/dev/null", O_RDONLY);  // gives the lowest number that is free: this one
        }
    }
}

}  // namespace platform::files
