// The host's side of the plugin's interface, as plain as an integrator would write it first.
#include "loyaltyhost.h"

#include "tests/support/checkbuilder.h"
#include "till/queuesender.h"

#include <checks/checkstore.h>
#include <core/activitynotifier.h>
#include <core/config.h>
#include <core/logsetup.h>
#include <core/singleton.h>

using namespace Qt::Literals::StringLiterals;

namespace sale {

namespace {

/// What the host hands to the plugin, with the trouble that befalls it.
struct Troubled : RestClient, DBQueueBroker, SaveToFileLogic, Dialog, VerificationLogic
{
    explicit Troubled(Trouble &cause) : trouble(cause) {}

    void request(QNetworkAccessManager::Operation op, const QUrl &url, const QJsonDocument &payload,
                 const QHash<QString, QString> &headers) override
    {
        if (url.fileName() == trouble.killBefore)
            trouble.kill();
        RestClient::request(op, url, payload, headers);
        if (url.fileName() == trouble.killAfter)
            trouble.kill();
    }

    void push(const QString &owner, const QJsonObject &event, const QString &key) override
    {
        if (trouble.failingPush > 0 && --trouble.failingPush == 0)
            throw BasicException(u"диск полон"_s);
        DBQueueBroker::push(owner, event, key);
        if (event.value("url"_L1).toString().endsWith(u'/' + trouble.killAfter))
            trouble.kill();
    }

    void save(const QSharedPointer<AbstractDocument> &document, const QString &name, double sum) override
    {
        if (trouble.failingSave > 0 && --trouble.failingSave == 0)
            throw BasicException(u"диск полон"_s);
        SaveToFileLogic::save(document, name, sum);
    }

