// A lock on a file, not the file's existence: the host drops it with the process, whatever way that ends.
#include "platform/instance_lock.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace platform {

namespace {

bool is_private_folder(const std::string &path) {
    struct stat s;
    return lstat(path.c_str(), &s) == 0 && S_ISDIR(s.st_mode) && s.st_uid == geteuid() &&
           (s.st_mode & 077) == 0;
}

// The user's runtime folder, else one of our own in the temporary folder, where anybody may have made one of
// that name before us. Empty when neither can be trusted.
std::string lock_folder() {
    const char *runtime = getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && runtime[0] == '/' && is_private_folder(runtime)) return runtime;
    const char *temporary = getenv("TMPDIR");
    std::string folder = temporary != nullptr && temporary[0] == '/' ? temporary : "/tmp";
    folder += "/kiv-" + std::to_string(geteuid());
    mkdir(folder.c_str(), 0700);
    return is_private_folder(folder) ? folder : std::string();
}

std::string file_name(const std::string &name) {
    std::string safe = name;
    for (char &c : safe)
        if (!isalnum(static_cast<unsigned char>(c))) c = '_';
    return safe + ".lock";
}

// Somebody who cleans up the folder may have removed the file between open and lock; a lock on a file that
// has no name any more would guard nothing.
bool still_at(const std::string &path, int descriptor) {
    struct stat locked, named;
    return fstat(descriptor, &locked) == 0 && lstat(path.c_str(), &named) == 0 &&
           locked.st_ino == named.st_ino && locked.st_dev == named.st_dev;
}

std::string call_name(const std::string &name) { return file_name(name) + ".call"; }

bool fill_address(sockaddr_un &address, const std::string &path) {
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return false;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

} // namespace

instance_lock::result instance_lock::acquire(const std::string &name) {
    if (descriptor >= 0) return result::acquired;
    const std::string folder = lock_folder();
    if (folder.empty()) return result::failed;
    const std::string path = folder + '/' + file_name(name);
    for (int attempt = 0; attempt < 100; attempt++) {
        const int opened = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
        if (opened < 0) return result::failed;
        int locked;
        do locked = flock(opened, LOCK_EX | LOCK_NB);
        while (locked != 0 && errno == EINTR);
        const bool taken = locked != 0 && errno == EWOULDBLOCK;
        if (locked == 0 && still_at(path, opened)) {
            descriptor = opened;
            listen(folder + '/' + call_name(name));
            return result::acquired;
        }
        close(opened);
        if (taken) return result::already_running;
        if (locked != 0) return result::failed;
    }
    return result::failed;
}

// The file stays: removing it would let two copies hold a lock each, one on the old file and one on the new.
void instance_lock::release() {
    if (descriptor < 0) return;
    if (calls >= 0) { // before the lock goes: the next copy makes one of the same name
        unlink(calls_path.c_str());
        close(calls);
    }
    calls = -1;
    close(descriptor);
    descriptor = -1;
}

// Holding the lock, no other copy can be using the name.
void instance_lock::listen(const std::string &path) {
    sockaddr_un address{};
    if (!fill_address(address, path)) return;
    calls = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (calls < 0) return;
    unlink(path.c_str());
    calls_path = path;
    if (bind(calls, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0) return;
    close(calls);
    calls = -1;
}

void instance_lock::take_call() {
    char any[16];
    while (calls >= 0 && read(calls, any, sizeof any) >= 0) {
    }
}

bool instance_lock::call_first(const std::string &name) {
    sockaddr_un address{};
    const std::string folder = lock_folder();
    if (folder.empty() || !fill_address(address, folder + '/' + call_name(name))) return false;
    const int caller = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (caller < 0) return false;
    const bool heard = sendto(caller, "k", 1, MSG_NOSIGNAL, reinterpret_cast<const sockaddr *>(&address),
                              sizeof address) == 1;
    close(caller);
    return heard;
}

} // namespace platform
