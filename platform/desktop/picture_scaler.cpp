#include "platform/desktop/picture_scaler.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace platform {

namespace {

constexpr int whole = 256;
constexpr uint32_t opaque = 0xFF000000;
constexpr double dark_part = 0.5;                 // of a raster line, its lower side
constexpr double scan_line_depth = 0.5;           // by which that part is darker
constexpr double tube_depth = 0.35;               // softer: the glow fills the gaps
constexpr int mask_step = 3;                      // screen pixels of a triple
constexpr uint16_t mask_on = 340, mask_off = 215; // of 256; together about as bright as without

using bytes = const uint8_t *__restrict;

// The loops below run over bytes, so that the compiler makes vectors of them.

void blend_in(uint8_t *__restrict row, bytes other, int weight, size_t count) {
    const auto in = static_cast<uint16_t>(weight), out = static_cast<uint16_t>(whole - weight);
    for (size_t i = 0; i < count; ++i) row[i] = static_cast<uint8_t>((row[i] * out + other[i] * in) >> 8);
}

void dim(uint8_t *__restrict row, uint16_t gain, size_t count) {
    for (size_t i = 0; i < count; ++i) row[i] = static_cast<uint8_t>((row[i] * gain) >> 8);
}

void dim_by_mask(uint8_t *__restrict row, const uint16_t *__restrict mask, uint32_t gain, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const uint32_t value = (((row[i] * static_cast<uint32_t>(mask[i])) >> 8) * gain) >> 8;
        row[i] = static_cast<uint8_t>(std::min(value, 255u));
    }
}

// Two channels at a time, with what does not fit into their fields falling away.
uint32_t mix(uint32_t a, uint32_t b, uint32_t weight_b) {
    const uint32_t wa = whole - weight_b;
    const uint32_t red_blue = ((a & 0xFF00FF) * wa + (b & 0xFF00FF) * weight_b) >> 8 & 0xFF00FF;
    const uint32_t green = ((a & 0x00FF00) * wa + (b & 0x00FF00) * weight_b) >> 8 & 0x00FF00;
    return red_blue | green;
}

// How much of [from, to) lies in the dark part of its raster lines, `lines` of them to the unit.
double dark_share(double from, double to, double lines) {
    const auto dark_up_to = [](double at) {
        const double line = std::floor(at);
        return line * dark_part + std::max(0.0, at - line - (1 - dark_part));
    };
    return (dark_up_to(to * lines) - dark_up_to(from * lines)) / ((to - from) * lines);
}

} // namespace

std::vector<picture_scaler::coverage> picture_scaler::cover(int source, int target,
                                                            std::vector<int> &weights) {
    std::vector<coverage> all;
    weights.clear();
    for (int64_t i = 0; i < target; ++i) {
        // In units of a source pixel's target-th part.
        const int64_t from = i * source, to = from + source;
        coverage c{static_cast<int>(from / target), 0, static_cast<int>(weights.size())};
        int left = whole;
        for (int64_t at = from; at < to && c.first + c.count < source;) {
            const int64_t end = std::min(to, (at / target + 1) * target);
            const bool is_last = end == to;
            const int weight = is_last ? left : static_cast<int>((end - at) * whole / source);
            weights.push_back(weight);
            left -= weight;
            ++c.count;
            at = end;
        }
        all.push_back(c);
    }
    return all;
}

void picture_scaler::set_up(int sw, int sh, int w, int h, crt_look with) {
    source_width = sw;
    source_height = sh;
    width = w;
    height = h;
    look = with;
    const auto size = [](int a, int b) { return static_cast<size_t>(a) * static_cast<size_t>(b); };
    columns = cover(sw, w, column_weights);
    rows = cover(sh, h, row_weights);
    last.assign(size(sw, sh), 0);
    scaled.assign(size(w, sh), opaque);
    area.assign(size(w, h), opaque);
    soft.assign(static_cast<size_t>(sw), 0);
    plan_look(with);
    nothing_shown = true;
}

void picture_scaler::plan_look(crt_look with) {
    row_gain.assign(static_cast<size_t>(height), whole);
    mask.clear();
    if (with == crt_look::none) return;
    const double depth = with == crt_look::tube ? tube_depth : scan_line_depth;
    // Lines that are too thin to be seen apart would only make stripes.
    const int lines = height >= source_height + source_height / 2 ? source_height : source_height / 2;
    for (int y = 0; y < height; ++y) {
        const double dark =
            dark_share(static_cast<double>(y) / height, static_cast<double>(y + 1) / height, lines);
        row_gain[static_cast<size_t>(y)] = static_cast<uint16_t>(std::lround(whole * (1 - depth * dark)));
    }
    if (with != crt_look::tube) return;
    for (int x = 0; x < width; ++x)
        for (int channel = 0; channel < 4; ++channel) // in memory blue, green, red, unused
            mask.push_back(channel == 3 ? whole : channel == 2 - x % mask_step ? mask_on : mask_off);
}

