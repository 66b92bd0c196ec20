#include "platform/child_process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <spawn.h>
#include <sstream>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace platform {

namespace {

constexpr int first_input = 3;
constexpr int out_of_the_way = 64; // descriptors from here on, so that none is a child's input by chance

void close_one(int &descriptor) {
    if (descriptor >= 0) close(descriptor);
    descriptor = -1;
}

int moved_up(int descriptor) {
    const int up = fcntl(descriptor, F_DUPFD_CLOEXEC, out_of_the_way);
    close(descriptor);
    return up;
}

// A program that has ended answers a write by a signal, which would end this one.
void block_pipe_signal() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

} // namespace

bool is_program(const std::string &name) {
    const char *path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');)
        if (access(folder.append("/").append(name).c_str(), X_OK) == 0) return true;
    return false;
}

child_process::~child_process() {
    for (int &pipe : pipes) close_one(pipe);
    if (process > 0) {
        kill();
        waitpid(process, nullptr, 0);
    }
    close_one(words);
}

std::string child_process::start(const std::vector<std::string> &command, int inputs) {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    std::vector<int> read_ends;
    std::string wrong;
    words = moved_up(memfd_create("words", 0));
    posix_spawn_file_actions_adddup2(&actions, words, STDERR_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    for (int i = 0; i < inputs && wrong.empty(); ++i) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) {
            wrong = std::strerror(errno);
            break;
        }
        read_ends.push_back(moved_up(ends[0]));
        pipes.push_back(moved_up(ends[1]));
        posix_spawn_file_actions_adddup2(&actions, read_ends.back(), first_input + i);
    }
    // The child begins with no signal blocked, and with those that this program ignores as they are by
    // nature.
    sigset_t none, natural;
    sigemptyset(&none);
    sigemptyset(&natural);
    sigaddset(&natural, SIGPIPE);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &natural);
    // Ctrl-C on the terminal is for Kiv, which then ends the recording in order.
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    std::vector<char *> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string &word : command) arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    if (wrong.empty())
        if (const int error =
                posix_spawnp(&process, arguments[0], &actions, &attributes, arguments.data(), environ);
            error != 0) {
            process = -1;
            wrong = std::strerror(error);
        }
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    for (int &end : read_ends) close_one(end);
    return wrong;
}

bool child_process::write(int input, const void *bytes, size_t size) {
    block_pipe_signal();
    const char *at = static_cast<const char *>(bytes);
    while (size > 0) {
        const ssize_t written = ::write(pipes.at(static_cast<size_t>(input)), at, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        at += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

void child_process::close_input(int input) { close_one(pipes.at(static_cast<size_t>(input))); }

std::string child_process::wait() {
    if (process <= 0) return {};
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    process = -1;
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return {};
    if (std::string said = first_words(); !said.empty()) return said;
    return WIFSIGNALED(status) ? strsignal(WTERMSIG(status))
                               : "exit code " + std::to_string(WEXITSTATUS(status));
}

void child_process::kill() {
    if (process > 0) ::kill(process, SIGKILL);
}

std::string child_process::first_words() const {
    std::array<char, 400> text{};
    const ssize_t size = pread(words, text.data(), text.size(), 0);
    std::string said(text.data(), size > 0 ? static_cast<size_t>(size) : 0);
    said.resize(std::min(said.size(), said.find('\n')));
    return said;
}

} // namespace platform
