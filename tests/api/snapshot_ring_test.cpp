// Whatever was pushed comes back byte for byte, for as long as it is kept, and what is kept stays within its
// limits.
#include "api/snapshot_ring.h"

#include <gtest/gtest.h>
#include <map>
#include <random>

namespace {

using bytes = std::vector<uint8_t>;

struct habit {
    const char *name;
    size_t size, size_varies_by; // bytes
    int stretches, longest;      // changed between two snapshots
    snapshot_ring::limits most;
    bool thinned; // more than there is room for
};

const habit habits[] = {
    {"a few words", 5000, 0, 6, 16, {1 << 20, 1000}, false},
    {"sizes that come and go", 3001, 700, 6, 40, {1 << 20, 1000}, false},
    {"nothing at all", 64, 0, 0, 1, {1 << 20, 50}, false},
    {"more than there is room for", 4000, 90, 20, 200, {60'000, 100'000}, true},
    {"everything each time", 2000, 0, 1, 2000, {60'000, 100'000}, true},
    {"room for one only", 2000, 300, 3, 100, {1, 0}, false},
};

// A machine's day: time passes, now and then somebody goes back and on from there.
TEST(SnapshotRing, GivesBackWhatWasPushedWithinItsLimits) {
    for (const habit &h : habits) {
        SCOPED_TRACE(h.name);
        std::mt19937 random(7);
        const auto below = [&](size_t n) { return n == 0 ? 0 : random() % n; };
        snapshot_ring ring(h.most);
        std::map<uint64_t, bytes> pushed; // by stamp
        bytes now(h.size), back;
        uint64_t stamp = 1000;
        for (int step = 0; step < 600; ++step) {
            stamp += 1 + below(3);
            now.resize(h.size + below(h.size_varies_by));
            for (int i = 0; i < h.stretches; ++i)
                for (size_t at = below(now.size()), n = below(static_cast<size_t>(h.longest)) + 1; n > 0; --n)
                    now[(at + n) % now.size()] = static_cast<uint8_t>(random());
            ring.push(now.data(), now.size(), stamp);
            pushed[stamp] = now;
            ASSERT_LE(stamp - ring.stamp(0), h.most.span);
            ASSERT_TRUE(ring.size() == 1 || ring.memory() <= h.most.bytes) << ring.memory();
            ring.restore(ring.size() - 1, back);
            ASSERT_EQ(back, now);
            if (step % 60 != 59) continue;
            for (size_t i = 0; i < ring.size(); ++i) {
                ring.restore(i, back);
                ASSERT_EQ(back, pushed.at(ring.stamp(i))) << "the one of " << ring.stamp(i);
                ASSERT_EQ(ring.find(ring.stamp(i)), i);
            }
            // Thinned out, it still reaches far back, and the nearest are the densest.
            const size_t last = ring.size() - 1;
            if (h.thinned && step > 300) {
                EXPECT_EQ(ring.stamp(0), pushed.begin()->first);
                EXPECT_GT(ring.stamp(last / 4) - ring.stamp(0),
                          ring.stamp(last) - ring.stamp(last - last / 4));
            }
            if (!h.thinned) {
                EXPECT_GE(stamp - ring.stamp(0) + 3, std::min(h.most.span, stamp - pushed.begin()->first));
            }
            const size_t to = ring.size() - 1 - below(std::min<size_t>(ring.size(), 30));
            ring.cut(to + 1);
            ASSERT_EQ(ring.size(), to + 1);
            stamp = ring.stamp(to);
            ring.restore(to, now);
        }
        ring.cut(0);
        EXPECT_TRUE(ring.empty());
        EXPECT_EQ(ring.memory(), 0u);
    }
}

} // namespace
