// The customer's card on the check.
#include "checksession.h"
#include "endingqueue.h"
#include "loyalty.h"

#include <cashier/cardaddlogic.h>
#include <core/basicexception.h>
#include <core/mockfactory.h>
#include <loyalty/basicloyaltysystem.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

const QString unknownCustomer = u"Покупатель не найден. Проверьте номер или продолжите без карты"_s;

/// A gateway's answer without a customer must not become a card that is priced and paid with points.
bool hasHolder(DocumentCardRecord &record)
{
    const auto client = record.getCard()->getClient();
    return !record.getNumber().toString().trimmed().isEmpty() && client && !client->getIdClient().trimmed().isEmpty();
}

} // namespace

void CheckSession::addCard(ECardNumberType type, const QString &text)
{
    requireOpen();
    if (card())
        throw BasicException(u"На чеке уже есть карта"_s);
    // What a card leads to has to be stored at the end of the check.
    if (m_system.getLoyaltySystemCode() == 0 || !m_queue.findProblem().isEmpty())
        throw BasicException(u"Карта не принята: бонусы не работают (%1). Продолжите без карты"_s.arg(loyaltyOff()));
    // A customer who was searched for another card must not be taken for the holder of this one.
    m_system.cancel();
    auto record = QSharedPointer<DocumentCardRecord>::create();
    record->setNumber(findCardNumber(type, text));
    record->setLoyaltySystemCode(m_system.getLoyaltySystemCode());
    m_document->addCard(record); // Before identification: the loyalty system looks for its card on the check.
    if (!m_system.identifyByCard(record, type))
        refuseCard(refusalText(m_system.getLastErrorString()));
    if (!hasHolder(*record))
        refuseCard(tr::Tr(unknownCustomer));
    save();
}

void CheckSession::removeCard()
{
    requireCard();
    m_document->removeImpactsOf(card());
    if (isPriced())
        m_state.order = TillState::Order::Uncertain;
    save();
    try {
        MockFactory<CardAddLogic>::create()->removeCard(m_document, card());
    } catch (const BasicException &) {
        revert();
        throw;
    }
    m_state.order = TillState::Order::InStep;
    save();
}

QString CheckSession::findCardNumber(ECardNumberType type, const QString &text)
{
    const QString entered = text.trimmed();
    if (entered.isEmpty())
        throw BasicException(u"Номер не введён"_s);
    if (type != ECardNumberType::Phone)
        return entered;
    const loyalty::CardNumberResult number = m_system.getCardNumber({static_cast<int>(type), entered});
    if (!number.success)
        throw BasicException(refusalText(number.error));
    // The loyalty system would now search for an empty number, and a service may take that for any customer's.
    if (number.cardNumber.trimmed().isEmpty())
        throw BasicException(unknownCustomer);
    return number.cardNumber;
}

/// Leaves the check as it was before the card.
void CheckSession::refuseCard(const tr::Tr &reason)
{
    takeCardOff();
    throw BasicException(reason);
}

void CheckSession::dropUnidentifiedCard()
{
    if (card() && !hasHolder(*card()))
        takeCardOff();
}

/// The card and what the loyalty system has stored with it; there is no order yet.
void CheckSession::takeCardOff()
{
    m_document->removeCard(card());
    m_document->setPluginData(m_system.getStoreDataKey(), {});
    m_system.cancel();
    save();
}

} // namespace till
