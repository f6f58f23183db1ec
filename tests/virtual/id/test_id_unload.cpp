// A library that draws is unloaded and loaded again. This program links no text library of its own, so whatever the
// library brings along comes and goes with it.
#include <QtTest>

#include <dlfcn.h>

class TestIdUnload : public QObject {
    Q_OBJECT

private slots:
    void libraryThatDrawsCanBeUnloadedAndLoadedAgain();
};

void TestIdUnload::libraryThatDrawsCanBeUnloadedAndLoadedAgain()
{
    for (int round = 0; round < 10; ++round) {
        void *library = dlopen("libdrawing_plugin.so", RTLD_NOW | RTLD_LOCAL);
        QVERIFY2(library != nullptr, dlerror());
        const auto draw = reinterpret_cast<std::size_t (*)()>(dlsym(library, "drawSamples"));
        QVERIFY(draw != nullptr);
        QCOMPARE(draw(), std::size_t{404} * 257 * 3);
        QCOMPARE(dlclose(library), 0);
        QVERIFY(dlopen("libdrawing_plugin.so", RTLD_NOW | RTLD_NOLOAD) == nullptr);
    }
}

QTEST_APPLESS_MAIN(TestIdUnload)
#include "test_id_unload.moc"
