// Default answers to the host's questions about a loyalty system: texts for people, and abilities.
#include "basicloyaltysystem.h"

using namespace Qt::Literals::StringLiterals;

bool BasicLoyaltySystem::requestCommit(bool)
{
    return true;
}

QList<QSharedPointer<DocumentImpact>> BasicLoyaltySystem::getDiscountImpacts() const
{
    return {};
}

QList<tr::Tr> BasicLoyaltySystem::getMessagesToCashier() const
{
    return messagesToCashier;
}

QList<tr::Tr> BasicLoyaltySystem::getMessagesToClient() const
{
    return {};
}

QList<tr::Tr> BasicLoyaltySystem::getMessagesToClientDisplay() const
{
    return {};
}

tr::Tr BasicLoyaltySystem::getLastErrorString() const
{
    return lastError;
}

void BasicLoyaltySystem::clearLastErrorString()
{
    lastError = {};
}

bool BasicLoyaltySystem::takeForCustomer() const
{
    return false;
}

QStringList BasicLoyaltySystem::getCardInfo(const QSharedPointer<DocumentCardRecord> &card) const
{
    QStringList lines;
    const auto add = [&lines](const QString &title, const QString &value) {
        if (!value.isEmpty())
            lines.append(title + value);
    };
    if (!card)
        return lines;
    add(u"Карта: "_s, card->getNumber().toString());
    if (const auto client = card->getCard()->getClient())
        add(u"Клиент: "_s, client->getName().simplified());
    add(u"Статус: "_s, card->getExtendedOptions().toMap().value(u"loyaltyStatus"_s).toString());
    if (!card->getBonusBalance().isNull())
        add(u"Баллы: "_s, QString::number(card->getBonusBalance().toDouble(), 'f', 2));
    return lines;
}

bool BasicLoyaltySystem::isAllowPartialPointsSpend() const
{
    return checkOption(LoyaltySystemOption::RequestPointsForSpend);
}

bool BasicLoyaltySystem::isAllowInternalDiscount() const
{
    return true;
}

bool BasicLoyaltySystem::useDiscOnChangeWithBonusPayment() const
{
    return false;
}

bool BasicLoyaltySystem::fillCardOwnerInfo()
{
    const auto card = getCard();
    const auto client = card ? card->getCard()->getClient() : nullptr;
    const QString name = client ? client->getName().simplified() : QString();
    if (name.isEmpty())
        return false;
    if (const tr::Tr message(u"Владелец карты: "_s + name); !messagesToCashier.contains(message))
        messagesToCashier.append(message);
    return true;
}

int BasicLoyaltySystem::getCardMode() const
{
    return 1 << static_cast<int>(ECardNumberType::Manual) | 1 << static_cast<int>(ECardNumberType::Phone) |
           1 << static_cast<int>(ECardNumberType::Scanned);
}

QStringList BasicLoyaltySystem::getSlips() const
{
    return {};
}

bool BasicLoyaltySystem::cardReplace()
{
    return false;
}

ECardNumberType BasicLoyaltySystem::getCardNumberTypeToAddCardInSubtotal() const
{
    return ECardNumberType::Manual;
}

bool BasicLoyaltySystem::requestInputPointsForSpendByLoyalty()
{
    return false;
}

bool BasicLoyaltySystem::registerCheck()
{
    return true;
}

bool BasicLoyaltySystem::couponBelongsToSystem(ECoupon::Type) const
{
    return false;
}

bool BasicLoyaltySystem::payCheck()
{
    return true;
}

bool BasicLoyaltySystem::beforePutoutCheck()
{
    return true;
}

bool BasicLoyaltySystem::afterPutoutCheck()
{
    return true;
}

bool BasicLoyaltySystem::revealCheck()
{
    return true;
}
