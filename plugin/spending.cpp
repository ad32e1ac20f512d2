// Paying with points, confirmed by the customer.
#include "client/settings.h"
#include "plugin/plugin.h"

#include <cashier/verificationlogic.h>
#include <core/basicexception.h>
#include <core/config.h>
#include <core/mockfactory.h>
#include <core/singleton.h>

#include <log4qt/logger.h>

#include <QtCore/QRandomGenerator>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

/// Empty if unknown.
QString phoneOfHolder(const QSharedPointer<DocumentCardRecord> &record)
{
    const auto card = record ? record->getCard() : nullptr;
    const auto client = card ? card->getClient() : nullptr;
    return client ? client->getPhoneNumber() : QString();
}

} // namespace

bool Plugin::spendPoints()
{
    const auto document = currentDocument();
    const auto card = getCard();
    if (!hasCheckAndCard(document, card))
        return true;
    logger->info(u"Создание оплаты бонусами в виде скидки на сумму %1, по карте %2"_s.arg(
        QString::number(pointsForSpend, 'f', 2), card->getNumber().toString()));

    const auto response = createOrder(document, card, false, [this] { verification(pointsForSpend); });
    if (!response)
        return true;
    card->setOperationId(response->basket);
    orderCreated = true;
    try {
        createBonusRecords(card, *response);
        bonusImpacts = createBonusImpacts(card, *response);
        updatePluginData();
    } catch (...) {
        // There will be no discount on the check, so commit() has to create the order again, without points.
        bonusImpacts.clear();
        orderCreated = false;
        storePluginData();
        throw;
    }
    return true;
}

void Plugin::verification(double amount) const
{
    const auto config = Singleton<Config>::instance();
    const double limit =
        config->getDouble(u"Kvo:verificationLimit"_s, setting(u"Kvo:verificationLimit").defaultValue.toDouble());
    // The amount is a sum over the lines, which can be an ulp below what the cashier and the customer see.
    if (limit < 0.0 || (limit > amount && !qFuzzyCompare(limit, amount)))
        return;
    const QString code = getCode(
        config->getInt(u"Kvo:verificationCodeLength"_s, setting(u"Kvo:verificationCodeLength").defaultValue.toInt()));
    if (code.isEmpty())
        return;
    const QString message =
        config->getString(u"Kvo:verificationMessage"_s, setting(u"Kvo:verificationMessage").defaultValue.toString());
    // Without a place marker Qt would log a warning that contains the code.
    if (!message.contains("%1"_L1))
        throw BasicException(
            u"Код подтверждения не отправлен: в настройке Kvo:verificationMessage нет места для кода (%1)"_s);
    interface->verification(message.arg(code, 0, u' '), phoneOfHolder(getCard()));
    MockFactory<VerificationLogic>::create()->verify(code, tr::Tr(), 0);
}

QString Plugin::getCode(int length) const
{
    constexpr quint32 digits = 10;
    QString code;
    for (int i = 0; i < length; ++i)
        code += QString::number(QRandomGenerator64::global()->bounded(digits));
    return code;
}

} // namespace kvo
