#include "tests/support/recorder.h"

#include "tests/support/loaded_driver.h"

Recorder &recorder()
{
    return driverControl<Recorder>("unifold_test_recorder");
}
