// Interface ids in memory and the 32-digit text form of class ids in preset files.
#include "pluginterfaces/base/funknown.h"
#include "pluginterfaces/vst/ivstcomponent.h"

#include <gtest/gtest.h>

#include <windows.h>
#include <unknwn.h>

using namespace vst3;

TEST(FUID, RootInterfaceIdIsTheBytesOfComsIUnknown)
{
    EXPECT_EQ(0, std::memcmp(FUnknown::iid.toTUID(), &IID_IUnknown, sizeof(TUID)));
}

TEST(FUID, TextIsTheFourLongsInUpperCaseHex)
{
    char text[33];
    IComponent::iid.toString(text);
    EXPECT_STREQ("E831FF31F2D54301928EBBEE25697802", text);
    EXPECT_EQ(0xE831FF31u, IComponent::iid.getLong1());
    EXPECT_EQ(0xF2D54301u, IComponent::iid.getLong2());
    EXPECT_EQ(0x928EBBEEu, IComponent::iid.getLong3());
    EXPECT_EQ(0x25697802u, IComponent::iid.getLong4());
}

TEST(FUID, TextIsReadInEitherCaseAndNothingElse)
{
    FUID id;
    ASSERT_TRUE(id.fromString("e831ff31f2d54301928ebbee25697802"));
    EXPECT_TRUE(id == IComponent::iid);

    const char* refused[] = {"E831FF31F2D54301928EBBEE2569780",   // 31 digits
                             "E831FF31F2D54301928EBBEE256978020", // 33 digits
                             "E831FF31F2D54301928EBBEE2569780G", "", nullptr};
    for (const char* text : refused)
    {
        FUID unchanged(1, 2, 3, 4);
        EXPECT_FALSE(unchanged.fromString(text)) << (text ? text : "null");
        EXPECT_TRUE(unchanged == FUID(1, 2, 3, 4));
    }
}

TEST(FUID, ZeroIdIsNotValid)
{
    EXPECT_FALSE(FUID().isValid());
    EXPECT_TRUE(FUID(0, 0, 0, 1).isValid());
}
