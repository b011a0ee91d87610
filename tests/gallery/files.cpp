#include "tests/gallery/files.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace korvale::test {
namespace {

void expect(bool held, const char* what)
{
    if (!held)
        throw BadFile(what);
}

// ---------------------------------------------------------------- inflate

class BitReader {
public:
    explicit BitReader(const std::string& bytes) : bytes_(bytes) {}

    unsigned bits(int count)
    {
        unsigned value = 0;
        for (int i = 0; i < count; i++) {
            expect(at_ / 8 < bytes_.size(), "compressed data end early");
            value |= (uint8_t(bytes_[at_ / 8]) >> at_ % 8 & 1u) << i;
            at_++;
        }
        return value;
    }

    void skip_to_byte() { at_ = (at_ + 7) / 8 * 8; }
    size_t byte_place() const { return at_ / 8; }

private:
    const std::string& bytes_;
    size_t at_ = 0;
};

// Codes of one length are consecutive; reads bit by bit until the number falls among those of its length.
class Huffman {
public:
    explicit Huffman(const std::vector<int>& lengths)
    {
        for (int length = 1; length < 16; length++) {
            for (size_t symbol = 0; symbol < lengths.size(); symbol++) {
                if (lengths[symbol] == length) {
                    count_[size_t(length)]++;
                    symbols_.push_back(int(symbol));
                }
            }
        }
        int room = 1;
        for (int length = 1; length < 16; length++) {
            room = 2 * room - count_[size_t(length)];
            expect(room >= 0, "a code has more words than room");
        }
    }

