// The one function that keeps blocks allocated on purpose; everything else is still reported. The sanitizer's runtime
// is a library of its own and must be able to find the name.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:Border(BorderStatus*)\n";
}
