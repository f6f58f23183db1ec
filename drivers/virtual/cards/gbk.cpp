#include "drivers/virtual/cards/gbk.h"

#include <iconv.h>

#include <cstdint>

namespace drivers::cards {

std::optional<Bytes> gbkFromUtf8(const std::string &text)
{
    iconv_t converter = iconv_open("GBK", "UTF-8");
    // iconv_open's failure is the value -1 in a pointer's clothes.
    if (reinterpret_cast<std::intptr_t>(converter) == -1)
        return std::nullopt;
    std::string source = text;
    Bytes gbk(source.size() * 2 + 1);
    char *in = source.data();
    char *out = reinterpret_cast<char *>(gbk.data());
    std::size_t inLeft = source.size();
    std::size_t outLeft = gbk.size();
    const std::size_t irreversible = iconv(converter, &in, &inLeft, &out, &outLeft);
    iconv_close(converter);
    if (irreversible != 0 || inLeft != 0)
        return std::nullopt;
    gbk.resize(gbk.size() - outLeft);
    return gbk;
}

} // namespace drivers::cards
