// What unifold-tray writes and reads besides the tray.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace tray_tool {

/// To standard output, indented. Bytes that are not UTF-8 are shown as U+FFFD.
void printJson(const nlohmann::json &document);

/// What a command that changes something has done, which only JSON tells.
void printDone(bool asJson, const nlohmann::json &done);

/// Rows in columns of equal width; characters of double width (CJK) count as two. Control characters are shown as "?".
void printTable(const std::vector<std::vector<std::string>> &rows);

/// What messages call an input: its file, or "standard input" for "-".
std::string inputName(const std::string &file);

/// A file's content; "-" is standard input. Throws std::runtime_error naming the file.
std::string readInput(const std::string &file);

/// Writes a file (mode 0600, whole or not at all; the one that a symbolic link leads to), a device or a pipe; "-" is
/// standard output. Throws std::runtime_error.
void writeOutput(const std::string &file, const std::string &content);

/// Throws std::runtime_error if something of what was printed did not get out.
void finishOutput();

} // namespace tray_tool
