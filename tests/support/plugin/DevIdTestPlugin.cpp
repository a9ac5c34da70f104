// Loaded by the loader tests; the answer proves the symbol lookup reached this code.
extern "C" int devid_test_plugin_answer()
{
    return 42;
}
