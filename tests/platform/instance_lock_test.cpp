#include "platform/instance_lock.h"
#include "tests/temporary_folder.h"
#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using platform::instance_lock;
using result = platform::instance_lock::result;

namespace {

class InstanceLock : public testing::Test {
  protected:
    InstanceLock() {
        setenv("XDG_RUNTIME_DIR", runtime.path.c_str(), 1);
        setenv("TMPDIR", temporary.path.c_str(), 1);
    }
    ~InstanceLock() override {
        unsetenv("XDG_RUNTIME_DIR");
        unsetenv("TMPDIR");
    }
    temporary_folder runtime, temporary;
};

// A child that tries to be the one copy, says how that went with one byte, and stays until it is killed.
pid_t start_copy(int answer) {
    const pid_t pid = fork();
    if (pid != 0) return pid;
    instance_lock lock;
    const char how = static_cast<char>(lock.acquire("KivTest"));
    if (write(answer, &how, 1) == 1) pause();
    _exit(0);
}

} // namespace

TEST_F(InstanceLock, ExactlyOneCopyWinsAndAKillFreesItAtOnce) {
    for (int round = 0; round < 5; round++) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        pid_t copies[8];
        for (pid_t &pid : copies) pid = start_copy(ends[1]);
        int winners = 0;
        for (int i = 0; i < 8; i++) {
            char how = -1;
            ASSERT_EQ(read(ends[0], &how, 1), 1);
            EXPECT_NE(static_cast<result>(how), result::failed);
            winners += static_cast<result>(how) == result::acquired;
        }
        EXPECT_EQ(winners, 1);
        instance_lock ours, next;
        EXPECT_EQ(ours.acquire("KivTest"), result::already_running);
        EXPECT_EQ(ours.acquire("Another"), result::acquired);
        for (const pid_t pid : copies) kill(pid, SIGKILL), waitpid(pid, nullptr, 0);
        EXPECT_EQ(next.acquire("KivTest"), result::acquired);
        close(ends[0]), close(ends[1]);
    }
}

TEST_F(InstanceLock, TrustsNoFolderThatOthersMayHaveMadeAndNoFileThatWasRemoved) {
    instance_lock first, second;
    ASSERT_EQ(first.acquire("../Kiv/Test"), result::acquired);
    EXPECT_TRUE(fs::remove(runtime / "___Kiv_Test.lock"));
    EXPECT_EQ(second.acquire("../Kiv/Test"), result::acquired) << "the name is free again";
    fs::create_symlink(temporary / "elsewhere", runtime / "KivTest.lock");
    EXPECT_EQ(instance_lock().acquire("KivTest"), result::failed);
    EXPECT_FALSE(fs::exists(temporary / "elsewhere"));

    setenv("XDG_RUNTIME_DIR", "relative", 1);
    const std::string own = temporary / ("kiv-" + std::to_string(geteuid()));
    EXPECT_EQ(instance_lock().acquire("KivTest"), result::acquired);
    fs::permissions(own, fs::perms::all);
    EXPECT_EQ(instance_lock().acquire("KivTest"), result::failed);
    fs::remove_all(own);
    fs::create_symlink(runtime.path, own);
    EXPECT_EQ(instance_lock().acquire("KivTest"), result::failed);
}
