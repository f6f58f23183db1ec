#include "drivers/virtual/tray/schema_check.h"

#include "drivers/virtual/tray/embedded_files.h"

#include <algorithm>
#include <map>
#include <memory>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

namespace drivers::tray {

using nlohmann::json;

namespace {

using Adapter = valijson::adapters::NlohmannJsonAdapter;
using Schemas = std::map<std::string_view, std::unique_ptr<valijson::Schema>>;

Schemas parseSchemas()
{
    Schemas schemas;
    for (const EmbeddedFile &file : embeddedSchemas()) {
        const json text = json::parse(file.text);
        auto schema = std::make_unique<valijson::Schema>();
        valijson::SchemaParser().populateSchema(Adapter(text), *schema);
        schemas.emplace(file.name, std::move(schema));
    }
    return schemas;
}

const valijson::Schema *findSchema(std::string_view name)
{
    static const Schemas schemas = parseSchemas();
    const auto found = schemas.find(name);
    return found == schemas.end() ? nullptr : found->second.get();
}

/// As a JSON pointer, which is what the card models name places by and what unifold-tray takes. The steps come as
/// "<root>", "[member]", "[0]".
std::string placeOf(const valijson::ValidationResults::Error &error)
{
    std::string place;
    for (const std::string &step : error.context) {
        if (step.size() > 2 && step.front() == '[')
            place += '/' + step.substr(1, step.size() - 2);
    }
    return place.empty() ? "/" : place;
}

/// The validator recurses where a schema does, as in directories of directories, and a stack is not endless.
constexpr int kMostLevels = 100;

bool nestsDeeper(const json &value, int levels)
{
    return value.is_structured() &&
           (levels == 0 || std::any_of(value.begin(), value.end(),
                                       [levels](const json &inner) { return nestsDeeper(inner, levels - 1); }));
}

/// The schemas say "not" of the characters that a text may not have: the validator's regular expressions recurse over
/// what a repetition matches, so that one pattern for a long text would end the program.
std::string reasonOf(const valijson::ValidationResults::Error &error)
{
    const bool forbidden = error.description.find("'not' constraint") != std::string::npos;
    return forbidden ? "has a character that does not belong there" : error.description;
}

} // namespace

json parseJson(const std::string &text, const std::string &file, TrayError::Subject subject)
{
    try {
        return json::parse(text);
    } catch (const json::exception &error) {
        throw TrayError(subject, file + ": " + error.what());
    }
}

void checkAgainstSchema(const json &document, std::string_view schema, const std::string &file,
                        TrayError::Subject subject)
{
    const valijson::Schema *const parsed = findSchema(schema);
    if (parsed == nullptr)
        throw TrayError(subject, file + ": there is no schema " + std::string(schema));
    if (nestsDeeper(document, kMostLevels))
        throw TrayError(subject, file + ": /: is nested more than " + std::to_string(kMostLevels) + " levels deep");
    valijson::ValidationResults results;
    if (valijson::Validator().validate(*parsed, Adapter(document), &results))
        return;
    // A fault deep inside is reported for every level above it too; the deepest ones say what is wrong.
    std::string reasons;
    std::size_t deepest = 0;
    for (const valijson::ValidationResults::Error &error : results)
        deepest = std::max(deepest, error.context.size());
    for (const valijson::ValidationResults::Error &error : results) {
        if (error.context.size() == deepest)
            reasons += (reasons.empty() ? "" : "; ") + placeOf(error) + ": " + reasonOf(error);
    }
    throw TrayError(subject, file + ": " + reasons);
}

void checkCard(const json &card, const std::string &file)
{
    const auto kind = card.is_object() ? card.find("kind") : card.end();
    if (kind == card.end() || !kind->is_string())
        throw TrayError(TrayError::Subject::Card, file + ": /kind: the kind of card is missing");
    const std::string schema = "card-" + kind->get<std::string>() + ".schema.json";
    if (findSchema(schema) == nullptr)
        throw TrayError(TrayError::Subject::Card,
                        file + ": /kind: there is no kind of card named " + kind->get<std::string>());
    checkAgainstSchema(card, schema, file, TrayError::Subject::Card);
}

} // namespace drivers::tray
