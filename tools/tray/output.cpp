#include "tools/tray/output.h"

#include "drivers/virtual/tray/file_store.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace tray_tool {

namespace {

/// The columns that a UTF-8 text takes: everything of three bytes and more is taken for CJK.
std::size_t columns(const std::string &text)
{
    std::size_t count = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80 || (byte >= 0xC0 && byte < 0xE0))
            count += 1;
        else if (byte >= 0xE0)
            count += 2;
    }
    return count;
}

std::string printable(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, '?');
    return text;
}

} // namespace

void printJson(const nlohmann::json &document)
{
    std::cout << document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

void printTable(const std::vector<std::vector<std::string>> &rows)
{
    std::vector<std::size_t> widths;
    for (const auto &row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], columns(row[i]));
    }
    for (const auto &row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += printable(row[i]);
            if (i + 1 < row.size())
                line.append(widths[i] - columns(row[i]) + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        std::cout << line << '\n';
    }
}

std::string readInput(const std::string &file)
{
    if (file == "-")
        return {std::istreambuf_iterator<char>(std::cin), {}};
    std::ifstream stream(file, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.is_open() || stream.bad())
        throw std::runtime_error(file + ": cannot be read");
    return content;
}

void writeOutput(const std::string &file, const std::string &content)
{
    if (file != "-") {
        drivers::tray::replaceFile(std::filesystem::absolute(file), content);
        return;
    }
    std::cout << content << std::flush;
    if (!std::cout)
        throw std::runtime_error("standard output cannot be written");
}

} // namespace tray_tool
