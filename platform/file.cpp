#include "platform/file.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

thread_local int last_error = 0;

file_handle failed(int error) {
    last_error = error;
    return invalid_file;
}

// A FIFO would hang the open and a device never ends: open without waiting, then look at what it is.
file_handle open_regular(const std::string &path, int flags, mode_t mode = 0) {
    if (path.find('\0') != std::string::npos) return failed(EINVAL);
    const int handle = open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode);
    if (handle < 0) return failed(errno);
    struct stat status {};
    if (fstat(handle, &status) != 0 || !S_ISREG(status.st_mode)) {
        const int error = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        close(handle);
        return failed(error);
    }
    return handle;
}

bool write_all(int handle, const uint8_t *bytes, size_t size) {
    while (size != 0) {
        const ssize_t written = write(handle, bytes, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

// Where a path leads when its links are followed; the path itself when nothing is there yet.
std::string resolved(const std::string &path) {
    char *real = realpath(path.c_str(), nullptr);
    if (real == nullptr) return path;
    std::string result = real;
    std::free(real);
    return result;
}

std::string folder_of(const std::string &path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

void sync_folder(const std::string &folder) {
    const int handle = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return;
    fsync(handle);
    close(handle);
}

} // namespace

file_handle open_file(const std::string &path, bool read_only) {
    return open_regular(path, read_only ? O_RDONLY : O_RDWR);
}

file_handle create_file(const std::string &path) {
    return open_regular(path, O_RDWR | O_CREAT | O_EXCL, 0666);
}

file_handle append_file(const std::string &path) {
    return open_regular(path, O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW, 0666);
}

void close_file(file_handle handle) {
    if (handle != invalid_file) close(handle);
}

bool delete_file(const std::string &path) {
    if (unlink(path.c_str()) == 0) return true;
    last_error = errno;
    return false;
}

bool file_exists(const std::string &path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0;
}

int64_t read_file(file_handle handle, void *buffer, size_t bytes) {
    size_t done = 0;
    while (done < bytes) { // one request of the host may bring 2 GiB at most
        const ssize_t got = read(handle, static_cast<uint8_t *>(buffer) + done, bytes - done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return failed(errno);
        if (got == 0) break;
        done += static_cast<size_t>(got);
    }
    return static_cast<int64_t>(done);
}

int64_t write_file(file_handle handle, const void *buffer, size_t bytes) {
    ssize_t written;
    do {
        written = write(handle, buffer, bytes);
    } while (written < 0 && errno == EINTR);
    return written < 0 ? failed(errno) : written;
}

int64_t seek_file(file_handle handle, int origin, int64_t offset) {
    const int whence = origin == 0 ? SEEK_SET : origin == 1 ? SEEK_CUR : SEEK_END;
    const off_t position = lseek(handle, offset, whence);
    return position < 0 ? failed(errno) : position;
}

int64_t file_size(file_handle handle) {
    struct stat status {};
    return fstat(handle, &status) != 0 ? failed(errno) : status.st_size;
}

std::string last_file_error() { return std::strerror(last_error); }

bool atomic_write(const std::string &path, const void *bytes, size_t size) {
    const std::string target = resolved(path);
    struct stat old {};
    const bool exists = stat(target.c_str(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode))
        return failed(S_ISDIR(old.st_mode) ? EISDIR : EINVAL) != invalid_file;
    // A file that may not be written is not to be replaced either.
    if (exists && access(target.c_str(), W_OK) != 0) return failed(errno) != invalid_file;
    const std::string temporary = target + ".kiv-new";
    unlink(temporary.c_str()); // left by a copy that was killed
    const int handle = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (handle < 0) return failed(errno) != invalid_file;
    bool ok = (!exists || fchmod(handle, old.st_mode & 07777) == 0) &&
              write_all(handle, static_cast<const uint8_t *>(bytes), size) && fsync(handle) == 0;
    int error = errno;
    if (close(handle) != 0 && ok) {
        ok = false;
        error = errno;
    }
    if (ok && rename(temporary.c_str(), target.c_str()) != 0) {
        ok = false;
        error = errno;
    }
    if (!ok) {
        unlink(temporary.c_str());
        return failed(error) != invalid_file;
    }
    sync_folder(folder_of(target));
    return true;
}

std::string current_directory() {
    char *name = getcwd(nullptr, 0);
    if (name == nullptr) {
        last_error = errno;
        return {};
    }
    std::string result = name;
    std::free(name);
    return result.compare(0, 1, "/") == 0 ? result : std::string{}; // "(unreachable)..." of a lost folder
}

void *map_file(file_handle handle, size_t size) {
    if (size == 0) {
        last_error = EINVAL;
        return nullptr;
    }
    void *view = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE, handle, 0);
    if (view == MAP_FAILED) {
        last_error = errno;
        return nullptr;
    }
    return view;
}

void unmap_file(void *view, size_t size) {
    if (view != nullptr) munmap(view, size);
}

} // namespace platform
