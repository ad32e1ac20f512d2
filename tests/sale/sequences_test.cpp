// The orders in which a host may call the plugin. Each ends with the books of both sides equal.
#include "loyaltyhost.h"
#include "salefixture.h"

namespace {

using enum SaleDocument::State;

/// `calls` get a check of 227.50 with a card, up to 113.75 of it in points, and end with a commit or rollback. Those
/// with a "!" must fail or be killed.
struct Row
{
    const char *name, *calls;
    const char *spent = "113.75";
    SaleDocument::State state = Closed;
    friend void PrintTo(const Row &row, std::ostream *stream) { *stream << row.calls; }
};

const Row rows[]{
    {"CommitTwice", "price spend commit commit"},
    {"CommitAgainAfterDelivery", "price spend commit deliver commit"},
    {"CommitThatCreatedTheOrderAgainAfterDelivery", "price commit deliver commit", "0.00"},
    {"CommitThatCreatedTheOrderAgainAfterDeliveryAndRestart", "price commit deliver restart commit", "0.00"},
    {"CommitWithFailingSecondPush", "price spend fail-push:2 commit! commit"},
    {"CommitWithFailingSecondPushDeliveredInBetween", "price fail-push:2 commit! deliver commit", "0.00"},
    {"CommitThatCouldNotBeSaved", "price fail-save:1 commit! commit deliver restart commit", "0.00"},
    {"RollbackWithoutDocument", "price spend take-off rollback:blind", "0.00", Voided},
    {"ResultDroppedWithoutDocument", "price spend take-off drop:blind price spend commit"},
    {"RestoredPositionWithoutDocument", "price spend take-off put-back:blind price commit", "0.00"},
    {"KilledBetweenNameAndCreation", "kill-before:createOrder spend! price spend commit"},
    {"KilledAfterCreationThenVoided", "kill-after:createOrder spend! rollback", "0.00", Voided},
    {"KilledAfterCreationInCommit", "price kill-after:createOrder commit! commit", "0.00"},
    {"KilledWhileTheCardIsRemovedThenRemovedAgain", "price spend kill-after:cancelOrder remove! remove commit", "0.00"},
    {"KilledWhileTheCardIsRemovedThenDropped", "price spend kill-after:cancelOrder remove! take-off drop spend commit"},
    {"CardReplaced", "price spend remove card:7770000000032 price spend commit"},
    {"CancelledBetweenTwoCustomers", // The first one has no points.
     "remove phone:+79007654321 remove cancel card:7770000000032 price spend commit"},
    {"CardThatCouldNotBeRemoved", "price spend fail-push:1 remove! commit"},
    {"CardRemovedAtTheQuestion", "price refuse:createOrder remove-at-question commit", "0.00"},
    {"CardRemovedAtTheCodePrompt", "price remove-at-prompt spend commit", "0.00"},
    {"PriceChangeSpend", "price change:1 price spend commit", "68.25"},
    {"PriceSpendChange", "price spend change:1 subtotal commit", "0.00"},
    {"PriceSpendChangePriceSpend", "price spend change:1 subtotal price spend commit", "68.25"},
    {"ChangesWithUpdates", "price change:1 subtotal change:3 subtotal commit", "0.00"},
    {"PointsTakenOffByAChangeThatIsUndone", "price spend change:1 change:2 payment commit", "0.00"},
    {"ChangeSpendPriceSpend", "change:3 spend price spend commit", "159.25"},
    {"NamedButNeverPriced", "kill-before:createOrder commit! payment price commit", "0.00"},
    // The reason to price again first: the customer has confirmed 113.75.
    {"SpendWithoutPricingTheChange", "price change:3 spend commit", "159.25"},
};

struct Sequences : SaleTest, testing::WithParamInterface<Row>
{
    /// Puts the card on a new check, makes the calls, ends the check, delivers what is queued, and compares the books.
    void sell(const QString &calls, SaleDocument::State state, const char *spent)
    {
        m_host.trouble = {};
        m_host.open();
        m_host.play(u"card:7770000000001"_s);
        for (const QString &call : calls.split(u' ')) {
            if (call.startsWith("refuse:"_L1))
                addFault({{u"method"_s, call.section(u':', 1)}, {u"kind"_s, u"status"_s}});
            else if (call.endsWith(u'!'))
                EXPECT_TRUE(fails(call.chopped(1))) << call.toStdString();
            else
                m_host.play(call);
        }
        const till::CheckResult result = m_host.end(state);
        EXPECT_TRUE(m_host.deliver());
        EXPECT_EQ(result.spent().toText(), QString::fromUtf8(spent));
        m_journal += QJsonDocument(result.toJournal()).toJson(QJsonDocument::Compact) + '\n';
        compareBooks(m_journal);
    }

    bool fails(const QString &call)
    {
        bool failed = true;
        try {
            m_host.play(call);
            failed = false;
        } catch (const BasicException &) {
        } catch (const sale::Killed &) {
            m_host.restart();
        }
        m_host.trouble = {};
        return failed;
    }

    sale::LoyaltyHost m_host{ini, QStringLiteral(KVO_PLUGIN_FOLDER)};
    QByteArray m_journal;
};

TEST_P(Sequences, EndWithEqualBooks)
{
    sell(QString::fromUtf8(GetParam().calls), GetParam().state, GetParam().spent);
    // Nothing of the check is left for the next one.
    sell(u"price spend take-off put-back payment commit"_s, Closed, "0.00");
}

INSTANTIATE_TEST_SUITE_P(Host, Sequences, testing::ValuesIn(rows),
                         [](const auto &instance) { return std::string(instance.param.name); });

} // namespace
