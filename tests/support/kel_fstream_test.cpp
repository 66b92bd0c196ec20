#include "support/kel_fstream.h"
#include "tests/temporary_folder.h"
#include <fcntl.h>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

// The category and code that `f` throws; 0, 0 when it does not.
template <class F> std::pair<int, int> thrown(F f) {
    try {
        f();
    } catch (const kel_exception &e) {
        return {e.category, e.code};
    }
    return {0, 0};
}

} // namespace

TEST(FileStream, ReadsSeeksAndTellsWhileItIsOpen) {
    temporary_folder folder;
    put_file(folder / "file", std::string(60, 'x'));
    kel_fstream stream;
    char buffer[100];
    EXPECT_EQ(stream.open(folder / "missing", 0, 1), 0);
    for (int closed = 0; closed < 2; closed++) {
        EXPECT_EQ(stream.size(), 0xFFFFFFFF);
        EXPECT_EQ(stream.tell(), 0xFFFFFFFF);
        EXPECT_EQ(stream.seek(seek_start, 0), 0);
        EXPECT_EQ(stream.detach(), platform::invalid_file);
        EXPECT_EQ(stream.close_and_delete(), 0);
        EXPECT_EQ(stream.close(), 1);
        EXPECT_EQ(thrown([&] { stream.read(buffer, 1, 1); }), std::pair(350, 2));
        EXPECT_EQ(thrown([&] { stream.write(buffer, 1, 1); }), std::pair(350, 2));
        if (closed == 1) break;

        ASSERT_EQ(stream.open(folder / "file", 1, 0), 1);
        EXPECT_EQ(stream.open(folder / "missing", 1, 0), 0) << "a second open";
        EXPECT_EQ(stream.create_new(folder / "second", 0), 0) << "a create while open";
        EXPECT_FALSE(fs::exists(folder / "second"));
        EXPECT_EQ(stream.read(buffer, 1, 100), 60u);
        EXPECT_EQ(stream.read(buffer, 1, 100), 0u);
        EXPECT_EQ(stream.size(), 60u);
        EXPECT_EQ(stream.seek(seek_start, -1), 0);
        EXPECT_EQ(stream.seek(seek_end, -10), 1);
        EXPECT_EQ(stream.seek(seek_current, 2), 1);
        EXPECT_EQ(stream.tell(), 52u);
        EXPECT_EQ(stream.read(buffer, 3, 2), 6u) << "elements times count";
        stream.rewind();
        EXPECT_EQ(stream.tell(), 0u);
        EXPECT_EQ(thrown([&] { stream.write("x", 1, 1); }), std::pair(350, 151)) << "read-only";
        EXPECT_EQ(thrown([&] { stream.read(buffer, 0x10000, 0x10001); }), std::pair(350, 150)) << "wraps";
        EXPECT_EQ(stream.close(), 1);
    }
    EXPECT_TRUE(fs::exists(folder / "file"));
}

TEST(FileStream, ClosesAndDeletesWhatItWasToldToAndNothingElse) {
    temporary_folder folder;
    const std::string path = folder / "file";
    const auto is_open = [](int handle) { return fcntl(handle, F_GETFD) != -1; };
    put_file(path, "abc");
    kel_fstream stream;
    EXPECT_EQ(stream.create_new(path, 1), 0) << "the name is taken";
    const int lent = platform::open_file(path, true);
    ASSERT_EQ(stream.attach(lent, 0), 1);
    EXPECT_EQ(stream.attach(lent, 1), 0) << "already open";
    EXPECT_EQ(stream.size(), 3u);
    stream.close();
    EXPECT_TRUE(is_open(lent));
    stream.attach(lent, 1);
    EXPECT_EQ(stream.close_and_delete(), 0) << "no name is known";
    EXPECT_FALSE(is_open(lent));
    ASSERT_EQ(stream.open(path, 1, 1), 1);
    const int taken = stream.detach();
    stream.close();
    EXPECT_TRUE(is_open(taken));
    platform::close_file(taken);
    EXPECT_EQ(get_file(path), "abc");
    { EXPECT_EQ(kel_fstream().open(path, 0, 1), 1); }
    EXPECT_FALSE(fs::exists(path)) << "the destructor deletes";

    ASSERT_EQ(stream.create_new(path, 0), 1);
    EXPECT_EQ(stream.write("abc", 1, 3), 3u);
    EXPECT_EQ(stream.close_and_delete(), 1);
    EXPECT_FALSE(fs::exists(path));
    // The name and the wish to delete are gone with the close.
    ASSERT_EQ(stream.create_new(path, 0), 1);
    EXPECT_EQ(stream.close(), 1);
    EXPECT_TRUE(fs::exists(path));
}
