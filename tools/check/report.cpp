#include "tools/check/report.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <iostream>
#include <nlohmann/json.hpp>

namespace check {

namespace {

struct VerdictName {
    Verdict verdict;
    const char *name;
};

constexpr std::array<VerdictName, 4> kVerdicts = {{{Verdict::Pass, "pass"},
                                                   {Verdict::Fail, "fail"},
                                                   {Verdict::NotSupported, "not supported"},
                                                   {Verdict::NotApplicable, "not applicable"}}};
constexpr int kVerdictWidth = 16;

const char *nameOf(Verdict verdict)
{
    const auto *const found = std::find_if(kVerdicts.begin(), kVerdicts.end(),
                                           [verdict](const VerdictName &entry) { return entry.verdict == verdict; });
    return found != kVerdicts.end() ? found->name : "?";
}

std::size_t countOf(const std::vector<Row> &rows, Verdict verdict)
{
    return static_cast<std::size_t>(std::count_if(
        rows.begin(), rows.end(), [verdict](const Row &row) { return row.result.outcome.verdict == verdict; }));
}

/// A reason may hold text of the library's, which must not steer the terminal.
std::string printable(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, '?');
    return text;
}

void print(const nlohmann::ordered_json &document)
{
    std::cout << document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

} // namespace

void printList(const std::vector<Check> &checks, bool json)
{
    if (json) {
        nlohmann::ordered_json list = nlohmann::ordered_json::array();
        for (const Check &check : checks)
            list.push_back({{"check", check.name}, {"what", check.what}});
        print(list);
        return;
    }
    std::size_t width = 0;
    for (const Check &check : checks)
        width = std::max(width, check.name.size());
    for (const Check &check : checks)
        std::cout << std::left << std::setw(static_cast<int>(width) + 2) << check.name << check.what << '\n';
}

void printRow(const Row &row, std::size_t nameWidth)
{
    const Outcome &outcome = row.result.outcome;
    std::cout << std::left << std::setw(static_cast<int>(nameWidth) + 2) << row.check;
    if (outcome.reason.empty())
        std::cout << nameOf(outcome.verdict);
    else
        std::cout << std::setw(kVerdictWidth) << nameOf(outcome.verdict) << printable(outcome.reason);
    std::cout << std::endl;
}

void printSummary(const std::vector<Row> &rows)
{
    std::cout << '\n' << rows.size() << " checks";
    const char *separator = ": ";
    for (const VerdictName &entry : kVerdicts) {
        std::cout << separator << countOf(rows, entry.verdict) << ' ' << entry.name;
        separator = ", ";
    }
    std::cout << '\n';
}

void printJson(const std::string &library, const std::vector<Row> &rows)
{
    nlohmann::ordered_json document = {{"library", library}};
    for (const VerdictName &entry : kVerdicts)
        document["counts"][entry.name] = countOf(rows, entry.verdict);
    document["checks"] = nlohmann::ordered_json::array();
    for (const Row &row : rows)
        document["checks"].push_back({{"check", row.check},
                                      {"verdict", nameOf(row.result.outcome.verdict)},
                                      {"reason", row.result.outcome.reason},
                                      {"milliseconds", row.result.milliseconds}});
    print(document);
}

bool hasFailure(const std::vector<Row> &rows)
{
    return countOf(rows, Verdict::Fail) != 0;
}

} // namespace check
