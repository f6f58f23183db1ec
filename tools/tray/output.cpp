#include "tools/tray/output.h"

#include "drivers/virtual/tray/file_store.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

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

void printDone(bool asJson, const nlohmann::json &done)
{
    if (asJson)
        printJson(done);
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

std::string inputName(const std::string &file)
{
    return file == "-" ? "standard input" : file;
}

std::string readInput(const std::string &file)
{
    const bool standard = file == "-";
    const std::string name = inputName(file);
    // open() and fcntl() are variadic by their standard.
    const drivers::tray::FileDescriptor input(standard
                                                  ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)    // NOLINT(*-vararg)
                                                  : ::open(file.c_str(), O_RDONLY | O_CLOEXEC)); // NOLINT(*-vararg)
    if (!input)
        throw std::system_error(errno, std::generic_category(), name);
    return drivers::tray::readAll(input, name);
}

void writeOutput(const std::string &file, const std::string &content)
{
    if (file == "-") {
        std::cout << content;
        finishOutput();
        return;
    }
    namespace fs = std::filesystem;
    if (!fs::exists(file) || fs::is_regular_file(file)) {
        drivers::tray::replaceFile(fs::weakly_canonical(fs::absolute(file)), content);
        return;
    }
    // A device or a pipe is written to; a file in its place would end it.
    std::ofstream stream(file, std::ios::binary);
    if (!(stream << content << std::flush))
        throw std::runtime_error(file + ": cannot be written");
}

void finishOutput()
{
    if (!std::cout.flush())
        throw std::runtime_error("standard output cannot be written");
}

} // namespace tray_tool
