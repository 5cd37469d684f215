// A message carries an id and one attribute list of its own.
#include "hosting/hostmessage.h"

#include <gtest/gtest.h>

using namespace vst3;

TEST(HostMessage, IdIsNullUntilSetAndCopied)
{
    HostMessage message;
    EXPECT_EQ(nullptr, message.getMessageID());
    char id[] = "TextMessage";
    message.setMessageID(id);
    id[0] = 'X';
    EXPECT_STREQ("TextMessage", message.getMessageID());
    message.setMessageID(nullptr);
    EXPECT_EQ(nullptr, message.getMessageID());
}

TEST(HostMessage, KeepsOneAttributeListForItsLife)
{
    auto* message = new HostMessage();
    IAttributeList* list = message->getAttributes();
    ASSERT_NE(nullptr, list);
    EXPECT_EQ(list, message->getAttributes());
    list->setInt("n", 3);
    int64 n = 0;
    EXPECT_EQ(kResultOk, message->getAttributes()->getInt("n", n));
    EXPECT_EQ(3, n);

    void* obj = nullptr;
    EXPECT_EQ(kNoInterface, message->queryInterface(IAttributeList::iid, &obj));
    EXPECT_EQ(nullptr, obj);
    ASSERT_EQ(kResultOk, message->queryInterface(IMessage::iid, &obj));
    EXPECT_EQ(static_cast<IMessage*>(message), obj);
    message->release();
    EXPECT_EQ(0u, message->release());
}
