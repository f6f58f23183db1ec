// A row of BER-TLV elements as bytes.
#pragma once

#include "drivers/core/ber_tlv.h"

namespace drivers::cards {

inline Bytes tlvList(const std::vector<Tlv> &elements)
{
    Bytes bytes;
    for (const Tlv &element : elements) {
        const Bytes one = encodeTlv(element.tag, element.value);
        bytes.insert(bytes.end(), one.begin(), one.end());
    }
    return bytes;
}

} // namespace drivers::cards
