// The host context: its name, the interfaces it answers and the objects it makes.
#include "vst3host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

using namespace vst3;
using tqvst::Vst3Host;

namespace {

TEST(Vst3Host, NamesItselfCadmeer)
{
    Vst3Host host;
    String128 name;
    std::fill(std::begin(name), std::end(name), u'#');
    EXPECT_EQ(kResultOk, host.getName(name));
    EXPECT_EQ(u"Cadmeer", std::u16string(name));
}

TEST(Vst3Host, AnswersOnlyTheHostInterface)
{
    Vst3Host host;
    void* obj = nullptr;
    EXPECT_EQ(kResultOk, host.queryInterface(IHostApplication::iid, &obj));
    EXPECT_EQ(static_cast<IHostApplication*>(&host), obj);
    EXPECT_EQ(kResultOk, host.queryInterface(FUnknown::iid, &obj));
    // Both answers took a reference beside the creator's.
    EXPECT_EQ(2u, host.release());
    EXPECT_EQ(1u, host.release());
    obj = &host;
    EXPECT_EQ(kNoInterface, host.queryInterface(IMessage::iid, &obj));
    EXPECT_EQ(nullptr, obj);
}

TEST(Vst3Host, MakesMessagesAndAttributeListsThatWork)
{
    Vst3Host host;
    TUID messageId, listId;
    std::memcpy(messageId, IMessage::iid.toTUID(), sizeof(TUID));
    std::memcpy(listId, IAttributeList::iid.toTUID(), sizeof(TUID));

    void* obj = nullptr;
    ASSERT_EQ(kResultOk, host.createInstance(messageId, messageId, &obj));
    ASSERT_NE(nullptr, obj);
    auto* message = static_cast<IMessage*>(obj);
    message->setMessageID("levels");
    EXPECT_STREQ("levels", message->getMessageID());
    ASSERT_NE(nullptr, message->getAttributes());
    EXPECT_EQ(kResultOk, message->getAttributes()->setInt("peak", 7));
    EXPECT_EQ(0u, message->release());

    obj = nullptr;
    ASSERT_EQ(kResultOk, host.createInstance(listId, listId, &obj));
    auto* list = static_cast<IAttributeList*>(obj);
    int64 value = 0;
    EXPECT_EQ(kResultOk, list->setInt("n", 42));
    EXPECT_EQ(kResultOk, list->getInt("n", value));
    EXPECT_EQ(42, value);
    EXPECT_EQ(0u, list->release());
}

TEST(Vst3Host, RefusesEveryOtherClassWithANullObject)
{
    Vst3Host host;
    TUID messageId, listId, hostId;
    std::memcpy(messageId, IMessage::iid.toTUID(), sizeof(TUID));
    std::memcpy(listId, IAttributeList::iid.toTUID(), sizeof(TUID));
    std::memcpy(hostId, IHostApplication::iid.toTUID(), sizeof(TUID));
    const struct
    {
        char* cid;
        char* iid;
    } cases[] = {{hostId, hostId}, {messageId, listId}, {listId, messageId}};
    for (const auto& c : cases)
    {
        void* obj = &host;
        EXPECT_EQ(kResultFalse, host.createInstance(c.cid, c.iid, &obj));
        EXPECT_EQ(nullptr, obj);
    }
}

} // namespace