void picture_scaler::scale_row(int y) {
    const uint32_t *from = last.data() + static_cast<std::ptrdiff_t>(y) * source_width;
    uint32_t *to = scaled.data() + static_cast<std::ptrdiff_t>(y) * width;
    if (y > 0 && std::memcmp(from, from - source_width, static_cast<size_t>(source_width) * 4) == 0) {
        std::memcpy(to, to - width, static_cast<size_t>(width) * 4); // as every second line of 200
        return;
    }
    if (look == crt_look::tube) { // the beam is wider than a pixel
        for (int x = 0; x < source_width; ++x) {
            const uint32_t sides =
                mix(from[std::max(x - 1, 0)], from[std::min(x + 1, source_width - 1)], 128);
            soft[static_cast<size_t>(x)] = mix(from[x], sides, 90);
        }
        from = soft.data();
    }
    for (int x = 0; x < width; ++x) {
        const coverage &c = columns[static_cast<size_t>(x)];
        uint32_t colour = from[c.first];
        if (c.count == 2) {
            colour = mix(colour, from[c.first + 1],
                         static_cast<uint32_t>(column_weights[static_cast<size_t>(c.weights) + 1]));
        } else if (c.count > 2) {
            uint32_t sums[3] = {};
            for (int i = 0; i < c.count; ++i)
                for (int channel = 0; channel < 3; ++channel)
                    sums[channel] +=
                        (from[c.first + i] >> 8 * channel & 0xFF) *
                        static_cast<uint32_t>(column_weights[static_cast<size_t>(c.weights + i)]);
            colour = sums[0] >> 8 | (sums[1] & 0xFF00) | (sums[2] & 0xFF00) << 8;
        }
        to[x] = colour | opaque;
    }
}

void picture_scaler::write_row(int y) {
    const coverage &c = rows[static_cast<size_t>(y)];
    const auto row_of = [this](int source) {
        return reinterpret_cast<const uint8_t *>(scaled.data() + static_cast<std::ptrdiff_t>(source) * width);
    };
    auto *to = reinterpret_cast<uint8_t *>(area.data() + static_cast<std::ptrdiff_t>(y) * width);
    const size_t count = static_cast<size_t>(width) * 4;
    if (c.count == 1) {
        std::memcpy(to, row_of(c.first), count);
    } else {
        int seen = row_weights[static_cast<size_t>(c.weights)];
        std::memcpy(to, row_of(c.first), count);
        for (int i = 1; i < c.count; ++i) { // each against what the ones before have made
            const int weight = row_weights[static_cast<size_t>(c.weights + i)];
            seen += weight;
            if (seen == 0 || weight == 0) continue;
            blend_in(to, row_of(c.first + i), weight * whole / seen, count);
        }
    }
    const uint16_t gain = row_gain[static_cast<size_t>(y)];
    if (!mask.empty())
        dim_by_mask(to, mask.data(), gain, count);
    else if (gain != whole)
        dim(to, gain, count);
}

const std::vector<row_span> &picture_scaler::show(const uint32_t *frame) {
    changed.clear();
    const size_t row_bytes = static_cast<size_t>(source_width) * 4;
    for (int y = 0; y < source_height;) {
        const auto differs = [&](int row) {
            const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(row) * source_width;
            return nothing_shown || std::memcmp(frame + at, last.data() + at, row_bytes) != 0;
        };
        if (!differs(y)) {
            ++y;
            continue;
        }
        const int first = y;
        for (; y < source_height && differs(y); ++y) {
            const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(y) * source_width;
            std::memcpy(last.data() + at, frame + at, row_bytes);
            scale_row(y);
        }
        const auto edge = [this](int64_t row, int64_t round_up) {
            return static_cast<int>((row * height + round_up * (source_height - 1)) / source_height);
        };
        const row_span span{edge(first, 0), std::min(edge(y, 1), height)};
        for (int row = span.first; row < span.end; ++row) write_row(row);
        changed.push_back(span);
    }
    nothing_shown = false;
    return changed;
}

} // namespace platform
