// Construction, the host's events, and what several flows share.
#include "plugin/plugin.h"

#include "metatypes/metatypes.h"

#include <cashier/cardaddlogic.h>
#include <cashier/dialog.h>
#include <core/activitynotifier.h>
#include <core/basicexception.h>
#include <core/mockfactory.h>
#include <core/singleton.h>

#include <log4qt/logger.h>
#include <log4qt/logmanager.h>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

constexpr int kvoSystemCode = 26;

Log4Qt::Logger *kvoLogger()
{
    return Log4Qt::LogManager::logger(u"kvo"_s);
}

} // namespace

Plugin::Plugin() : interface(QSharedPointer<Interface>::create()), logger(kvoLogger())
{
    setUp();
}

Plugin::Plugin(utils::ForMock tag) : BasicLoyaltySystem(tag), logger(kvoLogger())
{
    setUp();
}

Plugin::~Plugin() = default;

void Plugin::setUp()
{
    registerMetaTypes();
    loyaltySystemCode = kvoSystemCode;
    // The service decides how many points a check may be paid with; the host need not ask.
    BasicLoyaltySystem::setOption(LoyaltySystemOption::RequestPointsForSpend, false);
}

bool Plugin::init()
{
    if (!BasicLoyaltySystem::init())
        return false;
    QSet<int> codes;
    for (const EventCode code : {EventCode::PositionChanged, EventCode::PositionRestored, EventCode::SubtotalEntered,
                                 EventCode::PaymentStarted, EventCode::LoyaltyResultDropped})
        codes.insert(static_cast<int>(code));
    Singleton<ActivityNotifier>::instance()->subscribe(this, codes);
    return true;
}

bool Plugin::deinit()
{
    Singleton<ActivityNotifier>::instance()->unsubscribe(this);
    return BasicLoyaltySystem::deinit();
}

void Plugin::handleEvent(const Event &event)
{
    switch (static_cast<EventCode>(event.getCode())) {
    case EventCode::PositionChanged:
        pendingUpdate = true;
        break;
    case EventCode::SubtotalEntered:
        if (pendingUpdate)
            updateOrder(event);
        break;
    case EventCode::PaymentStarted:
        updateOrder(event);
        break;
    case EventCode::PositionRestored:
        if (pendingUpdate)
            pendingUpdate = false;
        else
            cancelAndReprice(event);
        break;
    case EventCode::LoyaltyResultDropped:
        cancelAndReprice(event);
        break;
    }
}

/// Drops the order on the service and prices the check as if for the first time.
void Plugin::cancelAndReprice(const Event &event)
{
    const auto document = documentOf(event);
    cancelOrder(document, false);
    cancel();
    request(document);
}

QSharedPointer<AbstractDocument> Plugin::documentOf(const Event &event)
{
    return event.value(u"document"_s).value<QSharedPointer<AbstractDocument>>();
}

/// Whether there is a check with a card to work on. A card without a check is logged as an error.
bool Plugin::hasCheckAndCard(const QSharedPointer<AbstractDocument> &document,
                             const QSharedPointer<DocumentCardRecord> &card) const
{
    if (card && !document)
        logger->error(u"Нет чека для карты лояльности: запрос не отправлен"_s);
    return card && document;
}

/// Repeats `attempt` until it succeeds or the cashier chooses to remove the card. The host may also take the card off
/// the check while the cashier is being asked.
void Plugin::retryOrRemoveCard(const tr::Tr &question, const QSharedPointer<AbstractDocument> &document,
                               const QSharedPointer<DocumentCardRecord> &card, const std::function<void()> &attempt)
{
    for (;;) {
        try {
            attempt();
            return;
        } catch (const BasicException &error) {
            reportError(error.text());
        }
        const bool retry = MockFactory<Dialog>::create()->question(question, 1, tr::Tr(u"kvoErrorOk"_s, u"Повторить"_s),
                                                                   tr::Tr(u"kvoErrorCancel"_s, u"Удалить"_s), 0);
        if (getCard() != card)
            return;
        if (!retry) {
            MockFactory<CardAddLogic>::create()->removeCard(document, card);
            return;
        }
    }
}

void Plugin::reportError(const tr::Tr &text)
{
    logger->error(text.ru());
    lastError = text;
}

} // namespace kvo
