#include "platform/file.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace platform {

namespace {

// Besides the system's error numbers.
constexpr int error_none = 0;
constexpr int error_not_regular = -1;

thread_local int last_error = error_none;

bool failed(int error) {
    last_error = error;
    return false;
}

// A NUL inside the text would name another file than the one meant.
bool usable(const std::string &path) { return path.find('\0') == std::string::npos || failed(EINVAL); }

bool is_regular(const struct stat &s) {
    return S_ISREG(s.st_mode) || failed(S_ISDIR(s.st_mode) ? EISDIR : error_not_regular);
}

// Opens what must be a regular file. Looking before opening spares devices the side effects of an open, and
// looking after it counts: the name may have changed hands in between.
file_handle open_regular(const std::string &path, int flags) {
    if (!usable(path)) return invalid_file;
    struct stat s;
    const bool no_follow = (flags & O_NOFOLLOW) != 0;
    if ((no_follow ? lstat(path.c_str(), &s) : stat(path.c_str(), &s)) == 0) {
        if (no_follow && S_ISLNK(s.st_mode)) return failed(ELOOP), invalid_file;
        if (!is_regular(s)) return invalid_file;
    }
    int handle;
    do handle = open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, 0666);
    while (handle < 0 && errno == EINTR);
    if (handle < 0) return failed(errno), invalid_file;
    if (fstat(handle, &s) != 0)
        failed(errno);
    else if (is_regular(s))
        return handle;
    close(handle);
    return invalid_file;
}

std::string folder_of(const std::string &path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// The path that the links at `path` lead to in the end, whether or not a file is there.
bool follow_links(std::string &path) {
    for (int links = 0; links < 40; links++) {
        struct stat s;
        if (lstat(path.c_str(), &s) != 0) return errno == ENOENT || failed(errno);
        if (!S_ISLNK(s.st_mode)) return true;
        std::string target(4096, '\0');
        const ssize_t length = readlink(path.c_str(), target.data(), target.size());
        if (length < 0) return failed(errno);
        if (static_cast<size_t>(length) == target.size()) return failed(ENAMETOOLONG);
        target.resize(static_cast<size_t>(length));
        path = target.starts_with('/') ? target : folder_of(path).append(target);
    }
    return failed(ELOOP);
}

// Without this the rename may be lost with the power, though never half done. The file is in place by now,
// so a folder that cannot be synced is no failure.
void sync_folder(const std::string &folder) {
    const int handle = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return;
    fsync(handle);
    close(handle);
}

} // namespace

file_handle open_file(const std::string &path, bool read_only) {
    return open_regular(path, read_only ? O_RDONLY : O_RDWR);
}

file_handle create_file(const std::string &path) {
    if (!usable(path)) return invalid_file;
    const int handle = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (handle < 0) failed(errno);
    return handle;
}

file_handle append_file(const std::string &path) {
    return open_regular(path, O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW);
}

bool close_file(file_handle handle) { return handle == invalid_file || close(handle) == 0 || failed(errno); }

bool delete_file(const std::string &path) {
    return usable(path) && (unlink(path.c_str()) == 0 || failed(errno));
}

bool file_exists(const std::string &path) {
    return usable(path) && (access(path.c_str(), F_OK) == 0 || failed(errno));
}

int64_t read_file(file_handle handle, void *buffer, size_t bytes) {
    ssize_t done;
    do done = read(handle, buffer, bytes);
    while (done < 0 && errno == EINTR);
    if (done < 0) failed(errno);
    return done;
}

int64_t write_file(file_handle handle, const void *buffer, size_t bytes) {
    ssize_t done;
    do done = write(handle, buffer, bytes);
    while (done < 0 && errno == EINTR);
    if (done < 0) failed(errno);
    return done;
}

