#include "drivers/core/applications/pboc.h"

#include "drivers/core/applications/pboc_letters.h"
#include "drivers/core/applications/pboc_session.h"
#include "drivers/core/applications/pboc_text.h"

namespace drivers {

namespace {

using pboc::Session;

const pboc::TagLetter *findTagLetter(char letter)
{
    for (const auto &entry : pboc::kTagLetters) {
        if (entry.letter == letter)
            return &entry;
    }
    return nullptr;
}

bool allKnown(std::string_view tags)
{
    for (const char letter : tags) {
        if (findTagLetter(letter) == nullptr)
            return false;
    }
    return true;
}

/// Selects, starts the transaction and reads the records.
ReturnCode openApplication(Session &session, const Bytes &aid)
{
    ReturnCode result = session.select(aid);
    if (result == kSuccess)
        result = session.start();
    if (result == kSuccess)
        result = session.readRecords();
    return result;
}

ReturnCode appendElement(Session &session, const pboc::TagLetter &entry, std::string &text)
{
    if (entry.source == pboc::Source::kGetData) {
        const ReturnCode result = session.getData(entry.tag);
        if (result != kSuccess)
            return result;
    }
    text += pboc::field(entry.letter, session.element(entry.tag), entry.form);
    return kSuccess;
}

} // namespace

ReturnCode readCardInfo(CardChannel &channel, std::string_view aid, std::string_view tags, std::string &result)
{
    result.clear();
    const auto identifier = pboc::parseAid(aid);
    if (!identifier || tags.empty() || !allKnown(tags))
        return kBadArgument;
    Session session(channel);
    ReturnCode code = openApplication(session, *identifier);
    std::string text;
    for (const char letter : tags) {
        if (code == kSuccess)
            code = appendElement(session, *findTagLetter(letter), text);
    }
    if (code == kSuccess)
        result = std::move(text);
    return code;
}

ReturnCode makeArqc(CardChannel &channel, std::string_view aid, std::string_view transactionData, std::string &result)
{
    result.clear();
    const auto identifier = pboc::parseAid(aid);
    const auto transaction = pboc::parseTransaction(transactionData);
    if (!identifier || !transaction)
        return kBadArgument;
    Session session(channel);
    session.provide(*transaction);
    ReturnCode code = openApplication(session, *identifier);
    if (code == kSuccess)
        code = session.generateArqc();
    if (code != kSuccess)
        return code;
    for (const auto &entry : pboc::kCryptogramLetters)
        result += pboc::field(entry.letter, session.element(entry.tag), entry.form);
    return kSuccess;
}

} // namespace drivers
