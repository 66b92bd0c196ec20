#include "platform/instance_lock.h"
#include "tests/temporary_folder.h"
#include <csignal>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

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
struct copy_of_program {
    pid_t pid;
    int answer;

    copy_of_program() {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        answer = ends[0];
        pid = fork();
        if (pid == 0) {
            instance_lock lock;
            const char how = static_cast<char>('0' + static_cast<int>(lock.acquire("KivTest")));
            if (write(ends[1], &how, 1) == 1) pause();
            _exit(0);
        }
        close(ends[1]);
    }
    result how() {
        char c = '?';
        EXPECT_EQ(read(answer, &c, 1), 1);
        close(answer);
        return static_cast<result>(c - '0');
    }
    void end() {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
};

} // namespace

TEST_F(InstanceLock, ExactlyOneCopyWinsAndAKillFreesItAtOnce) {
    for (int round = 0; round < 5; round++) {
        std::vector<copy_of_program> copies(8);
        int winners = 0;
        pid_t winner = 0;
        for (auto &c : copies) {
            const result how = c.how();
            EXPECT_NE(how, result::failed);
            if (how == result::acquired) winners++, winner = c.pid;
        }
        EXPECT_EQ(winners, 1);
        instance_lock ours;
        EXPECT_EQ(ours.acquire("KivTest"), result::already_running);
        EXPECT_EQ(ours.acquire("Another"), result::acquired);
        for (auto &c : copies)
            if (c.pid == winner) c.end();
        instance_lock next;
        EXPECT_EQ(next.acquire("KivTest"), result::acquired);
        next.release();
        for (auto &c : copies)
            if (c.pid != winner) c.end();
    }
}

TEST_F(InstanceLock, TrustsNoFolderThatOthersMayHaveMade) {
    const std::string own = temporary / ("kiv-" + std::to_string(geteuid()));
    setenv("XDG_RUNTIME_DIR", "relative", 1);
    {
        instance_lock lock;
        EXPECT_EQ(lock.acquire("../Kiv/Test"), result::acquired);
        EXPECT_TRUE(std::filesystem::exists(own + "/___Kiv_Test.lock"));
    }
    ASSERT_EQ(chmod(own.c_str(), 0777), 0);
    EXPECT_EQ(instance_lock().acquire("KivTest"), result::failed);
    std::filesystem::remove_all(own);
    std::filesystem::create_symlink(runtime.path, own);
    EXPECT_EQ(instance_lock().acquire("KivTest"), result::failed);

    setenv("XDG_RUNTIME_DIR", runtime.path.c_str(), 1);
    std::filesystem::create_symlink(temporary / "elsewhere", runtime / "KivTest.lock");
    EXPECT_EQ(instance_lock().acquire("KivTest"), result::failed);
    EXPECT_FALSE(std::filesystem::exists(temporary / "elsewhere"));
}

TEST_F(InstanceLock, AFileThatWasRemovedGuardsNothing) {
    instance_lock first, second;
    ASSERT_EQ(first.acquire("KivTest"), result::acquired);
    std::filesystem::remove(runtime / "KivTest.lock");
    EXPECT_EQ(second.acquire("KivTest"), result::acquired) << "the name is free again";
    EXPECT_EQ(instance_lock().acquire("KivTest"), result::already_running);
}
