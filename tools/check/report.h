// What the user sees: the list of checks, the table or the JSON document of their outcomes.
#pragma once

#include "tools/check/checks.h"
#include "tools/check/child_runner.h"

#include <string>
#include <vector>

namespace check {

struct Row {
    std::string check;
    ChildResult result;
};

void printList(const std::vector<Check> &checks, bool json);

/// One line of the table, at once, so that a long run can be watched.
void printRow(const Row &row, std::size_t nameWidth);

void printSummary(const std::vector<Row> &rows);

void printJson(const std::string &library, const std::vector<Row> &rows);

bool hasFailure(const std::vector<Row> &rows);

} // namespace check
