// A library with three of the entry points. One of them calls another by its own name, which must reach the library's
// and not the variable of the same name in the program that loaded it.
extern "C" {

__attribute__((visibility("default"))) long vek_open(const char * /*device*/, long /*reserved*/, int /*baud*/)
{
    return 0x0D;
}

__attribute__((visibility("default"))) int vek_close(long long /*handle*/, int /*reserved*/)
{
    return static_cast<int>(vek_open("", 0, 0)) + 1;
}

__attribute__((visibility("default"))) int inerrupt()
{
    return 0;
}
}
