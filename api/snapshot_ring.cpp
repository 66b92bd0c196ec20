#include "api/snapshot_ring.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr size_t word_size = sizeof(uint64_t);
constexpr size_t block_words = 8; // compared at once: most of a machine stays as it was
constexpr size_t block_size = block_words * word_size;
constexpr int most_thinned_at_once = 8; // so that a push has a bounded time

struct block {
    uint64_t words[block_words];
};

block block_at(const uint8_t *bytes, size_t size, size_t offset) {
    block b{};
    if (offset + block_size <= size)
        std::memcpy(&b, bytes + offset, block_size);
    else if (offset < size)
        std::memcpy(&b, bytes + offset, size - offset);
    return b;
}

bool equal(const block &b, const uint64_t *words) {
    uint64_t differing = 0;
    for (size_t i = 0; i < block_words; ++i) differing |= b.words[i] ^ words[i];
    return differing == 0;
}

} // namespace

class snapshot_ring::writer {
  public:
    explicit writer(difference &into) : out(into) { out.clear(); }
    void put(size_t at, uint64_t word) {
        if (at != end || out.empty()) {
            head = out.size();
            out.push_back(uint64_t{at - end} << 32);
        }
        ++out[head];
        out.push_back(word);
        end = at + 1;
    }

  private:
    difference &out;
    size_t head = 0, end = 0;
};

class snapshot_ring::reader {
  public:
    explicit reader(const difference &from) : next(from.data()), end(next + from.size()) { enter(); }
    bool more() const { return next != end; }
    size_t at() const { return position; } // of the word that `take` takes
    uint64_t take() {
        const uint64_t word = *next++;
        ++position;
        if (--left == 0) enter();
        return word;
    }

  private:
    void enter() {
        if (next == end) return;
        position += *next >> 32;
        left = static_cast<uint32_t>(*next++);
    }

    const uint64_t *next, *end;
    size_t position = 0;
    uint32_t left = 0;
};

void snapshot_ring::apply(const difference &change, std::vector<uint64_t> &words) {
    for (reader r(change); r.more();) {
        const size_t at = r.at();
        words[at] = r.take();
    }
}

// One step in place of two: where both say something, the older is what comes out.
snapshot_ring::difference snapshot_ring::merged(const difference &newer, const difference &older) {
    difference both;
    both.reserve(newer.size() + older.size());
    writer w(both);
    reader n(newer), o(older);
    while (n.more() || o.more()) {
        const bool from_older = o.more() && (!n.more() || o.at() <= n.at());
        reader &from = from_older ? o : n;
        const size_t at = from.at();
        if (from_older && n.more() && n.at() == at) n.take();
        w.put(at, from.take());
    }
    both.shrink_to_fit();
    return both;
}

// Makes the bytes the newest; what turns them back.
snapshot_ring::difference snapshot_ring::take_over(const uint8_t *bytes, size_t size) {
    const size_t blocks = std::max((size + block_size - 1) / block_size, newest.size() / block_words);
    newest.resize(blocks * block_words);
    writer back(made);
    for (size_t i = 0; i < blocks; ++i) {
        const block now = block_at(bytes, size, i * block_size);
        uint64_t *const words = &newest[i * block_words];
        if (equal(now, words)) continue;
        for (size_t k = 0; k < block_words; ++k) {
            if (words[k] == now.words[k]) continue;
            back.put(i * block_words + k, words[k]);
            words[k] = now.words[k];
        }
    }
    return {made.begin(), made.end()};
}

void snapshot_ring::push(const uint8_t *bytes, size_t size, uint64_t stamp) {
    difference change = take_over(bytes, size);
    if (!entries.empty()) {
        entry &last = entries.back();
        last.change = std::move(change);
        stored += last.change.size() * word_size;
    }
    entries.push_back({stamp, size, {}});
    stored += cost(entries.back());
    keep_within_limits();
}

void snapshot_ring::keep_within_limits() {
    while (entries.size() > 1 && entries.back().stamp - entries.front().stamp > most.span) drop_oldest();
    for (int i = 0; i < most_thinned_at_once && memory() > most.bytes; ++i) thin_out();
    while (entries.size() > 1 && memory() > most.bytes) drop_oldest();
}

// Every second one of the older three quarters: near the present, where people go back to, all stay. A pass
// over what was thinned out before leaves a quarter of it, so what is older is ever sparser.
void snapshot_ring::thin_out() {
    if (next_to_thin >= entries.size() / 4 * 3) next_to_thin = 1;
    if (next_to_thin + 1 >= entries.size()) return;
    entry &before = entries[next_to_thin - 1], &gone = entries[next_to_thin];
    stored -= cost(before) + cost(gone);
    before.change = merged(gone.change, before.change);
    stored += cost(before);
    entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(next_to_thin));
    ++next_to_thin;
}

void snapshot_ring::drop_oldest() {
    stored -= cost(entries.front());
    entries.pop_front();
    if (next_to_thin > 1) --next_to_thin;
}

size_t snapshot_ring::find(uint64_t stamp) const {
    const auto later = std::upper_bound(entries.begin(), entries.end(), stamp,
                                        [](uint64_t s, const entry &e) { return s < e.stamp; });
    return later == entries.begin() ? 0 : static_cast<size_t>(later - entries.begin()) - 1;
}

void snapshot_ring::restore(size_t index, std::vector<uint8_t> &into) const {
    std::vector<uint64_t> words = newest;
    for (size_t i = entries.size() - 1; i > index; --i) apply(entries[i - 1].change, words);
    into.resize(entries[index].size);
    if (!into.empty()) std::memcpy(into.data(), words.data(), into.size());
}

void snapshot_ring::cut(size_t count) {
    if (count == 0) clear();
    while (entries.size() > count) {
        stored -= cost(entries.back());
        entries.pop_back();
        entry &last = entries.back();
        apply(last.change, newest);
        stored -= last.change.size() * word_size;
        last.change = {};
    }
}

void snapshot_ring::clear() {
    entries.clear();
    newest.clear();
    stored = 0;
    next_to_thin = 1;
}
