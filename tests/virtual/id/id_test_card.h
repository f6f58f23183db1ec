// ID cards made for the tests.
#pragma once

#include "drivers/virtual/cards/id_card.h"

#include <string>

namespace id_test {

inline nlohmann::json residentCard()
{
    return {{"kind", "id"},
            {"letter", "A"},
            {"fields",
             {{"name", "林晓岚"},
              {"sex", "女"},
              {"ethnicity", "汉"},
              {"birth", "19900307"},
              {"address", "云杉市临江区梧桐路88号青禾花园6幢2单元1203室"},
              {"number", "990101199003070023"},
              {"authority", "云杉市公安局临江分局"},
              {"from", "20180612"},
              {"until", "20380612"},
              {"term", "20年"}}}};
}

/// A card of another letter whose every field holds its own name, so that the order can be seen.
inline nlohmann::json selfNamedCard(const std::string &letter, const std::vector<std::string> &names)
{
    nlohmann::json card{{"kind", "id"}, {"letter", letter}, {"fields", nlohmann::json::object()}};
    for (const std::string &name : names)
        card["fields"][name] = name;
    return card;
}

} // namespace id_test