bool write_whole(file_handle handle, const void *bytes, size_t size) {
    const char *from = static_cast<const char *>(bytes);
    while (size != 0) {
        const int64_t written = write_file(handle, from, size);
        if (written <= 0) return written < 0 ? false : failed(EIO);
        from += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

int64_t seek_file(file_handle handle, int origin, int64_t offset) {
    constexpr int origins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (origin < 0 || origin > 2) return failed(EINVAL), -1;
    const off_t position = lseek(handle, offset, origins[origin]);
    if (position < 0) failed(errno);
    return position;
}

int64_t file_size(file_handle handle) {
    struct stat s;
    if (fstat(handle, &s) != 0) return failed(errno), -1;
    return s.st_size;
}

std::string last_file_error() {
    if (last_error == error_none) return "No error";
    if (last_error == error_not_regular) return "Not a regular file";
    return std::generic_category().message(last_error);
}

bool make_folder_of(const std::string &path) {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    if (!folder.empty()) std::filesystem::create_directories(folder, error);
    return !error || failed(error.value());
}

// Makes a file beside the target that nobody else writes. Its fixed name lets a save that was killed leave at
// most one stray file, which the next save removes; the lock tells a stray from one that is being written.
// Until it is locked, somebody else may take it for a stray, or rename it: hence the look at the name.
bool file_aside::take_name() {
    const std::string name = target.substr(folder.size());
    for (int n = 1; n < 100; n++) {
        aside = folder + '.' + name.substr(0, 240) + ".kiv-save" + (n == 1 ? "" : std::to_string(n));
        handle = ::open(aside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        const bool made = handle >= 0;
        if (!made && errno != EEXIST) return failed(errno);
        if (!made) handle = ::open(aside.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        struct stat held, named;
        const bool ours = handle >= 0 && (flock(handle, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) &&
                          fstat(handle, &held) == 0 && lstat(aside.c_str(), &named) == 0 &&
                          S_ISREG(held.st_mode) && held.st_ino == named.st_ino && held.st_dev == named.st_dev;
        if (made && ours) return true;
        if (ours && unlink(aside.c_str()) == 0) n--;
        if (handle >= 0) close(handle);
        handle = invalid_file;
    }
    return failed(EBUSY);
}

// The owner is kept where the host lets us (a settings file saved by root); changing it clears mode bits, so
// the mode comes second.
bool file_aside::take_mode() {
    struct stat old;
    if (lstat(target.c_str(), &old) != 0) return true;
    if (fchown(handle, old.st_uid, old.st_gid) != 0) errno = 0;
    return fchmod(handle, old.st_mode & 07777) == 0 || failed(errno);
}

bool file_aside::open(const std::string &path) {
    discard();
    target = path;
    if (!usable(path) || !follow_links(target)) return false;
    folder = folder_of(target);
    if (folder.size() == target.size()) return failed(path.empty() ? ENOENT : EISDIR);
    struct stat old;
    if (lstat(target.c_str(), &old) == 0) {
        if (!is_regular(old)) return false;
        // The rename asks only the folder; a file that was made read-only keeps its contents all the same.
        if (faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) return failed(errno);
    }
    if (take_name()) return true;
    discard();
    return false;
}

bool file_aside::write(const void *bytes, size_t size) { return write_whole(handle, bytes, size); }

bool file_aside::rewrite_start(const void *bytes, size_t size) {
    return seek_file(handle, 0, 0) == 0 && write(bytes, size);
}

bool file_aside::finish() {
    // The lock is kept until the name is taken, by a second handle: the close, which can fail, comes before.
    const int written = fcntl(handle, F_DUPFD_CLOEXEC, 0);
    bool good = written >= 0 || failed(errno);
    good = good && take_mode() && (fsync(handle) == 0 || failed(errno));
    if (written >= 0 && close(written) != 0 && good) good = failed(errno);
    good = good && (rename(aside.c_str(), target.c_str()) == 0 || failed(errno));
    if (!good) {
        discard();
        return false;
    }
    close(handle);
    handle = invalid_file;
    sync_folder(folder);
    return true;
}

void file_aside::discard() {
    if (handle == invalid_file) return;
    unlink(aside.c_str());
    close(handle);
    handle = invalid_file;
}

bool atomic_write(const std::string &path, const void *bytes, size_t size) {
    file_aside file;
    return file.open(path) && file.write(bytes, size) && file.finish();
}

void let_writes_fail() { std::signal(SIGXFSZ, SIG_IGN); }

std::string current_directory() {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::current_path(error);
    return error ? std::string() : path.string();
}

} // namespace platform
