// The receiver of other modules' messages.
#include "bodyadjustmentmessagereceiver.h"

#include <gtest/gtest.h>

#include <QMetaMethod>
#include <QSignalSpy>

#include "fakechannel.h"

namespace {

class MessageReceiverTest : public testing::Test {
 protected:
  QStringList send(int kind, const char* sender, const char* text) {
    QSignalSpy requests(&receiver, SIGNAL(OpenBodyAdjustmentDialog(QString, QString)));
    EXPECT_EQ(static_cast<MessageReceiver&>(receiver).transmit_message(kind, sender, text), 0);
    if (requests.isEmpty()) {
      return {};
    }
    EXPECT_EQ(requests.size(), 1);
    return {requests[0][0].toString(), requests[0][1].toString()};
  }

  FakeChannel channel;
  BodyAdjustmentMessageReceiver receiver{nullptr, &channel};
};

TEST_F(MessageReceiverTest, PassesSenderAndBodyKeyOn) {
  EXPECT_EQ(send(1, "Calibration", "OpenBodyAdjustmentDialog standard|2"), QStringList({"Calibration", "standard|2"}));
}

TEST_F(MessageReceiverTest, TakesEverythingAfterTheFirstBlank) {
  EXPECT_EQ(send(1, "A", "OpenBodyAdjustmentDialog one two  three"), QStringList({"A", "one two  three"}));
  EXPECT_EQ(send(1, "A", "OpenBodyAdjustmentDialogAtOnce standard|1"), QStringList({"A", "standard|1"}));
}

TEST_F(MessageReceiverTest, TheBareWordGivesAnEmptyKey) {
  EXPECT_EQ(send(1, "A", "OpenBodyAdjustmentDialog"), QStringList({"A", ""}));
}

TEST_F(MessageReceiverTest, KindIsNotLookedAt) {
  EXPECT_EQ(send(-7, "A", "OpenBodyAdjustmentDialog x"), QStringList({"A", "x"}));
  EXPECT_EQ(send(0, "A", "OpenBodyAdjustmentDialog x"), QStringList({"A", "x"}));
}

TEST_F(MessageReceiverTest, OtherTextsAreIgnored) {
  EXPECT_TRUE(send(1, "A", "openbodyadjustmentdialog standard|2").isEmpty());
  EXPECT_TRUE(send(1, "A", " OpenBodyAdjustmentDialog standard|2").isEmpty());
  EXPECT_TRUE(send(1, "A", "reopen").isEmpty());
  EXPECT_TRUE(send(1, "A", "").isEmpty());
  EXPECT_TRUE(send(1, nullptr, nullptr).isEmpty());
}

TEST_F(MessageReceiverTest, HasOneSignalAndNothingElse) {
  const QMetaObject* meta = receiver.metaObject();
  EXPECT_STREQ(meta->className(), "BodyAdjustmentMessageReceiver");
  ASSERT_EQ(meta->methodCount() - meta->methodOffset(), 1);
  EXPECT_EQ(meta->method(meta->methodOffset()).methodSignature(), "OpenBodyAdjustmentDialog(QString,QString)");
  EXPECT_EQ(meta->method(meta->methodOffset()).methodType(), QMetaMethod::Signal);
}

TEST_F(MessageReceiverTest, DoesNotTouchTheChannel) { EXPECT_TRUE(channel.log.empty()); }

}  // namespace