    int read(BitReader& in) const
    {
        int code = 0, first = 0, index = 0;
        for (int length = 1; length < 16; length++) {
            code |= int(in.bits(1));
            const int count = count_[size_t(length)];
            if (code - first < count)
                return symbols_[size_t(index + code - first)];
            index += count;
            first = (first + count) << 1;
            code <<= 1;
        }
        throw BadFile("no such code word");
    }

private:
    std::array<int, 16> count_{};
    std::vector<int> symbols_;
};

constexpr int kLengthBase[] = {3,  4,  5,  6,  7,  8,  9,  10, 11,  13,  15,  17,  19,  23, 27,
                               31, 35, 43, 51, 59, 67, 83, 99, 115, 131, 163, 195, 227, 258};
constexpr int kLengthBits[] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
constexpr int kDistanceBase[] = {1,    2,    3,    4,    5,    7,    9,    13,    17,    25,
                                 33,   49,   65,   97,   129,  193,  257,  385,   513,   769,
                                 1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
constexpr int kDistanceBits[] = {0, 0, 0, 0, 1, 1, 2, 2,  3,  3,  4,  4,  5,  5,  6,
                                 6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};

void read_codes(BitReader& in, std::vector<int>& literals, std::vector<int>& distances)
{
    const size_t literal_count = in.bits(5) + 257, distance_count = in.bits(5) + 1, length_count = in.bits(4) + 4;
    constexpr size_t kOrder[] = {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15};
    std::vector<int> lengths(19, 0);
    for (size_t i = 0; i < length_count; i++)
        lengths[kOrder[i]] = int(in.bits(3));
    const Huffman code(lengths);
    std::vector<int> all;
    while (all.size() < literal_count + distance_count) {
        const int symbol = code.read(in);
        if (symbol < 16) {
            all.push_back(symbol);
        } else if (symbol == 16) {
            expect(!all.empty(), "a repetition of nothing");
            all.insert(all.end(), in.bits(2) + 3, int(all.back()));
        } else {
            all.insert(all.end(), symbol == 17 ? in.bits(3) + 3 : in.bits(7) + 11, 0);
        }
    }
    expect(all.size() == literal_count + distance_count, "too many code lengths");
    literals.assign(all.begin(), all.begin() + long(literal_count));
    distances.assign(all.begin() + long(literal_count), all.end());
}

void read_symbols(BitReader& in, const Huffman& literals, const Huffman& distances, std::vector<uint8_t>& out)
{
    for (int symbol = literals.read(in); symbol != 256; symbol = literals.read(in)) {
        if (symbol < 256) {
            out.push_back(uint8_t(symbol));
            continue;
        }
        expect(symbol < 286, "no such length");
        const size_t length = size_t(kLengthBase[symbol - 257]) + in.bits(kLengthBits[symbol - 257]);
        const int d = distances.read(in);
        expect(d < 30, "no such distance");
        const size_t distance = size_t(kDistanceBase[d]) + in.bits(kDistanceBits[d]);
        expect(distance <= out.size(), "a repetition from before the start");
        for (size_t i = 0; i < length; i++)
            out.push_back(out[out.size() - distance]);
    }
}

std::vector<uint8_t> inflate(const std::string& stream)
{
    BitReader in(stream);
    expect(in.bits(8) == 0x78 && (0x7800 + in.bits(8)) % 31 == 0, "not a compressed stream");
    std::vector<uint8_t> out;
    for (bool last = false; !last;) {
        last = in.bits(1) == 1;
        expect(in.bits(2) == 2, "a block without codes of its own"); // the gallery writes no others
        std::vector<int> literals, distances;
        read_codes(in, literals, distances);
        read_symbols(in, Huffman(literals), Huffman(distances), out);
    }
    in.skip_to_byte();
    uint32_t a = 1, b = 0;
    for (uint8_t byte : out) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    uint32_t stored = 0;
    for (int i = 0; i < 4; i++)
        stored = stored << 8 | in.bits(8);
    expect(stored == (b << 16 | a), "the check sum of the pixels differs");
    expect(in.byte_place() == stream.size(), "bytes behind the compressed data");
    return out;
}

// ---------------------------------------------------------------- PNG

uint32_t number_at(const std::string& bytes, size_t at)
{
    expect(at + 4 <= bytes.size(), "the file ends early");
    uint32_t number = 0;
    for (size_t i = 0; i < 4; i++)
        number = number << 8 | uint8_t(bytes[at + i]);
    return number;
}

uint32_t check_sum(const std::string& bytes)
{
    uint32_t c = 0xffffffffu;
    for (char byte : bytes) {
        c ^= uint8_t(byte);
        for (int bit = 0; bit < 8; bit++)
            c = (c >> 1) ^ ((c & 1) != 0 ? 0xedb88320u : 0);
    }
    return ~c;
}

uint8_t predicted(int way, int left, int up, int corner)
{
    const int p = left + up - corner;
    const int to_left = std::abs(p - left), to_up = std::abs(p - up), to_corner = std::abs(p - corner);
    switch (way) {
    case 0:
        return 0;
    case 1:
        return uint8_t(left);
    case 2:
        return uint8_t(up);
    case 3:
        return uint8_t((left + up) / 2);
    case 4:
        return uint8_t(to_left <= to_up && to_left <= to_corner ? left : to_up <= to_corner ? up : corner);
    default:
        throw BadFile("no such prediction");
    }
}

} // namespace

std::string read_file(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    expect(bool(in), "the file cannot be read");
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

Image read_png(const std::filesystem::path& file)
{
    const std::string bytes = read_file(file);
    expect(bytes.substr(0, 8) == "\x89PNG\r\n\x1a\n", "no signature");
    Image image;
    std::string stream, names;
    for (size_t at = 8; at < bytes.size();) {
        const size_t length = number_at(bytes, at);
        const std::string chunk = bytes.substr(at + 4, length + 4);
        expect(check_sum(chunk) == number_at(bytes, at + 8 + length), "the check sum of a chunk differs");
        const std::string name = chunk.substr(0, 4);
        at += length + 12;
        if (name == "IHDR") {
            expect(chunk.substr(12) == std::string("\x08\x02\0\0\0", 5), "not 8 bits of red, green, blue");
            image.width = int(number_at(chunk, 4));
            image.height = int(number_at(chunk, 8));
        } else if (chunk.starts_with(std::string("tEXtLettering") + '\0')) {
            image.least_lettering = std::stod(chunk.substr(14));
            continue;
        } else if (name == "IDAT") {
            stream += chunk.substr(4);
        }
        names += name;
    }
    expect(names == "IHDRIDATIEND", "not the three chunks");

    const std::vector<uint8_t> rows = inflate(stream);
    const size_t row = size_t(image.width) * 3;
    expect(rows.size() == (row + 1) * size_t(image.height), "the pixels do not fill the picture");
    image.bytes.resize(row * size_t(image.height));
    for (size_t y = 0; y < size_t(image.height); y++) {
        for (size_t i = 0; i < row; i++) {
            uint8_t* pixel = &image.bytes[y * row + i];
            const int left = i >= 3 ? pixel[-3] : 0, up = y > 0 ? *(pixel - row) : 0;
            const int corner = y > 0 && i >= 3 ? *(pixel - row - 3) : 0;
            *pixel = uint8_t(rows[y * (row + 1) + 1 + i] + predicted(rows[y * (row + 1)], left, up, corner));
        }
    }
    return image;
}

Lettered read_lettered(const std::filesystem::path& file)
{
    if (file.extension() == ".png") {
        const Image image = read_png(file);
        return {double(image.width), image.least_lettering};
    }
    const std::string text = read_file(file), width = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"";
    const std::string size = "font-size=\"";
    expect(text.starts_with(width), "not the head of a drawing");
    Lettered drawing{std::stod(text.substr(width.size())), std::numeric_limits<double>::infinity()};
    for (size_t at = text.find(size); at != std::string::npos; at = text.find(size, at + 1))
        drawing.least_lettering = std::min(drawing.least_lettering, std::stod(text.substr(at + size.size())));
    expect(text.find("<text") == std::string::npos || std::isfinite(drawing.least_lettering), "letters without a size");
    return drawing;
}

Solid read_obj(const std::filesystem::path& file)
{
    Solid solid;
    std::istringstream lines(read_file(file));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string word;
        words >> word;
        if (word == "v") {
            std::array<double, 3> p{};
            expect(bool(words >> p[0] >> p[1] >> p[2]), "a point without its numbers");
            solid.points.push_back(p);
        } else if (word == "f") {
            std::array<int, 3> t{};
            expect(bool(words >> t[0] >> t[1] >> t[2]), "a triangle without its corners");
            for (int& corner : t)
                expect(--corner >= 0 && size_t(corner) < solid.points.size(), "a corner that is no point");
            solid.triangles.push_back(t);
        } else {
            expect(word == "#", "neither point nor triangle nor comment");
        }
    }
    return solid;
}

} // namespace korvale::test
