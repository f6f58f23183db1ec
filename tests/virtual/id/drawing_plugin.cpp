// A library that draws, to be loaded and unloaded.
#include "drivers/virtual/cards/id_pictures.h"
#include "id_test_card.h"

/// Returns the number of bytes of a front picture, 0 if drawing failed.
extern "C" __attribute__((visibility("default"))) std::size_t drawSamples()
{
    try {
        return drivers::cards::idFront(drivers::cards::IdCard(id_test::residentCard())).rgb.size();
    } catch (...) {
        return 0;
    }
}
