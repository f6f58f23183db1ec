// The way to what a test driver exports besides the SDK: its controls.
#pragma once

/// The address of `symbol` in the loaded library named "libtarvovek.so" or "libtarvozent.so". Ends the test program
/// if neither is loaded or has it. Valid until the library is unloaded.
void *loadedDriverSymbol(const char *symbol);

/// The control object that a driver hands out through an exported function without arguments.
template <typename Control>
Control &driverControl(const char *function)
{
    return *reinterpret_cast<Control *(*)()>(loadedDriverSymbol(function))();
}
