// What all loyalty systems share: registration with the host, the life of a check, and the data stored with it.
#include "basicloyaltysystem.h"

#include <core/singleton.h>
#include <loyalty/loyaltysystems.h>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

BasicLoyaltySystem::BasicLoyaltySystem()
    : m_options{static_cast<int>(LoyaltySystemOption::SpendPoints), static_cast<int>(LoyaltySystemOption::EarnPoints),
                static_cast<int>(LoyaltySystemOption::RequestPointsForSpend)}
{}

BasicLoyaltySystem::BasicLoyaltySystem(utils::ForMock) : BasicLoyaltySystem()
{}

BasicLoyaltySystem::~BasicLoyaltySystem()
{
    if (m_registry)
        m_registry->remove(this);
}

bool BasicLoyaltySystem::init()
{
    return BasicPlugin::init() && registerLoyaltySystem();
}

bool BasicLoyaltySystem::deinit()
{
    deregisterLoyaltySystem();
    return BasicPlugin::deinit();
}

bool BasicLoyaltySystem::registerLoyaltySystem()
{
    const auto registry = Singleton<LoyaltySystems>::instance();
    if (m_registry || !registry->add(this))
        return false;
    m_registry = registry;
    return true;
}

bool BasicLoyaltySystem::deregisterLoyaltySystem()
{
    if (!m_registry)
        return false;
    const bool removed = m_registry->remove(this);
    m_registry.clear();
    return removed;
}

loyalty::CardNumberResult BasicLoyaltySystem::getCardNumber(const loyalty::CardNumberInputData &data)
{
    const bool isNumber = data.type == static_cast<int>(ECardNumberType::Manual) ||
                          data.type == static_cast<int>(ECardNumberType::Scanned);
    if (!isNumber)
        return {false, {}, tr::Tr(u"Поиск карты по этим данным не поддерживается"_s)};
    const QString number = data.text.trimmed();
    if (number.isEmpty())
        return {false, {}, tr::Tr(u"Номер не введён"_s)};
    return {true, number, {}};
}

bool BasicLoyaltySystem::identifyByCard(QSharedPointer<DocumentCardRecord> &card, ECardNumberType)
{
    if (card && !card->getNumber().toString().isEmpty())
        return true;
    lastError = tr::Tr(u"Номер карты неизвестен"_s);
    return false;
}

bool BasicLoyaltySystem::request(const QSharedPointer<AbstractDocument> &document)
{
    return recalculateAllPoints(document);
}

bool BasicLoyaltySystem::commit(const QSharedPointer<AbstractDocument> &)
{
    return true;
}

bool BasicLoyaltySystem::cancel()
{
    pointsForSpend = 0;
    pointsForEarn = 0;
    bonusImpacts.clear();
    bonusRecords.clear();
    return true;
}

bool BasicLoyaltySystem::rollback(const QSharedPointer<AbstractDocument> &)
{
    return true;
}

bool BasicLoyaltySystem::restoreLoyaltySystem()
{
    pointsForSpend = getPluginData(u"pointsForSpend"_s, 0.0).toDouble();
    pointsForEarn = getPluginData(u"pointsForEarn"_s, 0.0).toDouble();
    return true;
}

bool BasicLoyaltySystem::checkOption(LoyaltySystemOption option) const
{
    return m_options.contains(static_cast<int>(option));
}

void BasicLoyaltySystem::setOption(LoyaltySystemOption option, bool enabled)
{
    if (enabled)
        m_options.insert(static_cast<int>(option));
    else
        m_options.remove(static_cast<int>(option));
}

QSharedPointer<DocumentCardRecord> BasicLoyaltySystem::getCard() const
{
    if (!currentDocument() || loyaltySystemCode == 0)
        return nullptr;
    const auto cards = currentDocument()->getCardRecords();
    const auto found = std::find_if(cards.cbegin(), cards.cend(), [this](const auto &card) {
        return card->getLoyaltySystemCode() == loyaltySystemCode;
    });
    return found == cards.cend() ? nullptr : *found;
}

bool BasicLoyaltySystem::hasCard() const
{
    return !getCard().isNull();
}

QString BasicLoyaltySystem::getStoreDataKey() const
{
    return u"loyaltySystem"_s + QString::number(loyaltySystemCode);
}

void BasicLoyaltySystem::setPluginData(const QString &key, const QVariant &value) const
{
    if (currentDocument())
        currentDocument()->setPluginData(getStoreDataKey(), key, value);
}

void BasicLoyaltySystem::setPluginData(const QVariantMap &data) const
{
    for (auto entry = data.cbegin(); entry != data.cend(); ++entry)
        setPluginData(entry.key(), entry.value());
}

QVariant BasicLoyaltySystem::getPluginData(const QString &key, const QVariant &defaultValue) const
{
    return getPluginData().value(key, defaultValue);
}

QVariantMap BasicLoyaltySystem::getPluginData() const
{
    return currentDocument() ? currentDocument()->getPluginData(getStoreDataKey()) : QVariantMap();
}

void BasicLoyaltySystem::clearLoyaltyData()
{
    cancel();
    messagesToCashier.clear();
}

void BasicLoyaltySystem::clearData()
{
    clearLoyaltyData();
    clearLastErrorString();
    if (currentDocument())
        currentDocument()->setPluginData(getStoreDataKey(), {});
}

void BasicLoyaltySystem::clearAfterClose()
{
    clearLoyaltyData();
    clearLastErrorString();
    setDocument({});
}
