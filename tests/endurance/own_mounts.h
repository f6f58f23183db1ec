// How a test on a small disk begins.
#pragma once

#include "tests/endurance/small_disk.h"

#include <QtTest>

#include <cstdio>

namespace endurance {

/// Enters mounts of its own, while there is one thread, and runs a test that is made with what enterOwnMounts() said.
template <class Test>
int runOnOwnMounts(int argc, char **argv)
{
    try {
        Test test(enterOwnMounts());
        QCoreApplication application(argc, argv);
        return QTest::qExec(&test, argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}

} // namespace endurance
