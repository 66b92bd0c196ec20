// The recent past as a row of snapshots, in as little memory as their differences take: the newest as a
// whole, each older one as what turns its successor into it. So the newest can be dropped and the oldest can
// be forgotten without touching the others. The bytes may be any; nothing here knows a machine.
//
// Not for two threads at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

class snapshot_ring {
  public:
    struct limits {
        size_t bytes;  // of memory in all; one snapshot is kept whatever it takes
        uint64_t span; // between the stamps of the oldest and the newest
    };
    explicit snapshot_ring(const limits &wanted) : most(wanted) {}

    // Adds the newest. `stamp` is the caller's time, in any unit, and never less than the last one. Over the
    // limit of bytes the older ones are thinned out, every second at first; over the span the oldest goes.
    void push(const uint8_t *bytes, size_t size, uint64_t stamp);

    size_t size() const { return entries.size(); }
    bool empty() const { return entries.empty(); }
    uint64_t stamp(size_t index) const { return entries[index].stamp; } // 0 is the oldest
    size_t find(uint64_t stamp) const; // the last one that is not later; 0 also when all are
    // As it was pushed. The nearer to the newest, the faster: a few microseconds for a hundred steps.
    void restore(size_t index, std::vector<uint8_t> &into) const;
    // Keeps the `count` oldest.
    void cut(size_t count);
    void clear();
    size_t memory() const { return stored + newest.size() * sizeof newest[0]; } // bytes

  private:
    // Stretches of words in ascending order: a word that tells words passed over (upper half) and words that
    // follow (lower half), then these.
    using difference = std::vector<uint64_t>;
    struct entry {
        uint64_t stamp;
        size_t size;       // of its bytes
        difference change; // turns the next newer one into this one; the newest has none
    };
    class writer;
    class reader;

    static void apply(const difference &change, std::vector<uint64_t> &words);
    static difference merged(const difference &newer, const difference &older);
    static size_t cost(const entry &e) { return sizeof(entry) + e.change.size() * sizeof(uint64_t); }
    difference take_over(const uint8_t *bytes, size_t size);
    void keep_within_limits();
    void thin_out();
    void drop_oldest();

    limits most;
    std::vector<uint64_t> newest; // its bytes as words, and zeroes for ever after
    std::deque<entry> entries;
    size_t stored = 0;          // bytes of all entries
    size_t next_to_thin = 1;    // goes from the oldest towards the newest, and again
    std::vector<uint64_t> made; // while a difference is made: it keeps its memory
};
