// A real DLL with an export table, but without either entry point a host looks for.
#include <cstdint>

extern "C" __declspec(dllexport) int32_t TqNotAPlugin()
{
    return 0;
}
