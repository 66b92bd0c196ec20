#include "platform/file.h"
#include "tests/temporary_folder.h"
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace platform;

namespace {

std::vector<std::string> names_in(const std::string &folder) {
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

bool write_text(const std::string &path, const std::string &text) {
    return atomic_write(path, text.data(), text.size());
}

// Runs `body` in a child without root's powers over mode bits; its exit status.
template <class F> int as_plain_user(F body) {
    const pid_t child = fork();
    if (child == 0) {
        if (getuid() == 0 && setuid(65534) != 0) _exit(99);
        _exit(body());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

TEST(File, OnlyRegularFilesAreOpenedAndTheRestIsRefusedAtOnce) {
    temporary_folder folder;
    fs::create_directory(folder / "folder");
    ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
    put_file(folder / "file", "x");
    fs::create_symlink(folder / "fifo", folder / "link to fifo");
    fs::create_symlink(folder / "file", folder / "link to file");

    struct {
        const char *label;
        std::string path;
        bool opens, appends;
        const char *error;
    } const cases[] = {
        {"file", folder / "file", true, true, nullptr},
        {"link to a file", folder / "link to file", true, false, nullptr},
        {"folder", folder / "folder", false, false, "Is a directory"},
        {"fifo", folder / "fifo", false, false, "Not a regular file"},
        {"link to a fifo", folder / "link to fifo", false, false, "Not a regular file"},
        {"device", "/dev/zero", false, false, "Not a regular file"},
        {"terminal device", "/dev/tty", false, false, "Not a regular file"},
        {"missing", folder / "missing/file", false, false, "No such file or directory"},
        {"empty path", "", false, false, "No such file or directory"},
        {"511 bytes", folder / std::string(511, 'a'), false, false, "File name too long"},
        {"5000 bytes", folder / std::string(5000, 'a'), false, false, "File name too long"},
        {"NUL inside", folder / std::string("file\0.txt", 9), false, false, "Invalid argument"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        const auto start = std::chrono::steady_clock::now();
        for (const bool read_only : {true, false}) {
            const int handle = open_file(c.path, read_only);
            EXPECT_EQ(handle != invalid_file, c.opens) << "read_only " << read_only;
            if (!c.opens) {
                EXPECT_EQ(last_file_error(), c.error);
            }
            close_file(handle);
        }
        const int handle = append_file(c.path);
        EXPECT_EQ(handle != invalid_file, c.appends);
        close_file(handle);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    }
    EXPECT_EQ(get_file(folder / "file"), "x");
}

TEST(File, LongPathsAndJapaneseNamesWork) {
    temporary_folder folder;
    std::string deep = folder.path;
    while (deep.size() < 512) deep += "/" + std::string(60, 'd');
    fs::create_directories(deep);
    for (const std::string &path : {deep + "/x", folder / "テープ　保存.CMT"}) {
        SCOPED_TRACE(path);
        const int handle = create_file(path);
        ASSERT_NE(handle, invalid_file);
        EXPECT_EQ(write_file(handle, "abc", 3), 3);
        EXPECT_EQ(file_size(handle), 3);
        EXPECT_EQ(seek_file(handle, 2, -1), 2);
        EXPECT_EQ(seek_file(handle, 0, -1), -1);
        char tail[10] = {};
        EXPECT_EQ(read_file(handle, tail, sizeof tail), 1);
        EXPECT_EQ(tail[0], 'c');
        close_file(handle);
        EXPECT_EQ(create_file(path), invalid_file) << "replaced an existing file";
        EXPECT_TRUE(delete_file(path));
        EXPECT_FALSE(file_exists(path));
    }
}

TEST(File, AppendingNeverFollowsALink) {
    temporary_folder folder;
    put_file(folder / "victim", "keep");
    fs::create_symlink(folder / "victim", folder / "out");
    fs::create_symlink(folder / "nowhere", folder / "dangling");
    EXPECT_EQ(append_file(folder / "out"), invalid_file);
    EXPECT_EQ(append_file(folder / "dangling"), invalid_file);
    EXPECT_FALSE(fs::exists(folder / "nowhere"));
    for (const char *part : {"one ", "two"}) {
        const int handle = append_file(folder / "new");
        EXPECT_EQ(write_file(handle, part, std::string(part).size()), static_cast<int64_t>(strlen(part)));
        close_file(handle);
    }
    EXPECT_EQ(get_file(folder / "new"), "one two");
}

TEST(File, ViewsAreCopiesOnWrite) {
    temporary_folder folder;
    put_file(folder / "file", "abcd");
    const int handle = open_file(folder / "file", true);
    char *view = static_cast<char *>(map_file(handle, 4));
    ASSERT_NE(view, nullptr);
    view[0] = 'X';
    unmap_file(view, 4);
    EXPECT_EQ(map_file(handle, 0), nullptr);
    close_file(handle);
    EXPECT_EQ(get_file(folder / "file"), "abcd");
}

TEST(File, CurrentDirectoryThatWasDeletedIsEmpty) {
    temporary_folder folder;
    EXPECT_EQ(current_directory(), fs::current_path());
    const pid_t child = fork();
    if (child == 0) {
        fs::create_directory(folder / "gone");
        fs::current_path(folder / "gone");
        fs::remove(folder / "gone");
        const bool empty = current_directory().empty();
        const bool refused = open_file("file", true) == invalid_file && !write_text("file", "x");
        _exit(empty && refused ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST(AtomicWrite, ReplacesTheFileThatTheLinkMeansAndKeepsItsMode) {
    temporary_folder folder;
    fs::create_directory(folder / "real");
    put_file(folder / "real/file", "old");
    ASSERT_EQ(chmod((folder / "real/file").c_str(), 0640), 0);
    fs::create_symlink("real/file", folder / "link");
    fs::create_symlink("link", folder / "link to link");
    fs::create_symlink("real/new", folder / "dangling");
    fs::create_symlink("loop", folder / "loop");
    put_file(folder / "real/.file.kiv-save", "left by a save that was killed");

    EXPECT_TRUE(write_text(folder / "link to link", "new")) << last_file_error();
    EXPECT_EQ(get_file(folder / "real/file"), "new");
    struct stat s;
    ASSERT_EQ(stat((folder / "real/file").c_str(), &s), 0);
    EXPECT_EQ(s.st_mode & 07777, 0640u);
    EXPECT_TRUE(fs::is_symlink(folder / "link to link"));
    EXPECT_TRUE(write_text(folder / "dangling", "made")) << last_file_error();
    EXPECT_EQ(get_file(folder / "real/new"), "made");
    EXPECT_TRUE(write_text(folder / "real/new", ""));
    EXPECT_EQ(fs::file_size(folder / "real/new"), 0u);
    EXPECT_TRUE(write_text(folder / std::string(255, 'n'), "long name")) << last_file_error();

    EXPECT_FALSE(write_text(folder / "loop", "x"));
    EXPECT_FALSE(write_text(folder / "real", "x"));
    EXPECT_FALSE(write_text("/dev/null", "x"));
    EXPECT_FALSE(write_text("", "x"));
    EXPECT_FALSE(write_text(folder / "missing/file", "x"));
    EXPECT_FALSE(write_text(folder / std::string(5000, 'n'), "x"));
    EXPECT_EQ(names_in(folder / "real"), (std::vector<std::string>{"file", "new"}));
}

// A mode that root's powers would pass over, and a disk that runs full half way.
TEST(AtomicWrite, FailureLeavesTheOldFileAndNothingElse) {
    temporary_folder folder;
    ASSERT_EQ(chmod(folder.path.c_str(), 0777), 0);
    put_file(folder / "file", "old");
    ASSERT_EQ(chmod((folder / "file").c_str(), 0444), 0);
    EXPECT_EQ(as_plain_user([&] { return write_text(folder / "file", "new") ? 1 : 0; }), 0);
    EXPECT_EQ(as_plain_user([&] {
                  const rlimit limit{100'000, 100'000};
                  setrlimit(RLIMIT_FSIZE, &limit);
                  signal(SIGXFSZ, SIG_IGN);
                  return write_text(folder / "big", "old big") &&
                                 !write_text(folder / "big", std::string(200'000, 'x'))
                             ? 0
                             : 1;
              }),
              0);
    EXPECT_EQ(get_file(folder / "file"), "old");
    EXPECT_EQ(get_file(folder / "big"), "old big");
    EXPECT_EQ(names_in(folder.path), (std::vector<std::string>{"big", "file"}));
}

// Killed at any moment, the file is one of the versions that were saved, whole.
TEST(AtomicWrite, AKillNeverLeavesATornFile) {
    temporary_folder folder;
    const std::string path = folder / "file";
    const std::string versions[] = {std::string(150'000, 'A'), std::string(90'001, 'B')};
    ASSERT_TRUE(write_text(path, versions[0]));
    const char *iterations = getenv("KIV_TEST_KILLS");
    const int kills = iterations ? atoi(iterations) : 60;
    for (int i = 0; i < kills; i++) {
        const pid_t child = fork();
        if (child == 0) {
            for (int n = 0;; n++) write_text(path, versions[n & 1]);
        }
        usleep(static_cast<useconds_t>(200 + i * 97 % 4000));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const std::string found = get_file(path);
        ASSERT_TRUE(found == versions[0] || found == versions[1]) << "kill " << i << ": " << found.size();
    }
    EXPECT_TRUE(write_text(path, "after"));
    EXPECT_EQ(names_in(folder.path), std::vector<std::string>{"file"});
}
