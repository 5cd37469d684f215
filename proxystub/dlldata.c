/* The proxy/stub class and the exported entry points of the marshalling DLL. */
#include <objbase.h>
#include <rpcproxy.h>

/* {9BD3160E-0464-485E-A672-D806BEB00E29}: the same value as the factory interface's id. */
#define PROXY_CLSID_IS                                                                             \
    {                                                                                              \
        0x9BD3160E, 0x0464, 0x485E, { 0xA6, 0x72, 0xD8, 0x06, 0xBE, 0xB0, 0x0E, 0x29 }            \
    }

EXTERN_PROXY_FILE(tqvst)

PROXYFILE_LIST_START
REFERENCE_PROXY_FILE(tqvst),
PROXYFILE_LIST_END

DLLDATA_ROUTINES(aProxyFileList, GET_DLL_CLSID)
