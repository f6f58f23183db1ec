#include "drivers/virtual/cards/id_fields.h"

namespace drivers::cards {

const IdFieldNames &idFieldNames(char letter)
{
    static const IdFieldNames resident{"name",   "sex",       "ethnicity", "birth", "address",
                                       "number", "authority", "from",      "until", "term"};
    static const IdFieldNames permit{"name",      "sex",  "ethnicity", "birth", "address",      "number",
                                     "authority", "from", "until",     "term",  "permitNumber", "version"};
    static const IdFieldNames foreign2017{"englishName", "sex",  "nationality", "birth", "reserved",    "number",
                                          "authority",   "from", "until",       "term",  "chineseName", "version"};
    static const IdFieldNames foreign2023{"name",        "sex",           "renewals",    "birth", "englishName",
                                          "number",      "authority",     "from",        "until", "term",
                                          "nationality", "formerVersion", "formerNumber"};
    switch (letter) {
    case 'I':
        return foreign2017;
    case 'J':
        return permit;
    case 'Y':
        return foreign2023;
    default:
        return resident;
    }
}

} // namespace drivers::cards
