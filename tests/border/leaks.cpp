// The one function that keeps blocks allocated on purpose; everything else is still reported.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:Border(BorderStatus*)\n";
}
