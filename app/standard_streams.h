// Descriptors 0, 1 and 2 are the standard streams and nothing else.
#pragma once

/// Opens /dev/null in place of each standard stream that the program was started without. Call it first: the next
/// descriptor to be opened would take the closed one's number, and the loader's console lines would go into the
/// connection to the display.
void keepStandardStreams();
