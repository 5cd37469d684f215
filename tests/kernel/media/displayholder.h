// A display list made with its two default items and destroyed with the holder, for tests.
#pragma once

#include "displist.h"

#include "kernel/media/riffimage.h"

#include <gtest/gtest.h>

namespace tq::test {

struct Display
{
    tDISPLIST list = {};
    Display() { EXPECT_EQ(displist_Create(&list), S_OK); }
    ~Display() { displist_Destroy(&list); }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;
    // The payload of the item of that format, empty for none.
    Bytes Payload(DWORD format) const
    {
        const tDISPITEM* item = displist_GetItem(&list, format);
        if (!item || !item->data) return {};
        const auto* p = static_cast<const BYTE*>(item->data);
        return Bytes(p, p + item->size);
    }
};

} // namespace tq::test