    bool question(const tr::Tr &, int, const tr::Tr &, const tr::Tr &, int) override { return trouble.answer(); }
    void verify(const QString &, const tr::Tr &, int) override { trouble.atCodePrompt(); }
    Trouble &trouble;
};

} // namespace

LoyaltyHost::LoyaltyHost(const QString &configFile, const QString &pluginFolder) : m_pluginFolder(pluginFolder)
{
    Singleton<Config>::replace(QSharedPointer<Config>::create(configFile));
    setUpLogging(*Singleton<Config>::instance());
    const auto troubled = QSharedPointer<Troubled>::create(trouble);
    Singleton<DBQueueBroker>::replace(troubled);
    MockFactory<RestClient>::install(troubled);
    MockFactory<SaveToFileLogic>::install(troubled);
    MockFactory<Dialog>::install(troubled);
    MockFactory<VerificationLogic>::install(troubled);
    m_plugin = std::make_unique<till::LoyaltyPlugin>(m_pluginFolder);
}

LoyaltyHost::~LoyaltyHost()
{
    system().setDocument({});
    check.clear();
    m_plugin.reset();
    MockFactory<VerificationLogic>::clear();
    MockFactory<Dialog>::clear();
    MockFactory<SaveToFileLogic>::clear();
    MockFactory<RestClient>::clear();
    Singleton<DBQueueBroker>::replace({});
    Singleton<CheckStore>::replace({});
    Singleton<Config>::replace({});
}

void LoyaltyHost::open()
{
    check = builder::check({4550});
    check->addGoodsItem(builder::line(9100, 2));
    system().setDocument(check);
}

void LoyaltyHost::play(const QString &calls)
{
    for (const QString &call : calls.split(u' '))
        callOf(call.section(u':', 0, 0), call.section(u':', 1))();
}

/// Empty for an unknown name.
std::function<void()> LoyaltyHost::callOf(const QString &name, const QString &argument)
{
    const bool withDocument = argument != "blind"_L1;
    const QHash<QString, std::function<void()>> calls{
        {u"card"_s, [=, this] { addCard(argument, ECardNumberType::Scanned); }},
        {u"phone"_s, [=, this] { addCardOfPhone(argument); }},
        {u"remove"_s, [this] { removeCard(); }},
        {u"price"_s, [this] { price(); }},
        {u"spend"_s, [this] { spend(); }},
        {u"change"_s, [=, this] { change(argument.toDouble()); }},
        {u"take-off"_s, [this] { takePointsOff(); }},
        {u"subtotal"_s, [this] { notify(EventCode::SubtotalEntered, true); }},
        {u"payment"_s, [this] { notify(EventCode::PaymentStarted, true); }},
        {u"drop"_s, [=, this] { notify(EventCode::LoyaltyResultDropped, withDocument); }},
        {u"put-back"_s, [=, this] { notify(EventCode::PositionRestored, withDocument); }},
        {u"commit"_s, [this] { system().commit(check); }},
        {u"rollback"_s, [=, this] { system().rollback(withDocument ? check : nullptr); }},
        {u"cancel"_s, [this] { system().cancel(); }},
        {u"restart"_s, [this] { restart(); }},
        {u"deliver"_s, [this] { deliver() ? void() : throw std::logic_error("something is left in the queue"); }},
        // Trouble for the calls that follow.
        {u"kill-before"_s, [=, this] { trouble.killBefore = argument; }},
        {u"kill-after"_s, [=, this] { trouble.killAfter = argument; }},
        {u"fail-save"_s, [=, this] { trouble.failingSave = argument.toInt(); }},
        {u"fail-push"_s, [=, this] { trouble.failingPush = argument.toInt(); }},
        {u"remove-at-question"_s, [this] { trouble.answer = [this] { return removeCard(), true; }; }},
        {u"remove-at-prompt"_s, [this] { trouble.atCodePrompt = [this] { removeCard(); }; }},
    };
    return calls.value(name);
}

void LoyaltyHost::addCardOfPhone(const QString &phone)
{
    const auto found = system().getCardNumber({static_cast<int>(ECardNumberType::Phone), phone});
    if (!found.success)
        throw BasicException(found.error);
    addCard(found.cardNumber, ECardNumberType::Phone);
}

void LoyaltyHost::addCard(const QString &number, ECardNumberType type)
{
    auto card = builder::card(number, system().getLoyaltySystemCode());
    check->addCard(card);
    if (system().identifyByCard(card, type) && !card->getNumber().toString().isEmpty())
        return;
    removeCard();
    throw BasicException(system().getLastErrorString());
}

void LoyaltyHost::price()
{
    takePointsOff();
    if (!system().request(check))
        throw BasicException(system().getLastErrorString());
}

void LoyaltyHost::spend()
{
    takePointsOff();
    system().spendPoints();
    if (system().hasCard()) {
        for (const auto impacts = system().getBonusImpactsForSpend(); const auto &impact : impacts)
            check->addImpact(impact);
    }
    save();
}

void LoyaltyHost::change(double quantity)
{
    const bool hadPoints = !check->getDiscountSum().isZero();
    takePointsOff();
    check->changeGoodsItem(2, quantity, check->findGoodsItem(2)->getPrice());
    if (hadPoints)
        price();
    save();
    notify(EventCode::PositionChanged, true);
}

void LoyaltyHost::notify(EventCode code, bool withDocument)
{
    QVariantHash values;
    if (withDocument)
        values.insert(u"document"_s, QVariant::fromValue(check.staticCast<AbstractDocument>()));
    Singleton<ActivityNotifier>::instance()->notify(Event(code, values));
}

void LoyaltyHost::restart()
{
    system().setDocument({});
    check.clear();
    m_plugin.reset();
    m_plugin = std::make_unique<till::LoyaltyPlugin>(m_pluginFolder);
    check = Singleton<CheckStore>::instance()->restore();
    system().setDocument(check);
    system().restoreLoyaltySystem();
}

bool LoyaltyHost::deliver(std::chrono::milliseconds time)
{
    QueueDrain drain;
    drain.setHandler(till::loyaltyQueueOwner, till::makeLoyaltySender());
    drain.start();
    return drain.waitUntilDrained(time) && Singleton<DBQueueBroker>::instance()->status().blocked == 0;
}

till::CheckResult LoyaltyHost::end(SaleDocument::State state)
{
    check->setState(state);
    auto result = till::resultOf(*check, system().getCard(), system().getPointsForEarn());
    Singleton<CheckStore>::instance()->finish(*check, result.toJournal());
    system().cancel();
    system().setDocument({});
    return result;
}

} // namespace sale
