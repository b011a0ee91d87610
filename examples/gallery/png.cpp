// A PNG writer. Rows are predicted from their neighbours, the differences are searched for repetitions (Lempel and Ziv
// 1977) and coded with Huffman codes made for them, as the deflate format wants it.

#include "png.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <string>

namespace gallery {
namespace {

// ---------------------------------------------------------------- deflate

// Bits are packed from the lowest upwards.
class BitWriter {
public:
    explicit BitWriter(std::vector<uint8_t>& out) : out_(out) {}

    void put(uint32_t bits, int count)
    {
        held_ |= uint64_t(bits) << filled_;
        for (filled_ += count; filled_ >= 8; filled_ -= 8, held_ >>= 8)
            out_.push_back(uint8_t(held_));
    }

    void close()
    {
        if (filled_ > 0)
            out_.push_back(uint8_t(held_));
        filled_ = 0;
    }

private:
    std::vector<uint8_t>& out_;
    uint64_t held_ = 0;
    int filled_ = 0;
};

// A repetition of `length` bytes from `distance` bytes ago; or, with distance 0, the byte `length` itself.
struct Token {
    uint16_t length, distance;
};

struct Code {
    std::vector<int> lengths;
    std::vector<uint32_t> bits; // reversed, ready to be put
};

// Lengths of a Huffman code for the counts, none longer than `longest`: when one is, the counts are flattened.
std::vector<int> huffman_lengths(std::vector<uint32_t> counts, int longest)
{
    struct Node {
        uint32_t weight;
        int left, right;
    };
    while (true) {
        std::vector<Node> nodes;
        std::vector<int> open, lengths(counts.size(), 0);
        for (size_t i = 0; i < counts.size(); i++) {
            nodes.push_back({counts[i], -1, -1});
            if (counts[i] > 0)
                open.push_back(int(i));
        }
        if (open.size() == 1)
            lengths[size_t(open[0])] = 1;
        const auto heavier = [&](int a, int b) {
            return nodes[size_t(a)].weight != nodes[size_t(b)].weight
                       ? nodes[size_t(a)].weight > nodes[size_t(b)].weight
                       : a > b;
        };
        std::make_heap(open.begin(), open.end(), heavier);
        while (open.size() > 1) {
            int pair[2];
            for (int& lightest : pair) {
                std::pop_heap(open.begin(), open.end(), heavier);
                lightest = open.back();
                open.pop_back();
            }
            nodes.push_back({nodes[size_t(pair[0])].weight + nodes[size_t(pair[1])].weight, pair[0], pair[1]});
            open.push_back(int(nodes.size()) - 1);
            std::push_heap(open.begin(), open.end(), heavier);
        }
        std::vector<int> depth(nodes.size(), 0);
        for (size_t i = nodes.size(); i-- > counts.size();) {
            depth[size_t(nodes[i].left)] = depth[size_t(nodes[i].right)] = depth[i] + 1;
        }
        int deepest = 0;
        for (size_t i = 0; i < counts.size(); i++) {
            lengths[i] = std::max(lengths[i], depth[i]);
            deepest = std::max(deepest, lengths[i]);
        }
        if (deepest <= longest)
            return lengths;
        for (uint32_t& count : counts)
            count = count > 0 ? count / 2 + 1 : 0;
    }
}

// The codes of one length are consecutive numbers, in the order of their symbols.
Code make_code(std::vector<int> lengths)
{
    std::array<uint32_t, 16> count{}, first{};
    for (int length : lengths)
        count[size_t(length)]++;
    count[0] = 0;
    for (size_t l = 1; l < first.size(); l++)
        first[l] = (first[l - 1] + count[l - 1]) << 1;
    Code code{std::move(lengths), {}};
    for (int length : code.lengths) {
        uint32_t reversed = 0;
        if (length > 0) {
            const uint32_t number = first[size_t(length)]++;
            for (int bit = 0; bit < length; bit++)
                reversed |= (number >> bit & 1) << (length - 1 - bit);
        }
        code.bits.push_back(reversed);
    }
    return code;
}

// A length or distance is a class and some extra bits.
struct Class {
    int number, extra_bits;
    uint32_t extra;
};

Class length_class(int length)
{
    if (length == 258)
        return {285, 0, 0};
    const int l = length - 3;
    if (l < 8)
        return {257 + l, 0, 0};
    int bits = 0;
    while (l >> (bits + 3) != 0)
        bits++;
    return {257 + 4 * bits + (l >> bits), bits, uint32_t(l & ((1 << bits) - 1))};
}

Class distance_class(int distance)
{
    const int d = distance - 1;
    if (d < 4)
        return {d, 0, 0};
    int bits = 0;
    while (d >> (bits + 2) != 0)
        bits++;
    return {2 * bits + (d >> bits), bits, uint32_t(d & ((1 << bits) - 1))};
}

// Finds repetitions by chains of earlier places whose next three bytes have the same hash.
std::vector<Token> find_repetitions(const std::vector<uint8_t>& data)
{
    constexpr int kWindow = 32768, kLongest = 258, kTries = 48;
    std::vector<int> head(1 << 15, -1), previous(data.size(), -1);
    const int n = int(data.size());
    const auto hash = [&](int i) {
        return ((data[size_t(i)] << 16 | data[size_t(i) + 1] << 8 | data[size_t(i) + 2]) * 2654435761u) >> 17;
    };
    const auto remember = [&](int i) {
        if (i + 2 < n) {
            previous[size_t(i)] = head[hash(i)];
            head[hash(i)] = i;
        }
    };
    const auto longest_at = [&](int i) {
        Token best{0, 0};
        if (i + 2 >= n)
            return best;
        const int most = std::min(kLongest, n - i);
        int tries = kTries;
        for (int j = head[hash(i)]; j >= 0 && i - j <= kWindow && tries-- > 0; j = previous[size_t(j)]) {
            int l = 0;
            while (l < most && data[size_t(i + l)] == data[size_t(j + l)])
                l++;
            if (l >= 3 && l > best.length)
                best = {uint16_t(l), uint16_t(i - j)};
            if (l == most)
                break;
        }
        return best;
    };

    std::vector<Token> tokens;
    for (int i = 0; i < n;) {
        Token token = longest_at(i);
        remember(i);
        if (token.length >= 3 && token.length < 32 && i + 1 < n && longest_at(i + 1).length > token.length)
            token = {0, 0}; // a longer one begins at the next byte
        if (token.length < 3)
            token = {data[size_t(i)], 0};
        tokens.push_back(token);
        const int step = token.distance == 0 ? 1 : token.length;
        for (int k = 1; k < step; k++)
            remember(i + k);
        i += step;
    }
    return tokens;
}

void write_block(BitWriter& out, const Token* tokens, size_t count, bool last)
{
    std::vector<uint32_t> literal_counts(286, 0), distance_counts(30, 0);
    literal_counts[256] = 1;
    for (size_t i = 0; i < count; i++) {
        if (tokens[i].distance == 0) {
            literal_counts[tokens[i].length]++;
        } else {
            literal_counts[size_t(length_class(tokens[i].length).number)]++;
            distance_counts[size_t(distance_class(tokens[i].distance).number)]++;
        }
    }
    if (*std::max_element(distance_counts.begin(), distance_counts.end()) == 0)
        distance_counts[0] = 1;
    const Code literals = make_code(huffman_lengths(literal_counts, 15));
    const Code distances = make_code(huffman_lengths(distance_counts, 15));

    // The lengths of both codes, coded in turn; runs of zeros are shortened.
    struct Item {
        int symbol, extra_bits;
        uint32_t extra;
    };
    std::vector<int> all = literals.lengths;
    all.insert(all.end(), distances.lengths.begin(), distances.lengths.end());
    std::vector<Item> items;
    for (size_t i = 0; i < all.size();) {
        size_t run = i;
        while (run < all.size() && all[run] == 0 && run - i < 138)
            run++;
        const uint32_t zeros = uint32_t(run - i);
        if (zeros >= 11)
            items.push_back({18, 7, zeros - 11});
        else if (zeros >= 3)
            items.push_back({17, 3, zeros - 3});
        else
            items.push_back({all[i], 0, 0});
        i += zeros >= 3 ? zeros : 1;
    }
    std::vector<uint32_t> item_counts(19, 0);
    for (const Item& item : items)
        item_counts[size_t(item.symbol)]++;
    const Code codes = make_code(huffman_lengths(item_counts, 7));

    out.put(last ? 1 : 0, 1);
    out.put(2, 2);
    out.put(286 - 257, 5);
    out.put(30 - 1, 5);
    out.put(19 - 4, 4);
    for (int symbol : {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15})
        out.put(uint32_t(codes.lengths[size_t(symbol)]), 3);
    const auto put = [&](const Code& code, int symbol) {
        out.put(code.bits[size_t(symbol)], code.lengths[size_t(symbol)]);
    };
    for (const Item& item : items) {
        put(codes, item.symbol);
        out.put(item.extra, item.extra_bits);
    }
    for (size_t i = 0; i < count; i++) {
        if (tokens[i].distance == 0) {
            put(literals, tokens[i].length);
            continue;
        }
        const Class l = length_class(tokens[i].length), d = distance_class(tokens[i].distance);
        put(literals, l.number);
        out.put(l.extra, l.extra_bits);
        put(distances, d.number);
        out.put(d.extra, d.extra_bits);
    }
    put(literals, 256);
}

std::vector<uint8_t> compress(const std::vector<uint8_t>& data)
{
    constexpr size_t kBlock = 1 << 16;
    std::vector<uint8_t> out{0x78, 0x9c};
    BitWriter bits(out);
    const std::vector<Token> tokens = find_repetitions(data);
    for (size_t i = 0; i < tokens.size(); i += kBlock)
        write_block(bits, &tokens[i], std::min(kBlock, tokens.size() - i), i + kBlock >= tokens.size());
    bits.close();
    uint32_t a = 1, b = 0; // Adler's check sum
    for (uint8_t byte : data) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    for (uint32_t byte : {b >> 8, b, a >> 8, a})
        out.push_back(uint8_t(byte));
    return out;
}

// ---------------------------------------------------------------- rows and chunks

int paeth(int left, int up, int corner)
{
    const int p = left + up - corner;
    const int dl = std::abs(p - left), du = std::abs(p - up), dc = std::abs(p - corner);
    return dl <= du && dl <= dc ? left : du <= dc ? up : corner;
}

// One row, predicted in the way that leaves the smallest differences; a byte before it names the way.
std::vector<uint8_t> filtered_row(const uint8_t* row, const uint8_t* above, size_t bytes)
{
    std::vector<uint8_t> best;
    long best_cost = -1;
    for (uint8_t way = 0; way < 5; way++) {
        std::vector<uint8_t> out{way};
        long cost = 0;
        for (size_t i = 0; i < bytes; i++) {
            const int left = i >= 3 ? row[i - 3] : 0, up = above ? above[i] : 0,
                      corner = above && i >= 3 ? above[i - 3] : 0;
            const int guesses[] = {0, left, up, (left + up) / 2, paeth(left, up, corner)};
            const uint8_t difference = uint8_t(row[i] - guesses[way]);
            cost += std::abs(int8_t(difference));
            out.push_back(difference);
        }
        if (best_cost < 0 || cost < best_cost) {
            best_cost = cost;
            best = std::move(out);
        }
    }
    return best;
}

uint32_t crc(const uint8_t* bytes, size_t count)
{
    uint32_t c = 0xffffffffu;
    for (size_t i = 0; i < count; i++) {
        c ^= bytes[i];
        for (int bit = 0; bit < 8; bit++)
            c = (c & 1) != 0 ? 0xedb88320u ^ (c >> 1) : c >> 1;
    }
    return ~c;
}

void put_number(std::vector<uint8_t>& out, uint32_t number)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(uint8_t(number >> shift));
}

void put_chunk(std::vector<uint8_t>& out, const std::string& name, const std::vector<uint8_t>& content)
{
    put_number(out, uint32_t(content.size()));
    const size_t start = out.size();
    out.insert(out.end(), name.begin(), name.end());
    out.insert(out.end(), content.begin(), content.end());
    put_number(out, crc(&out[start], out.size() - start));
}

} // namespace

std::vector<uint8_t> png_bytes(const Picture& picture)
{
    const size_t row_bytes = size_t(picture.width()) * 3;
    std::vector<uint8_t> rows;
    for (size_t y = 0; y < size_t(picture.height()); y++) {
        const uint8_t* row = &picture.bytes()[y * row_bytes];
        const std::vector<uint8_t> filtered = filtered_row(row, y > 0 ? row - row_bytes : nullptr, row_bytes);
        rows.insert(rows.end(), filtered.begin(), filtered.end());
    }
    std::vector<uint8_t> header;
    put_number(header, uint32_t(picture.width()));
    put_number(header, uint32_t(picture.height()));
    header.insert(header.end(), {8, 2, 0, 0, 0}); // 8 bits, red green blue

    std::vector<uint8_t> out{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    put_chunk(out, "IHDR", header);
    if (std::isfinite(picture.least_lettering())) {
        const std::string text = std::string("Lettering") + '\0' + std::to_string(picture.least_lettering());
        put_chunk(out, "tEXt", {text.begin(), text.end()});
    }
    put_chunk(out, "IDAT", compress(rows));
    put_chunk(out, "IEND", {});
    return out;
}

} // namespace gallery
