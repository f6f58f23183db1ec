#include "tests/support/pictures.h"

namespace {

void put16(std::string &file, unsigned value)
{
    file += static_cast<char>(value >> 8);
    file += static_cast<char>(value & 0xFFU);
}

/// A marker segment; its length counts itself.
void putSegment(std::string &file, unsigned char marker, const std::string &content)
{
    file += '\xFF';
    file += static_cast<char>(marker);
    put16(file, static_cast<unsigned>(content.size()) + 2);
    file += content;
}

/// A Huffman table with one code, the single bit 0, for the symbol 0.
std::string oneCodeTable(char classAndId)
{
    return std::string(1, classAndId) + '\x01' + std::string(15, '\0') + '\0';
}

} // namespace

std::string greyJpeg(unsigned width, unsigned height)
{
    std::string file = "\xFF\xD8";
    putSegment(file, 0xDB, '\0' + std::string(64, '\x01'));
    std::string frame(1, '\x08');
    put16(frame, height);
    put16(frame, width);
    frame += std::string("\x01\x01\x11\x00", 4);
    putSegment(file, 0xC0, frame);
    putSegment(file, 0xC4, oneCodeTable('\x00'));
    putSegment(file, 0xC4, oneCodeTable('\x10'));
    putSegment(file, 0xDA, std::string("\x01\x01\x00\x00\x3F\x00", 6));
    // Two bits a block: no difference in brightness from the block before, and the end of the block.
    const std::size_t blocks = std::size_t{(width + 7) / 8} * ((height + 7) / 8);
    file += std::string((blocks * 2 + 7) / 8, '\0');
    return file + "\xFF\xD9";
}
