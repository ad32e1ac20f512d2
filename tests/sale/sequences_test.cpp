// The orders in which a host may call the plugin. Each ends with the books of both sides equal.
#include "loyaltyhost.h"
#include "salefixture.h"

using sale::LoyaltyHost;

namespace {

const QString card = u"7770000000001"_s;
const QString otherCard = u"7770000000032"_s; // Has 320.55 points.
constexpr auto closed = SaleDocument::State::Closed;
constexpr auto voided = SaleDocument::State::Voided;

class Sequence : public SaleTest
{
protected:
    /// Ends the check, delivers what is queued, and compares the books.
    void finish(LoyaltyHost &host, SaleDocument::State state, const QString &spent)
    {
        const till::CheckResult result = host.end(state);
        EXPECT_TRUE(host.deliver());
        if (!spent.isNull()) {
            EXPECT_EQ(result.spent().toText(), spent);
        }
        m_journal += QJsonDocument(result.toJournal()).toJson(QJsonDocument::Compact) + '\n';
        writeFile(folder.filePath(u"host.jsonl"_s), m_journal);
        compareBooks(folder.filePath(u"host.jsonl"_s));
    }

    std::unique_ptr<LoyaltyHost> makeHost() const
    {
        return std::make_unique<LoyaltyHost>(folder.filePath(u"till.ini"_s), QStringLiteral(KVO_PLUGIN_FOLDER));
    }

private:
    QByteArray m_journal;
};

/// `play` gets a check of 227.50 with a card, up to 113.75 of it in points, and ends with commit() or rollback().
struct Row
{
    const char *name;
    void (*play)(LoyaltyHost &host);
    const char *spent = "113.75";
    SaleDocument::State state = closed;
    QJsonObject fault = {};
};

void PrintTo(const Row &row, std::ostream *stream)
{
    *stream << row.name;
}

void priceAndSpend(LoyaltyHost &host)
{
    host.price();
    host.spend();
}

const QJsonObject createFails{{u"method"_s, u"createOrder"_s}, {u"kind"_s, u"status"_s}};

const Row rows[]{
    {"CommitTwice",
     [](LoyaltyHost &host) {
         priceAndSpend(host);
         EXPECT_TRUE(host.commit() && host.commit());
     }},
    {"CommitAgainAfterDelivery",
     [](LoyaltyHost &host) {
         priceAndSpend(host);
         EXPECT_TRUE(host.commit() && host.deliver() && host.commit());
     }},
    {"CommitThatCreatedTheOrderAgainAfterDelivery",
     [](LoyaltyHost &host) {
         host.price();
         EXPECT_TRUE(host.commit() && host.deliver() && host.commit());
     },
     "0.00"},
    {"CommitThatCreatedTheOrderAgainAfterDeliveryAndRestart",
     [](LoyaltyHost &host) {
         host.price();
         EXPECT_TRUE(host.commit() && host.deliver());
         host.restart();
         EXPECT_TRUE(host.commit());
     },
     "0.00"},
    {"CommitWithFailingSecondPush",
     [](LoyaltyHost &host) {
         priceAndSpend(host);
         host.trouble.failingPush = 2;
         EXPECT_TRUE(host.commitFails() && host.commit());
     }},
    {"CommitWithFailingSecondPushDeliveredInBetween",
     [](LoyaltyHost &host) {
         host.price();
         host.trouble.failingPush = 2;
         EXPECT_TRUE(host.commitFails() && host.deliver() && host.commit());
     },
     "0.00"},
    {"RollbackWithoutDocument",
     [](LoyaltyHost &host) {
         priceAndSpend(host);
         host.takePointsOff();
         EXPECT_TRUE(host.rollback({}));
     },
     "0.00", voided},
    {"ResultDroppedWithoutDocument",
     [](LoyaltyHost &host) {
         priceAndSpend(host);
         host.takePointsOff();
         host.notify(EventCode::LoyaltyResultDropped, false);
         priceAndSpend(host);
         EXPECT_TRUE(host.commit());
     }},
    {"RestoredPositionWithoutDocument",
     [](LoyaltyHost &host) {
         priceAndSpend(host);
         host.takePointsOff();
         host.notify(EventCode::PositionRestored, false);
         host.price();
         EXPECT_TRUE(host.commit());
     },
     "0.00"},
    {"KilledBetweenNameAndCreation",
     [](LoyaltyHost &host) {
         host.trouble.killBefore = u"createOrder"_s;
         EXPECT_TRUE(host.isKilledIn([&host] { host.spend(); }));
         EXPECT_EQ(host.system().getCard()->getOperationId().size(), 36);
         priceAndSpend(host);
         EXPECT_TRUE(host.commit());
     }},
    {"KilledAfterCreationThenVoided",
     [](LoyaltyHost &host) {
         host.trouble.killAfter = u"createOrder"_s;
         EXPECT_TRUE(host.isKilledIn([&host] { host.spend(); }));
         EXPECT_TRUE(host.rollback(host.check));
     },
     "0.00", voided},
    {"KilledAfterCreationInCommit",
     [](LoyaltyHost &host) {
         host.price();
         host.trouble.killAfter = u"createOrder"_s;
         EXPECT_TRUE(host.isKilledIn([&host] { host.commit(); }));
         EXPECT_TRUE(host.commit());
     },
     "0.00"},
    {"CardReplaced",
     [](LoyaltyHost &host) {
         priceAndSpend(host);
         host.removeCard();
         host.identify(otherCard);
         priceAndSpend(host);
         EXPECT_TRUE(host.commit());
     }},
    {"CancelledBetweenTwoCustomers",
     [](LoyaltyHost &host) {
         host.removeCard();
         host.identifyByPhone(u"+79007654321"_s); // Has no points.
         host.removeCard();
         host.system().cancel();
         host.identify(otherCard);
         EXPECT_EQ(host.system().getCard()->getNumber().toString(), otherCard);
         priceAndSpend(host);
         EXPECT_TRUE(host.commit());
     }},
    {"CardRemovedAtTheQuestion",
     [](LoyaltyHost &host) {
         host.price();
         host.trouble.answer = [&host] {
             host.removeCard();
             return true;
         };
         EXPECT_TRUE(host.commit());
     },
     "0.00", closed, createFails},
    {"CardRemovedAtTheCodePrompt",
     [](LoyaltyHost &host) {
         host.price();
         host.trouble.atCodePrompt = [&host] { host.removeCard(); };
         host.spend();
         EXPECT_TRUE(host.commit());
     },
     "0.00"},
    {"RestoredWithADamagedField",
     [](LoyaltyHost &host) {
         priceAndSpend(host);
         const QVariantList damaged{QVariantMap{{u"amount"_s, u"x"_s}}, u"x"_s};
         for (const auto &key : {u"bonusRecords"_s, u"bonusImpacts"_s})
             host.system().setPluginData(key, damaged);
         host.save();
         host.restart();
         EXPECT_TRUE(host.commit());
     }},
    {"PriceChangeSpend",
     [](LoyaltyHost &host) {
         host.price();
         host.change(1);
         priceAndSpend(host);
         EXPECT_TRUE(host.commit());
     },
     "68.25"},
    {"PriceSpendChange",
     [](LoyaltyHost &host) {
         priceAndSpend(host);
         host.change(1);
         host.notify(EventCode::SubtotalEntered);
         EXPECT_TRUE(host.commit());
     },
     "0.00"},
    {"PriceSpendChangePriceSpend",
     [](LoyaltyHost &host) {
         priceAndSpend(host);
         host.change(1);
         host.notify(EventCode::SubtotalEntered);
         priceAndSpend(host);
         EXPECT_TRUE(host.commit());
     },
     "68.25"},
    {"ChangesWithUpdates",
     [](LoyaltyHost &host) {
         host.price();
         for (const double quantity : {1, 3}) {
             host.change(quantity);
             host.notify(EventCode::SubtotalEntered);
         }
         EXPECT_TRUE(host.commit());
     },
     "0.00"},
    {"PointsTakenOffByAChangeThatIsUndone",
     [](LoyaltyHost &host) {
         priceAndSpend(host);
         host.change(1);
         host.change(2);
         host.notify(EventCode::PaymentStarted);
         EXPECT_TRUE(host.commit());
     },
     "0.00"},
    {"ChangeSpendPriceSpend",
     [](LoyaltyHost &host) {
         host.change(3);
         host.spend();
         priceAndSpend(host);
         EXPECT_TRUE(host.commit());
     },
     "159.25"},
    // The reason to price again first: the customer has confirmed 113.75.
    {"SpendWithoutPricingTheChange",
     [](LoyaltyHost &host) {
         host.price();
         host.change(3);
         EXPECT_EQ(host.system().getPointsForSpend(host.check), 113.75);
         host.spend();
         EXPECT_TRUE(host.commit());
     },
     "159.25"},
};

class Sequences : public Sequence, public testing::WithParamInterface<Row>
{
};

TEST_P(Sequences, EndWithEqualBooks)
{
    const Row &row = GetParam();
    const auto host = makeHost();
    host->open();
    host->identify(card);
    if (!row.fault.isEmpty())
        addFault(row.fault);
    row.play(*host);
    finish(*host, row.state, QString::fromUtf8(row.spent));
    // Nothing of the check is left for the next one.
    host->trouble = {};
    host->open();
    host->identify(card);
    host->price();
    EXPECT_TRUE(host->commit());
    finish(*host, closed, u"0.00"_s);
}

INSTANTIATE_TEST_SUITE_P(Host, Sequences, testing::ValuesIn(rows),
                         [](const auto &instance) { return std::string(instance.param.name); });

TEST_F(Sequence, ARefundIsNoOrder)
{
    const auto host = makeHost();
    host->open(EDocumentType::RefundBySale);
    host->identify(card);
    EXPECT_TRUE(host->commit());
    EXPECT_EQ(requestsOf(u"createOrder"_s), 0);
    finish(*host, closed, u"0.00"_s);
}

} // namespace
