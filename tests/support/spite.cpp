#include "tests/support/spite.h"

#include "tests/support/pictures.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace {

Hostility fromEnvironment()
{
    Hostility fresh;
    const char *const seed = std::getenv("UNIFOLD_HOSTILE_SEED");
    fresh.seed = seed == nullptr ? 0 : static_cast<std::uint32_t>(std::strtoul(seed, nullptr, 10));
    return fresh;
}

std::uint32_t seedOf(const char *entryPoint)
{
    Hostility &control = Spite::control();
    std::uint32_t mixed = control.seed * 2654435761U + ++control.calls[entryPoint];
    for (const char *letter = entryPoint; *letter != '\0'; ++letter)
        mixed = (mixed ^ static_cast<unsigned char>(*letter)) * 16777619U;
    return mixed;
}

/// Appends pieces until the text has `size` bytes or more.
template <typename Make>
void append(std::string &text, std::size_t size, Make make)
{
    while (text.size() < size)
        text += make();
}

} // namespace

Hostility &Spite::control()
{
    static Hostility instance = fromEnvironment();
    return instance;
}

Spite::Spite(const char *entryPoint) : m_random(seedOf(entryPoint)) {}

int Spite::result()
{
    if (below(4) != 0)
        return 0;
    return oneOf<int, 6>(
        {1, -1, 9, std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), static_cast<int>(m_random())});
}

void Spite::fill(char *buffer, std::size_t size, const char *start)
{
    std::string text = start;
    switch (below(8)) {
    case 0:
        return;
    case 1:
        append(text, size, [this] { return std::string(1, static_cast<char>(1 + below(255))); });
        break;
    case 2:
        // An odd number of bytes ends with half a character.
        text += below(2) == 0 ? "" : "x";
        append(text, size, [] { return std::string("\xD6\xD0"); });
        break;
    case 3:
        append(text, size, [] { return std::string("中"); });
        break;
    case 4:
        append(text, size, [] { return std::string("|"); });
        break;
    case 5:
        append(text, below(size), [this] { return piece(); });
        break;
    default:
        append(text, size, [this] { return piece(); });
        break;
    }
    std::memcpy(buffer, text.data(), std::min(text.size(), size));
}

std::string Spite::piece()
{
    constexpr std::size_t kPieces = 14;
    static const std::array<const char *, kPieces> pieces{
        "|",    "||",   "1|",        "01|",      "<img src=\"x.png\">", "&lt;&amp;",   "%s%n%d",
        "\r\n", "中文", "\xD6\xD0|", "\xFF\xFE", "\xF0\x9F\x98",        "\x01\x1B[2J", "</b></body>"};
    const std::uint32_t choice = below(kPieces + 4);
    if (choice < kPieces)
        return pieces[choice];
    // The blank keeps half a character before it from swallowing the "<".
    return " <b>m" + std::to_string(++control().markers) + ";</b>";
}

void Spite::leavePicture(const char *path)
{
    const std::uint32_t kind = below(24);
    unlink(path);
    if (kind < 6)
        return;
    std::string content;
    if (kind < 10)
        content = "";
    else if (kind < 14)
        content = "\xFF\xD8\xFF\xE0" + piece() + std::string(100, '\xFF');
    else if (kind < 18)
        content = greyJpeg(102, 126).substr(0, 40 + below(200));
    else if (kind < 23)
        content = greyJpeg(102, 126);
    else
        content = greyJpeg(4000, 3000);
    std::ofstream(path, std::ios::binary) << content;
}

std::string Spite::deviceList()
{
    std::string list;
    switch (below(5)) {
    case 0:
        return "";
    case 1:
        for (int i = 0; i < 400; ++i)
            list += "device " + std::to_string(i) + "|";
        return list;
    case 2:
        return "only, without its bar";
    case 3:
        return std::string(20000, 'x') + "|\xFF\xD6|";
    default:
        for (int i = 0; i < 20; ++i)
            list += piece();
        return list;
    }
}
