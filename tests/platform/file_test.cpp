#include "platform/file.h"
#include "tests/temporary_folder.h"
#include <algorithm>
#include <csignal>
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

// Runs `body` in a child without root's powers over mode bits; true when it ends well and says true.
template <class F> bool holds_for_plain_user(F body) {
    const pid_t child = fork();
    if (child == 0) _exit((getuid() != 0 || setuid(65534) == 0) && body() ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0;
}

} // namespace

// What is no regular file is refused at once: opening a FIFO would hang, a device would never end.
TEST(File, OnlyRegularFilesAreOpenedAndAppendingFollowsNoLink) {
    temporary_folder folder;
    fs::create_directory(folder / "folder");
    ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
    put_file(folder / "file", "x");
    fs::create_symlink(folder / "fifo", folder / "link to fifo");
    fs::create_symlink(folder / "file", folder / "link to file");
    fs::create_symlink(folder / "nowhere", folder / "dangling");

    const char irregular[] = "Not a regular file", missing[] = "No such file or directory";
    struct {
        const char *label;
        std::string path;
        const char *open_error, *append_error; // null: it opens
    } const cases[] = {
        {"file", folder / "file", nullptr, nullptr},
        {"link to a file", folder / "link to file", nullptr, "Too many levels of symbolic links"},
        {"dangling link", folder / "dangling", missing, "Too many levels of symbolic links"},
        {"folder", folder / "folder", "Is a directory", "Is a directory"},
        {"fifo", folder / "fifo", irregular, irregular},
        {"link to a fifo", folder / "link to fifo", irregular, "Too many levels of symbolic links"},
        {"device", "/dev/zero", irregular, irregular},
        {"missing folder", folder / "missing/file", missing, missing},
        {"empty path", "", missing, missing},
        {"NUL inside", folder / std::string("file\0.txt", 9), "Invalid argument", "Invalid argument"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        for (int how = 0; how < 3; how++) {
            const int handle = how == 2 ? append_file(c.path) : open_file(c.path, how == 1);
            const char *error = how == 2 ? c.append_error : c.open_error;
            EXPECT_EQ(handle == invalid_file, error != nullptr);
            EXPECT_EQ(error != nullptr ? last_file_error() : "", error != nullptr ? error : "");
            if (handle != invalid_file && how == 2) write_file(handle, "yz", 2);
            close_file(handle);
        }
    }
    EXPECT_EQ(get_file(folder / "file"), "xyz") << "appended";
    EXPECT_FALSE(fs::exists(folder / "nowhere"));
}

TEST(File, CurrentDirectoryThatWasDeletedIsEmpty) {
    EXPECT_EQ(current_directory(), fs::current_path());
    temporary_folder folder;
    ASSERT_EQ(chmod(folder.path.c_str(), 0777), 0);
    EXPECT_TRUE(holds_for_plain_user([&] {
        fs::create_directory(folder / "gone");
        fs::current_path(folder / "gone");
        fs::remove(folder / "gone");
        return current_directory().empty() && open_file("file", true) == invalid_file &&
               !write_text("file", "x");
    }));
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
    EXPECT_EQ(fs::status(folder / "real/file").permissions(), fs::perms(0640));
    EXPECT_TRUE(fs::is_symlink(folder / "link to link"));
    EXPECT_TRUE(write_text(folder / "dangling", "")) << last_file_error();
    EXPECT_EQ(fs::file_size(folder / "real/new"), 0u);
    std::string deep = folder.path;
    while (deep.size() < 512) deep += "/" + std::string(60, 'd');
    fs::create_directories(deep);
    for (const std::string &path : {folder / std::string(255, 'n'), deep + "/x", folder / "設定　保存.INI"}) {
        EXPECT_TRUE(write_text(path, "long or Japanese")) << last_file_error();
        EXPECT_EQ(get_file(path), "long or Japanese");
    }
    for (const std::string &path : {folder / "loop", folder / "real", std::string("/dev/null"), std::string(),
                                    folder / "missing/file", folder / std::string(5000, 'n')})
        EXPECT_FALSE(write_text(path, "x")) << path;
    EXPECT_EQ(names_in(folder / "real"), (std::vector<std::string>{"file", "new"}));
}

// A mode that root's powers would pass over, and a disk that runs full half way.
TEST(AtomicWrite, FailureLeavesTheOldFileAndNothingElse) {
    temporary_folder folder;
    ASSERT_EQ(chmod(folder.path.c_str(), 0777), 0);
    put_file(folder / "file", "old");
    ASSERT_EQ(chmod((folder / "file").c_str(), 0444), 0);
    EXPECT_TRUE(holds_for_plain_user([&] { return !write_text(folder / "file", "new"); }));
    EXPECT_TRUE(holds_for_plain_user([&] {
        const rlimit limit{100'000, 100'000};
        setrlimit(RLIMIT_FSIZE, &limit);
        let_writes_fail();
        return write_text(folder / "big", "old big") &&
               !write_text(folder / "big", std::string(200'000, 'x'));
    }));
    file_aside late;
    EXPECT_TRUE(late.open(folder / "late"));
    fs::create_directory(folder / "late"); // took the name meanwhile
    EXPECT_FALSE(late.finish());
    fs::remove(folder / "late");
    EXPECT_EQ(get_file(folder / "file"), "old");
    EXPECT_EQ(get_file(folder / "big"), "old big");
    EXPECT_EQ(names_in(folder.path), (std::vector<std::string>{"big", "file"}));
}

TEST(AtomicWrite, TwoWhoWriteOneNameNeverMix) {
    temporary_folder folder;
    put_file(folder / ".file.kiv-save2", "a stray, too");
    file_aside first, second, third;
    for (file_aside *f : {&first, &second, &third})
        ASSERT_TRUE(f->open(folder / "file")) << last_file_error();
    EXPECT_TRUE(first.write("1....1", 6) && second.write("2222", 4) && third.write("3", 1));
    EXPECT_TRUE(first.rewrite_start("<1>", 3) && first.finish());
    EXPECT_EQ(get_file(folder / "file"), "<1>..1");
    EXPECT_TRUE(second.finish());
    third.discard();
    EXPECT_EQ(get_file(folder / "file"), "2222");
    EXPECT_EQ(names_in(folder.path), std::vector<std::string>{"file"});
}

// Killed at any moment, the file is one of the versions that were saved, whole.
TEST(AtomicWrite, AKillNeverLeavesATornFile) {
    temporary_folder folder;
    const std::string path = folder / "file";
    const std::string versions[] = {std::string(150'000, 'A'), std::string(90'001, 'B')};
    ASSERT_TRUE(write_text(path, versions[0]));
    for (int i = 0; i < 60; i++) {
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
