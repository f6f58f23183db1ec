// A library that loads and has none of the entry points.
extern "C" __attribute__((visibility("default"))) int unrelated()
{
    return 0;
}
